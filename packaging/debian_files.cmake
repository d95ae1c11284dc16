# Run by CPack on the staged packages: what Debian's policy wants of one, which
# `cmake --install` has no use for.
function(compress file)
  execute_process(COMMAND gzip -9nf "${file}" COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# One package: the folder that CPack staged, and its name.
function(finish staged package)
  set(root "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${staged}/usr")
  set(docs "${root}/share/doc/${package}")
  file(MAKE_DIRECTORY "${docs}")
  file(COPY "${CPACK_LIBRPC_SOURCE}/packaging/copyright" DESTINATION "${docs}")
  configure_file("${CPACK_LIBRPC_SOURCE}/packaging/changelog.Debian" "${docs}/changelog.Debian" COPYONLY)
  configure_file("${CPACK_LIBRPC_SOURCE}/CHANGELOG.md" "${docs}/changelog" COPYONLY)
  compress("${docs}/changelog.Debian")
  compress("${docs}/changelog")
  file(GLOB pages "${root}/share/man/man*/*.[0-9]")
  foreach(page IN LISTS pages)
    compress("${page}")
  endforeach()

  # 0755 for folders and programs, 0644 for all else, whatever the umask was
  execute_process(COMMAND chmod -R u=rwX,go=rX "${root}" COMMAND_ERROR_IS_FATAL ANY)
  file(GLOB_RECURSE libraries "${root}/lib/*.so")
  if(libraries)
    file(CHMOD ${libraries} PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
  endif()
endfunction()

finish(Unspecified ${CPACK_PACKAGE_NAME})
finish(web ${CPACK_DEBIAN_WEB_PACKAGE_NAME})
