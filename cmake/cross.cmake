# Toolchain file: Debian's cross compiler for LIBRPC_CROSS_TRIPLET, libraries from
# LIBRPC_CROSS_ROOT, a whole system of that host or what the compiler's own lacks
# (LIBRPC_CROSS_SYSROOT says which), tests run by LIBRPC_CROSS_EMULATOR. See
# tools/dev_cross.sh, which sets them in the environment.
set(CMAKE_SYSTEM_NAME Linux)
if(NOT DEFINED ENV{LIBRPC_CROSS_TRIPLET} OR NOT DEFINED ENV{LIBRPC_CROSS_ROOT})
  message(FATAL_ERROR "cmake/cross.cmake: environment: expected LIBRPC_CROSS_TRIPLET and "
                      "LIBRPC_CROSS_ROOT, found one unset: run ./dev cross HOST")
endif()
set(triplet $ENV{LIBRPC_CROSS_TRIPLET})
string(REGEX MATCH "^[^-]+" CMAKE_SYSTEM_PROCESSOR ${triplet})
set(CMAKE_C_COMPILER ${triplet}-gcc)
set(CMAKE_CXX_COMPILER ${triplet}-g++)
set(CMAKE_LIBRARY_ARCHITECTURE ${triplet})

if("$ENV{LIBRPC_CROSS_SYSROOT}")
  set(CMAKE_SYSROOT $ENV{LIBRPC_CROSS_ROOT})
endif()
set(CMAKE_FIND_ROOT_PATH $ENV{LIBRPC_CROSS_ROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_SYSROOT_DIR} $ENV{LIBRPC_CROSS_ROOT})
set(ENV{PKG_CONFIG_LIBDIR} "$ENV{LIBRPC_CROSS_ROOT}/usr/lib/${triplet}/pkgconfig:\
$ENV{LIBRPC_CROSS_ROOT}/usr/lib/pkgconfig:$ENV{LIBRPC_CROSS_ROOT}/usr/share/pkgconfig")

if(DEFINED ENV{LIBRPC_CROSS_EMULATOR})
  separate_arguments(CMAKE_CROSSCOMPILING_EMULATOR UNIX_COMMAND "$ENV{LIBRPC_CROSS_EMULATOR}")
endif()
