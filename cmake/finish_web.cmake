# Run by `cmake --install` behind the web console's files: the configurations get the folder's
# name, the program its Lua, and what the program loads most is compiled where this machine
# has that Lua. Wants web_folder, web_lua, web_compiler and web_source.
if(NOT IS_ABSOLUTE "${web_folder}")
  set(web_folder "${CMAKE_INSTALL_PREFIX}/${web_folder}")
endif()
set(there "$ENV{DESTDIR}${web_folder}")

file(GLOB_RECURSE files "${there}/servers/*")
foreach(file IN LISTS files)
  file(READ "${file}" text)
  string(REPLACE "/usr/share/librpc-web" "${web_folder}" text "${text}")
  file(WRITE "${file}" "${text}")
endforeach()

if(NOT web_lua STREQUAL "lua5.1")
  file(READ "${there}/librpc.cgi" text)
  string(REGEX REPLACE "^#![^\n]*" "#!/usr/bin/env ${web_lua}" text "${text}")
  file(WRITE "${there}/librpc.cgi" "${text}")
endif()
if(web_compiler)
  execute_process(COMMAND ${web_compiler} "${web_source}/web/bundle.lua" "${there}/librpc.luac" "${there}"
    "${web_source}/lua" COMMAND_ERROR_IS_FATAL ANY)
endif()
