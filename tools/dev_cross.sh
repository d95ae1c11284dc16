#!/bin/bash
# ./dev cross HOST...: builds for another host and runs golden calls, unit tests,
# kept fuzz inputs and the end-to-end tests there, emulated where the processor is
# another one. `describe` below has a line a host: to add one, add its line.
#
#     dev_cross.sh --packages HOST...     the Debian packages that they want
#
# Exit status 77: left out, for what the last line says. DEBIAN_MIRROR names the
# place of Debian's packages and sources.
set -euo pipefail
. "$(dirname "$0")/fail.sh"
cd "$(dirname "$0")/.."
source=$PWD

hosts='s390x armhf arm64 mips musl static'

# What a host is.
#   compiler   debian: the cross compiler of that triplet; native, musl: this machine's
#   libraries  debian: the packages of that architecture; sources: libtirpc and Lua
#              5.1 built for it, and GoogleTest where there is
#   runtime    a C++ run-time library, which tests in C++ need and the library does not
describe() { # HOST
  emulator='' compiler=debian libraries=sources runtime=yes needs='libc libtirpc'
  options=() configure=(--disable-static) packages=(libgtest-dev rpcsvc-proto dpkg-dev)
  case $1 in
    s390x) triplet=s390x-linux-gnu emulator=qemu-s390x-static libraries=debian ;;         # 64 bits, big-endian
    armhf) triplet=arm-linux-gnueabihf emulator=qemu-arm-static libraries=debian ;;       # 32 bits, little-endian
    arm64) triplet=aarch64-linux-gnu emulator=qemu-aarch64-static libraries=debian ;;     # 64 bits, little-endian
    mips) triplet=mips-linux-gnu emulator=qemu-mips-static ;;                             # 32 bits, big-endian
    musl) triplet=$(uname -m)-linux-musl compiler=musl runtime=no ;;                      # another C library
    static) triplet=$(uname -m)-linux-gnu compiler=native configure=(--disable-shared) ;; # libtirpc within
    *) fail "command line" "some of $hosts" "'$1'" ;;
  esac
  [ "$1" != static ] || options=(-DLIBRPC_STATIC_TIRPC=ON) needs=libc
  [ "$1" != armhf ] || needs='libc libgcc_s libtirpc' # its unwind tables name a routine of libgcc's
  case $compiler in
    debian) packages+=("g++-$triplet" qemu-user-static) ;;
    musl) packages+=(musl-tools) ;;
  esac

  # What cannot be asked for there; the name is a gtest filter or an end-to-end case.
  if [ -n "$emulator" ]; then
    leave_out descriptor_limit_gives_no_value_and_the_next_call_works "the emulator needs descriptors of its own"
    leave_out exports.call_whose_argument_cannot_be_copied_prints_the_call_and_nothing_else \
      "the emulator does not refuse memory"
  fi
  case $1 in
    s390x | mips)
      leave_out hostpdinfo.decimal_comma_of_the_process_locale_goes_for_both_ways "this machine's localedef writes its own byte order"
      ;;
  esac
  build=$source/build-cross-$1 root=$source/build-cross-$1/root
}

excluded=''
leave_out() { # NAME WHY
  echo "dev_cross: $host: left out: $1: $2"
  excluded="$excluded:$1"
}

require() { # PROGRAM PACKAGE
  command -v "$1" >/dev/null || skip PATH "$1 (Debian: $2)" none
}

