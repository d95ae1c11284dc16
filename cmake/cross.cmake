# Toolchain file: Debian's cross compiler for LIBRPC_CROSS_TRIPLET, libraries
# from LIBRPC_CROSS_SYSROOT, tests run by LIBRPC_CROSS_EMULATOR. See
# tools/dev_cross.sh, which sets all three in the environment.
set(CMAKE_SYSTEM_NAME Linux)
if(NOT DEFINED ENV{LIBRPC_CROSS_TRIPLET} OR NOT DEFINED ENV{LIBRPC_CROSS_SYSROOT})
  message(FATAL_ERROR "cmake/cross.cmake: environment: expected LIBRPC_CROSS_TRIPLET and "
                      "LIBRPC_CROSS_SYSROOT, found one unset: run ./dev cross s390x or ./dev cross armhf")
endif()
set(triplet $ENV{LIBRPC_CROSS_TRIPLET})
string(REGEX MATCH "^[^-]+" CMAKE_SYSTEM_PROCESSOR ${triplet})
set(CMAKE_C_COMPILER ${triplet}-gcc)
set(CMAKE_CXX_COMPILER ${triplet}-g++)
set(CMAKE_LIBRARY_ARCHITECTURE ${triplet})

set(CMAKE_SYSROOT $ENV{LIBRPC_CROSS_SYSROOT})
set(CMAKE_FIND_ROOT_PATH ${CMAKE_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${CMAKE_SYSROOT})
set(ENV{PKG_CONFIG_LIBDIR} ${CMAKE_SYSROOT}/usr/lib/${triplet}/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig)

if(DEFINED ENV{LIBRPC_CROSS_EMULATOR})
  set(CMAKE_CROSSCOMPILING_EMULATOR $ENV{LIBRPC_CROSS_EMULATOR} -L ${CMAKE_SYSROOT})
endif()
