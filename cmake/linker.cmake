# What the linker can do, asked anew at each configuration by linking with the
# flags that modules are linked with.
#
# Relative relocations packed into a bitmap (DT_RELR), which are a part of the file's size
# that docs/performance.md tells. Sets the option LIBRPC_PACK_RELOCATIONS and, for it, the
# linker's option in LIBRPC_RELOCATIONS.
#
# A linker that does not know its option may say so and go on, and a C library
# that does not know the table leaves the pointers as they are: the first call
# crashes. So it is on where a file that was linked has the table and the C
# library is known to read it, which is glibc from 2.36 on. glibc loads such a
# file only where it also names the version GLIBC_ABI_DT_RELR, which lld adds from
# 15 on. musl reads the table from 1.2.4 on, but has no macro that tells its
# version; a cross compiler may build for a device with an older library than its
# own: there whoever knows says ON.

# The file that comes of linking with the option; empty where none does.
function(link_probe option result)
  set(probe ${CMAKE_BINARY_DIR}/CMakeFiles/linker_probe)
  file(WRITE ${probe}.c "int puts(const char *);\nstatic int one, two;\n"
    "int *const pointers[] = {&one, &two, &one, &two};\nint probe(void) { return puts(\"\"); }\n")
  separate_arguments(flags UNIX_COMMAND "${CMAKE_C_COMPILER_ARG1} ${CMAKE_C_FLAGS} ${CMAKE_MODULE_LINKER_FLAGS}")
  if(CMAKE_SYSROOT)
    list(APPEND flags --sysroot=${CMAKE_SYSROOT})
  endif()
  file(REMOVE ${probe}.so)
  execute_process(COMMAND ${CMAKE_C_COMPILER} ${flags} -fPIC -shared ${option} -o ${probe}.so ${probe}.c
    OUTPUT_QUIET ERROR_QUIET)
  set(${result} "" PARENT_SCOPE)
  if(EXISTS ${probe}.so)
    set(${result} ${probe}.so PARENT_SCOPE)
  endif()
endfunction()

# The first option with which a module gets a table that its C library takes.
set(LIBRPC_RELOCATIONS "")
foreach(option -Wl,-z,pack-relative-relocs -Wl,--pack-dyn-relocs=relr) # GNU ld's, lld's
  link_probe(${option} file)
  if(file AND NOT LIBRPC_RELOCATIONS)
    file(STRINGS ${file} table REGEX "^\\.relr\\.dyn$")
    file(STRINGS ${file} glibc REGEX "^GLIBC_2")
    file(STRINGS ${file} version REGEX "^GLIBC_ABI_DT_RELR$")
    if(table AND (version OR NOT glibc))
      set(LIBRPC_RELOCATIONS ${option})
    endif()
  endif()
endforeach()
set(packs OFF)
if(LIBRPC_RELOCATIONS AND NOT CMAKE_CROSSCOMPILING)
  include(CheckCSourceCompiles)
  check_c_source_compiles("
    #include <features.h>
    #if !defined __GLIBC__ || !__GLIBC_PREREQ(2, 36)
    #error not known to read DT_RELR
    #endif
    int main(void) { return 0; }" LIBRPC_LIBC_READS_RELR)
  set(packs ${LIBRPC_LIBC_READS_RELR})
endif()
option(LIBRPC_PACK_RELOCATIONS "Pack relative relocations (DT_RELR)" ${packs})
if(NOT LIBRPC_PACK_RELOCATIONS)
  set(LIBRPC_RELOCATIONS "")
elseif(NOT LIBRPC_RELOCATIONS)
  message(FATAL_ERROR "cmake/linker.cmake: LIBRPC_PACK_RELOCATIONS: expected a linker that packs them, "
    "found one that makes no .relr.dyn, or one that glibc refuses")
endif()

# Two segments instead of four: less padding. gold, which knows no such option, makes two
# anyway.
link_probe(-Wl,-z,noseparate-code file)
if(file)
  set(LIBRPC_SEGMENTS -Wl,-z,noseparate-code)
endif()
