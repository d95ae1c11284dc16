# What `cmake --install` puts where. Every folder can be overridden, for LuaRocks
# trees and devices. A component is a package of that name: packaging/debian and
# contrib/openwrt install each by itself, `cmake --install build` all of them.
include(GNUInstallDirs)

# The version of the language, which Lua keeps in its folders' names.
function(find_lua_version lua result)
  string(REGEX MATCH "[0-9]+\\.[0-9]+" version "${lua}")
  if(lua STREQUAL "luajit")
    set(version "5.1")
  endif()
  set(${result} ${version} PARENT_SCOPE)
endfunction()

find_lua_version(${LIBRPC_LUA} lua_version)
set(LIBRPC_LUA_CMODDIR "${CMAKE_INSTALL_LIBDIR}/lua/${lua_version}" CACHE STRING "Where Lua looks for C modules")
set(LIBRPC_LUA_MODDIR "${CMAKE_INSTALL_DATADIR}/lua/${lua_version}" CACHE STRING "Where Lua looks for Lua modules")
set(LIBRPC_DATADIR "${CMAKE_INSTALL_DATADIR}/librpc" CACHE STRING "Where files for other programs go")
set(LIBRPC_DOCDIR "${CMAKE_INSTALL_DATADIR}/doc/librpc-doc" CACHE STRING "Where documents and examples go")

option(LIBRPC_SHELL_FILES "Install manual pages and completion, for prefixes where a shell looks for them" ON)

# The library and its modules.
install(TARGETS rpc LIBRARY DESTINATION ${LIBRPC_LUA_CMODDIR} COMPONENT lua-librpc)
install(DIRECTORY lua/librpc DESTINATION ${LIBRPC_LUA_MODDIR} COMPONENT lua-librpc FILES_MATCHING PATTERN "*.lua")
foreach(lua IN LISTS LIBRPC_OTHER_LUAS)
  find_lua_version(${lua} version)
  install(TARGETS rpc_${lua} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/lua/${version} COMPONENT lua-librpc)
  install(DIRECTORY lua/librpc DESTINATION ${CMAKE_INSTALL_DATADIR}/lua/${version} COMPONENT lua-librpc
    FILES_MATCHING PATTERN "*.lua")
endforeach()

# The command line.
install(DIRECTORY lua/rpcctl DESTINATION ${LIBRPC_LUA_MODDIR} COMPONENT rpcctl FILES_MATCHING PATTERN "*.lua")
file(WRITE ${CMAKE_BINARY_DIR}/rpcctl_version.lua "return \"${PROJECT_VERSION}\"\n")
install(FILES ${CMAKE_BINARY_DIR}/rpcctl_version.lua DESTINATION ${LIBRPC_LUA_MODDIR}/rpcctl RENAME version.lua
  COMPONENT rpcctl)
configure_file(bin/rpcctl ${CMAKE_BINARY_DIR}/rpcctl COPYONLY)
if(NOT LIBRPC_LUA STREQUAL "lua5.1")
  # the program runs with the Lua that the library was built for
  file(READ bin/rpcctl program)
  string(REGEX REPLACE "^#![^\n]*" "#!/usr/bin/env ${LIBRPC_LUA}" program "${program}")
  file(WRITE ${CMAKE_BINARY_DIR}/rpcctl "${program}")
endif()
install(PROGRAMS ${CMAKE_BINARY_DIR}/rpcctl DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT rpcctl)
if(LIBRPC_SHELL_FILES) # where each shell looks
  set(zsh_functions "site-functions")
  if(CMAKE_INSTALL_PREFIX STREQUAL "/usr" AND EXISTS /etc/debian_version) # Debian's packages have a folder of their own
    set(zsh_functions "vendor-completions")
  endif()
  install(FILES completion/rpcctl.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME rpcctl
    COMPONENT rpcctl)
  install(FILES completion/rpcctl.zsh DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/${zsh_functions} RENAME _rpcctl
    COMPONENT rpcctl)
  install(FILES completion/rpcctl.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT rpcctl)
  install(FILES docs/man/rpcctl.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT rpcctl)
  install(FILES docs/man/librpc.3 docs/man/librpc.record.3 DESTINATION ${CMAKE_INSTALL_MANDIR}/man3 COMPONENT librpc-doc)
endif()

# What people read. Links between the documents stay right: what lies where is as
# in the source tree.
foreach(document calls.md device.md gateway.md hosts.md named_fields.md openapi.json ports.md rpcctl.md trust.md web.md)
  install(FILES docs/${document} DESTINATION ${LIBRPC_DOCDIR}/docs COMPONENT librpc-doc)
endforeach()
install(FILES SECURITY.md DESTINATION ${LIBRPC_DOCDIR} COMPONENT librpc-doc)
install(DIRECTORY docs/reference DESTINATION ${LIBRPC_DOCDIR}/docs COMPONENT librpc-doc)
install(DIRECTORY examples DESTINATION ${LIBRPC_DOCDIR} COMPONENT librpc-doc)
install(FILES sim/names.lua DESTINATION ${LIBRPC_DOCDIR}/sim COMPONENT librpc-doc)

# What daemons and Wireshark read; the annotations for editors are in the reference.
install(DIRECTORY protocol DESTINATION ${LIBRPC_DATADIR} COMPONENT librpc-dev)
install(FILES tools/protocol_names.lua DESTINATION ${LIBRPC_DATADIR} COMPONENT librpc-dev)
install(FILES tools/wireshark/librpc.lua tools/wireshark/README.md DESTINATION ${LIBRPC_DATADIR}/wireshark
  COMPONENT librpc-dev)

include(${CMAKE_CURRENT_LIST_DIR}/install_web.cmake)