# Compilers, libraries, the interpreter, and how CMake is told of them.
prepare() {
  local prefix=$root
  mkdir -p "$build/bin"
  [ -z "$emulator" ] || require "$emulator" qemu-user-static
  case $compiler in
    musl)
      require musl-gcc musl-tools
      tools/cross/musl_compilers.sh "$build/bin"
      CC=$build/bin/musl-cc CXX=$build/bin/musl-c++
      ;;
    native) CC=cc CXX=c++ ;;
    debian)
      require "$triplet-g++" "g++-$triplet"
      CC=$triplet-gcc CXX=$triplet-g++
      options+=(-DCMAKE_TOOLCHAIN_FILE=cmake/cross.cmake)
      ;;
  esac
  compiler_command=$CC system=no # a whole one
  if [ "$libraries" = debian ]; then
    compiler_command="$CC --sysroot=$root" system=yes
    tools/cross/packages.sh "$build" "$host" libc6-dev libstdc++6 libtirpc-dev liblua5.1-0-dev lua5.1 libgtest-dev
  else
    prefix=/usr/$triplet # the compiler's own
    CC=$CC tools/cross/sources.sh "$build" "$triplet" "${configure[@]}"
  fi
  emulated=()
  [ -z "$emulator" ] || emulated=("$emulator" -L "$prefix")
  lua=$build/bin/lua5.1
  printf '#!/bin/sh\nexec %s %s/usr/bin/lua5.1 "$@"\n' "${emulated[*]}" "$root" >"$lua"
  chmod +x "$lua"
  # where cmake/cross.cmake, and pkg-config without it, look
  host_environment=(CC="$CC" CXX="$CXX" PKG_CONFIG_SYSROOT_DIR="$root" PKG_CONFIG_LIBDIR="$root/usr/lib/pkgconfig"
    LIBRPC_CROSS_TRIPLET="$triplet" LIBRPC_CROSS_ROOT="$root" LIBRPC_CROSS_EMULATOR="${emulated[*]}")
  [ "$libraries" != debian ] || host_environment+=(LIBRPC_CROSS_SYSROOT=1)
  options+=("-DCMAKE_PREFIX_PATH=$root/usr")
  if [ "$compiler$libraries" = debiansources ] && [ ! -e "$root/usr/lib/libgtest.a" ]; then
    [ -d /usr/src/googletest ] || skip /usr/src/googletest "GoogleTest's sources (Debian: libgtest-dev)" none
    echo "dev_cross: $host: building GoogleTest"
    (env "${host_environment[@]}" cmake -S /usr/src/googletest -B "$build/googletest" -DCMAKE_TOOLCHAIN_FILE="$source/cmake/cross.cmake" \
      -DBUILD_GMOCK=OFF -DCMAKE_INSTALL_PREFIX=/usr -DCMAKE_INSTALL_LIBDIR=lib && cmake --build "$build/googletest" &&
      DESTDIR=$root cmake --install "$build/googletest") >"$build/googletest.log" 2>&1 ||
      fail "$host: googletest" "a library" "$(tail -n 1 "$build/googletest.log")"
  fi
}

configured() { # FOLDER NAME [VARIABLE=VALUE]... -- [OPTION]...
  local folder=$1 name=$2 variables=()
  shift 2
  while [ "$1" != -- ]; do
    variables+=("$1")
    shift
  done
  shift
  mkdir -p "$folder"
  env "${variables[@]}" cmake -S . -B "$folder" -DCMAKE_BUILD_TYPE=Release -DLIBRPC_WERROR=ON "$@" >"$folder/configure.log" 2>&1 || {
    cat "$folder/configure.log" >&2
    fail cmake "a configured build for $name" "the errors above"
  }
}

tests=(unit/unit unit/exports golden/golden services/services calls/calls)

# The library and the tests for the host; the device that it talks to is this
# machine's own.
build_all() {
  local targets=(rpc) module test
  if [ "$runtime" = yes ]; then
    targets+=(e2e_process calls_host fuzz)
    for test in "${tests[@]}"; do
      targets+=("${test#*/}_test")
    done
    options+=(-DLIBRPC_TESTS=ON)
  fi
  configured "$build" "$host" "${host_environment[@]}" -- "${options[@]}"
  env "${host_environment[@]}" cmake --build "$build" --target "${targets[@]}" # which may configure again
  if [ "$runtime" = no ]; then
    mkdir -p "$build/tests/e2e"
    for module in e2e_process:tests/e2e/process.cpp calls_host:tests/calls/host.cpp; do
      "$CXX" -std=c++17 -O2 -fPIC -I. -isystem "$root/usr/include/lua5.1" -c "${module#*:}" -o "$build/module.o"
      "$CC" -shared "$build/module.o" -o "$build/tests/e2e/${module%:*}.so"
    done
  fi
  configured "$source/build-cross-native" "this machine" -- -DLIBRPC_TESTS=ON
  cmake --build "$source/build-cross-native" --target simulated_device
}

failure() { # WHAT LOG
  failed=$((failed + 1))
  complain "$host" "$1 to pass" "$(grep -v '^Running main' "$2" | tail -n 60)"
}

