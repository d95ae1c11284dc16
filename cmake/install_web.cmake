# The web console, which `cmake --install` leaves out unless it is asked for:
# `cmake --install build --component librpc-web`.
set(LIBRPC_WEBDIR "${CMAKE_INSTALL_DATADIR}/librpc-web" CACHE STRING "Where the web console and its gateway go")
set(web COMPONENT librpc-web EXCLUDE_FROM_ALL)

install(DIRECTORY web/librpc DESTINATION ${LIBRPC_WEBDIR} ${web} FILES_MATCHING PATTERN "*.lua")
install(DIRECTORY web/console web/servers DESTINATION ${LIBRPC_WEBDIR} ${web} USE_SOURCE_PERMISSIONS)
install(FILES web/apache.lua web/bundle.lua DESTINATION ${LIBRPC_WEBDIR} ${web})
install(PROGRAMS web/librpc.cgi DESTINATION ${LIBRPC_WEBDIR} ${web})
install(FILES packaging/web/tmpfiles.conf DESTINATION lib/tmpfiles.d RENAME librpc-web.conf ${web})

# What is installed is fitted to its place by finish_web.cmake.
find_program(LIBRPC_LUA51 lua5.1)
set(compiler "")
if(LIBRPC_LUA51 AND LIBRPC_LUA STREQUAL "lua5.1" AND NOT CMAKE_CROSSCOMPILING)
  set(compiler ${LIBRPC_LUA51})
endif()
install(CODE "set(web_folder \"${LIBRPC_WEBDIR}\")
  set(web_lua \"${LIBRPC_LUA}\")
  set(web_compiler \"${compiler}\")
  set(web_source \"${CMAKE_CURRENT_SOURCE_DIR}\")" COMPONENT librpc-web EXCLUDE_FROM_ALL)
install(SCRIPT cmake/finish_web.cmake COMPONENT librpc-web EXCLUDE_FROM_ALL)

# links of the documents to what lies in web/
install(CODE "set(web_folder \"${LIBRPC_WEBDIR}\")
  set(web_docs \"${LIBRPC_DOCDIR}\")" COMPONENT librpc-doc)
install(SCRIPT cmake/link_web.cmake COMPONENT librpc-doc)
