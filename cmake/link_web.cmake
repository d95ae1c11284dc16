# Run by `cmake --install` behind the documents: what they link to in web/ lies in the
# web console's folder. Wants web_folder and web_docs.
foreach(folder web_folder web_docs)
  if(NOT IS_ABSOLUTE "${${folder}}")
    set(${folder} "${CMAKE_INSTALL_PREFIX}/${${folder}}")
  endif()
endforeach()
file(RELATIVE_PATH link "${web_docs}" "${web_folder}")
file(CREATE_LINK "${link}" "$ENV{DESTDIR}${web_docs}/web" SYMBOLIC)