run_programs() {
  local test target log=$build/program.log
  if [ "$runtime" = no ]; then
    echo "dev_cross: $host: no C++ run-time library: golden calls and end-to-end tests only"
    return
  fi
  for test in "${tests[@]}"; do
    echo "dev_cross: $host: ${test#*/}"
    "${emulated[@]}" "$build/tests/${test}_test" --gtest_brief=1 "--gtest_filter=*-${excluded#:}" >"$log" 2>&1 ||
      failure "${test#*/}" "$log"
    grep PASSED "$log" || true
  done
  for target in "$build"/tests/fuzz/fuzz_*; do
    [ -x "$target" ] || continue
    echo "dev_cross: $host: ${target##*/}"
    "${emulated[@]}" "$target" "tests/fuzz/corpus/${target##*/fuzz_}.kept" >"$log" 2>&1 || failure "${target##*/}" "$log"
  done
}

# The end-to-end tests, with that host's Lua and library. They mostly wait: more of
# them at once than processors.
run_end_to_end() {
  local file topic case results=$build/end_to_end log
  export LUA_CPATH="$build/?.so;$build/tests/e2e/?.so" E2E_INTERPRETER=$lua LIBRPC_TEST_SOURCE=$source
  export LUA_PATH="$source/tests/e2e/?.lua;$source/tests/lua/?.lua;$source/lua/?.lua" LIBRPC_NAMES=$source/sim/names.lua
  rm -rf "$results"
  mkdir "$results"
  for file in tests/e2e/*.lua tests/calls/*.lua; do
    topic=${file##*/} topic=${topic%.lua}
    case $topic in harness | slow_*) continue ;; esac # those wait out deadlines
    # shellcheck disable=SC2013 # names have no blanks
    for case in $(sed -n 's/^case "\([^"]*\)".*/\1/p' "$file"); do
      case "$excluded:" in *":$case:"*) continue ;; esac
      printf '%s\0' "$file" "$case" "$results/$topic.$case"
    done
  done | xargs -0 -r -n 3 -P "$((2 * $(nproc)))" tools/cross/case.sh "$source/build-cross-native" "$lua" || true
  for log in "$results"/*; do
    case $log in
      *.passed) passed=$((passed + 1)) ;;
      *) failure "${log##*/}" "$log" ;;
    esac
  done
  [ "$passed" -gt 0 ] || fail tests/e2e cases "none that ran"
  echo "dev_cross: $host: $(cat "$results"/golden_calls.*.passed | sed -n 's/^\([0-9]* golden calls\).*/\1/p')"
}

# The example daemon, made for that host and run there.
run_daemon() {
  local problem log=$build/daemon.log libraries="-L$root/usr/lib -ltirpc -pthread -Wl,--disable-new-dtags,-rpath,$root/usr/lib"
  problem=$(tools/with_device.sh --allowed 2>&1) || skip "$host" "a network of its own" "$problem"
  echo "dev_cross: $host: example daemon"
  [ "$system" = no ] || libraries=-ltirpc
  CC="$compiler_command" TIRPC_CFLAGS="-I$root/usr/include/tirpc" TIRPC_LIBS=$libraries \
    LUA_CPATH="$build/?.so" tools/with_device.sh "$source/build-cross-native" -- \
    tests/ports/daemon_test.sh "$source" "$build/daemon" "$lua" "${emulated[@]}" >"$log" 2>&1 || failure "example daemon" "$log"
}

# What the library needs, without versions and the dynamic linker.
check_needed() {
  local found
  found=$(readelf -d "$build/librpc.so" | sed -n 's/.*(NEEDED).*\[\([^.]*\)\..*\]/\1/p' | grep -v '^ld' | LC_ALL=C sort | xargs)
  [ "$found" = "$needs" ] || fail "$build/librpc.so" "to need $needs" "$found"
}

run_host() { # HOST
  local host=$1 failed=0 passed=0 started=$SECONDS
  describe "$host"
  prepare
  build_all
  check_needed
  run_programs
  run_daemon
  run_end_to_end
  [ "$host" != musl ] || tools/cross/openwrt.sh "$build" "$source/build-cross-native"
  [ "$failed" = 0 ] || fail "$host" "every test to pass" "$failed that did not"
  echo "dev_cross: $host: $passed end-to-end cases passed ($((SECONDS - started)) s)"
}

[ $# -gt 0 ] || fail "command line" "some of $hosts" none
if [ "$1" = --packages ]; then
  shift
  for host; do
    describe "$host" >/dev/null
    printf '%s\n' "${packages[@]}"
  done | sort -u
  exit
fi
if [ $# = 1 ]; then
  run_host "$1"
  exit
fi
# each in a shell of its own, in which a failed command ends it
left_out=0
for name; do
  status=0
  tools/dev_cross.sh "$name" || status=$?
  case $status in 0) ;; 77) left_out=77 ;; *) exit "$status" ;; esac
done
exit "$left_out"
