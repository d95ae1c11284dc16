# librpc_tirpc: the libtirpc that the library is linked with. Debian's is a shared
# one, which brings Kerberos and four libraries of it; a libtirpc that was built
# without it and position-independent (configure --disable-gssapi --with-pic) can
# become part of librpc.so with LIBRPC_STATIC_TIRPC, which then needs libc alone.
option(LIBRPC_STATIC_TIRPC "Make libtirpc a part of the library, which then needs libc alone" OFF)
set(LIBRPC_TIRPC_ARCHIVE "" CACHE FILEPATH "The libtirpc.a of LIBRPC_STATIC_TIRPC, where pkg-config's is another one")

add_library(librpc_tirpc INTERFACE)
if(NOT LIBRPC_STATIC_TIRPC)
  target_link_libraries(librpc_tirpc INTERFACE PkgConfig::TIRPC)
  return()
endif()

set(archive ${LIBRPC_TIRPC_ARCHIVE})
if(NOT archive)
  find_library(LIBRPC_FOUND_TIRPC libtirpc.a HINTS ${TIRPC_LIBRARY_DIRS} ${TIRPC_LIBDIR})
  set(archive ${LIBRPC_FOUND_TIRPC})
endif()
if(NOT archive OR NOT EXISTS ${archive})
  message(FATAL_ERROR "cmake/tirpc.cmake: LIBRPC_STATIC_TIRPC: expected libtirpc.a beside pkg-config's libtirpc "
    "or in LIBRPC_TIRPC_ARCHIVE, found none")
endif()
link_probe("-Wl,-z,text;-Wl,--no-undefined;-Wl,--whole-archive;${archive};-Wl,--no-whole-archive;-pthread" file)
if(NOT file)
  message(FATAL_ERROR "cmake/tirpc.cmake: ${archive}: expected a position-independent library without Kerberos "
    "(configure --disable-gssapi --with-pic), found one that cannot become part of another")
endif()
target_include_directories(librpc_tirpc SYSTEM INTERFACE ${TIRPC_INCLUDE_DIRS})
# its names stay inside: a host may have a libtirpc of its own
target_link_libraries(librpc_tirpc INTERFACE ${archive} -pthread)
target_link_options(librpc_tirpc INTERFACE -Wl,--exclude-libs,libtirpc.a)
