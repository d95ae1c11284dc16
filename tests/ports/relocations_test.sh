#!/bin/bash
# Packed relocations are there where the linker makes them and the C library reads
# them, and nowhere else; with every linker the library loads.
#     relocations_test.sh SOURCE SCRATCH LUA LUA_PKG_CONFIG
set -euo pipefail
. "$(dirname "$0")/../../tools/fail.sh"
source=$1 scratch=$2 lua=$3 package=$4

configure() { # FOLDER [OPTION]...
  cmake -S "$source" -B "$@" -DLIBRPC_LUA="$package" -DCMAKE_BUILD_TYPE=Debug >"$scratch/configure.log" 2>&1
}
option() { # FOLDER
  sed -n 's/^LIBRPC_PACK_RELOCATIONS:BOOL=//p' "$1/CMakeCache.txt"
}

rm -rf "$scratch"
mkdir -p "$scratch"
unset CFLAGS CXXFLAGS LDFLAGS CC CXX
glibc=$(getconf GNU_LIBC_VERSION)
reads=OFF
[ "$(printf '%s\n' 2.36 "${glibc#glibc }" | sort -V | head -n 1)" != 2.36 ] || reads=ON

# One folder for all linkers: only linking differs.
lld=$reads # whose older releases leave out the version by which glibc knows that it can read them
ld.lld --version 2>/dev/null | grep -Eq ' LLD (1[5-9]|[2-9][0-9])\.' || lld=OFF
for linker in bfd:$reads lld:$lld gold:OFF; do
  expected=${linker#*:} linker=${linker%:*} build=$scratch/linkers
  command -v "ld.$linker" >/dev/null || { complain "$linker: left out" "ld.$linker" none && continue; }
  configure "$build" -ULIBRPC_PACK_RELOCATIONS -DCMAKE_MODULE_LINKER_FLAGS=-fuse-ld="$linker" ||
    fail "$linker" "a configured build" "$(tail -n 3 "$scratch/configure.log")"
  [ "$(option "$build")" = "$expected" ] || fail "$linker" "LIBRPC_PACK_RELOCATIONS=$expected" "$(option "$build")"
  cmake --build "$build" --target rpc -j "$(nproc)" >"$scratch/build.log" 2>&1 || fail "$linker" "a library" "$(tail "$scratch/build.log")"
  found=OFF
  ! readelf -SW "$build/librpc.so" | grep -q '\.relr\.dyn' || found=ON
  [ "$found" = "$expected" ] || fail "$linker: .relr.dyn" "$expected" "$found"
  LUA_CPATH="$build/?.so" "$lua" -e 'assert(#require("librpc.schema").apis > 0)' || fail "$linker" "a library that loads" "the error above"
done

# A C library that is not known to read them; a linker asked for what it cannot do.
if command -v musl-gcc >/dev/null; then
  configure "$scratch/musl" -DCMAKE_C_COMPILER=musl-gcc || fail musl "a configured build" "$(tail -n 3 "$scratch/configure.log")"
  [ "$(option "$scratch/musl")" = OFF ] || fail musl OFF "$(option "$scratch/musl")"
fi
! configure "$scratch/cannot" -DLIBRPC_PACK_RELOCATIONS=ON -DCMAKE_MODULE_LINKER_FLAGS=-fuse-ld=gold ||
  fail gold "an error, where packing is asked for" none
tr -s '\n ' ' ' <"$scratch/configure.log" | grep -q 'LIBRPC_PACK_RELOCATIONS: expected a linker that packs them' ||
  fail gold "a sentence that says why" "$(tail -n 5 "$scratch/configure.log")"

# A device may have an older C library than the cross compiler.
printf 'set(CMAKE_SYSTEM_NAME Linux)\nset(CMAKE_C_COMPILER cc)\nset(CMAKE_CXX_COMPILER c++)\n' >"$scratch/device.cmake"
configure "$scratch/device" -DCMAKE_TOOLCHAIN_FILE="$scratch/device.cmake" || fail device "a configured build" "$(tail -n 3 "$scratch/configure.log")"
[ "$(option "$scratch/device")" = OFF ] || fail "a cross build" OFF "$(option "$scratch/device")"
