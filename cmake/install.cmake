# What `cmake --install` puts where, and the packages that CPack makes of it.
# Every folder can be overridden, for LuaRocks trees and devices.
include(GNUInstallDirs)

# The version of the language, which Lua keeps in its folders' names.
if(LIBRPC_LUA STREQUAL "luajit")
  set(lua_version "5.1")
else()
  string(REGEX MATCH "[0-9]+\\.[0-9]+" lua_version "${LIBRPC_LUA}")
endif()

set(LIBRPC_LUA_CMODDIR "${CMAKE_INSTALL_LIBDIR}/lua/${lua_version}" CACHE STRING "Where Lua looks for C modules")
set(LIBRPC_LUA_MODDIR "${CMAKE_INSTALL_DATADIR}/lua/${lua_version}" CACHE STRING "Where Lua looks for Lua modules")

install(TARGETS rpc LIBRARY DESTINATION ${LIBRPC_LUA_CMODDIR})
install(DIRECTORY lua/librpc DESTINATION ${LIBRPC_LUA_MODDIR} FILES_MATCHING PATTERN "*.lua")
configure_file(lua/rpcctl ${CMAKE_BINARY_DIR}/rpcctl COPYONLY)
if(NOT LIBRPC_LUA STREQUAL "lua5.1")
  # the program runs with the Lua that the library was built for
  file(READ lua/rpcctl program)
  string(REGEX REPLACE "^#![^\n]*" "#!/usr/bin/env ${LIBRPC_LUA}" program "${program}")
  file(WRITE ${CMAKE_BINARY_DIR}/rpcctl "${program}")
endif()
install(PROGRAMS ${CMAKE_BINARY_DIR}/rpcctl DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES completion/rpcctl.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME rpcctl)
install(FILES docs/man/rpcctl.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES docs/man/librpc.3 docs/man/librpc.record.3 DESTINATION ${CMAKE_INSTALL_MANDIR}/man3)
# Links between the documents stay right: what lies where is as in the source tree.
set(LIBRPC_DOCDIR "${CMAKE_INSTALL_DATADIR}/doc/lua-librpc" CACHE STRING "Where documents and examples go")
install(FILES docs/calls.md docs/hosts.md docs/named_fields.md docs/rpcctl.md docs/trust.md DESTINATION ${LIBRPC_DOCDIR}/docs)
install(DIRECTORY docs/reference DESTINATION ${LIBRPC_DOCDIR}/docs)
install(DIRECTORY protocol DESTINATION ${LIBRPC_DOCDIR})
install(DIRECTORY examples DESTINATION ${LIBRPC_DOCDIR})
install(FILES sim/names.lua DESTINATION ${LIBRPC_DOCDIR}/sim)

include(${CMAKE_CURRENT_LIST_DIR}/install_web.cmake)

set(CPACK_GENERATOR "DEB")
set(CPACK_PACKAGE_NAME "lua-librpc")
set(CPACK_PACKAGE_VENDOR "librpc developers")
set(CPACK_PACKAGE_CONTACT "librpc developers <developers@librpc.invalid>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
# Two packages: all that has no component of its own, and the web console.
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL Unspecified web)
set(CPACK_DEBIAN_UNSPECIFIED_PACKAGE_NAME ${CPACK_PACKAGE_NAME})
# their first lines are the synopses: CPack's own summary would stand before both
set(CPACK_DEBIAN_UNSPECIFIED_DESCRIPTION
"device tables of a switch or optical line terminal for Lua
Lua module through which web pages and command scripts on the management
processor of a switch or optical line terminal read and change the device's
tables. It calls the local daemons that own them by ONC RPC over UDP.
With it come a module for records with named fields and rpcctl, a command line.")
set(CPACK_DEBIAN_WEB_PACKAGE_NAME "librpc-web")
set(CPACK_DEBIAN_WEB_DESCRIPTION
"web console for a switch or optical line terminal
A page that shows the device, plots its ports, finds every table and changes
what its user may, and the gateway behind it: the device's tables as JSON over
HTTP, with rights, a log of changes and metrics for Prometheus. It is served by
lighttpd, nginx, Apache or busybox httpd, by CGI or their Lua modules.")
set(CPACK_DEBIAN_WEB_PACKAGE_SECTION web)
set(CPACK_DEBIAN_WEB_PACKAGE_DEPENDS "lua-librpc (= ${PROJECT_VERSION}-1), ${LIBRPC_LUA}, lua-cjson")
set(CPACK_DEBIAN_WEB_PACKAGE_RECOMMENDS "lighttpd | nginx | apache2")
set(CPACK_DEBIAN_WEB_PACKAGE_CONTROL_EXTRA "${CMAKE_CURRENT_SOURCE_DIR}/packaging/web/postinst;${CMAKE_CURRENT_SOURCE_DIR}/packaging/web/postrm")
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION interpreters)
set(CPACK_DEBIAN_UNSPECIFIED_PACKAGE_SHLIBDEPS ON)
# libtirpc looks the port mapper's port up in /etc/services
set(CPACK_DEBIAN_UNSPECIFIED_PACKAGE_DEPENDS "${LIBRPC_LUA}, netbase")
set(CPACK_DEBIAN_UNSPECIFIED_PACKAGE_RECOMMENDS "rpcbind")
set(CPACK_INSTALL_PREFIX /usr)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PRE_BUILD_SCRIPTS "${CMAKE_CURRENT_SOURCE_DIR}/packaging/debian_files.cmake")
set(CPACK_LIBRPC_SOURCE "${CMAKE_CURRENT_SOURCE_DIR}")
set(CPACK_LIBRPC_MANDIR "${CMAKE_INSTALL_MANDIR}")
include(CPack)
