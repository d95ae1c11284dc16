#!/bin/bash
# Builds libtirpc without Kerberos and Lua 5.1 from Debian's sources, for a host
# whose packages Debian does not have, into a prefix of their own:
#
#     sources.sh FOLDER TRIPLET [CONFIGURE OPTION]...
#
# FOLDER/root/usr is the prefix; CC is the compiler. Built once. Exit status 77:
# the sources cannot be had, for what the last line says.
set -euo pipefail
. "$(dirname "$0")/../fail.sh"
tool=dev_cross
folder=$1 triplet=$2
shift 2

stamp="$triplet $CC $*"
[ "$(cat "$folder/root/built" 2>/dev/null)" != "$stamp" ] || exit 0
rm -rf "$folder/root"
mkdir -p "$folder/sources" "$folder/root"
log=$folder/sources.log
: >"$log"
mirror=${DEBIAN_MIRROR:-http://deb.debian.org/debian}
# shellcheck source=/dev/null
release=$(. /etc/os-release && echo "${VERSION_CODENAME:-bookworm}")

# Debian's sources as they came, of the first release that has them: they are
# unpacked without its patches, which are for its own ports and paths.
fetch() { # PACKAGE
  local suite state
  [ ! -d "$folder/sources/$1" ] || return 0
  for suite in "$release" trixie sid; do
    state=$folder/sources/apt-$suite
    mkdir -p "$state/lists/partial" "$state/archives/partial"
    echo "deb-src [signed-by=/usr/share/keyrings/debian-archive-keyring.gpg] $mirror $suite main" >"$state/sources.list"
    local apt=(apt-get -qq -oAPT::Sandbox::User=root -oDebug::NoLocking=1 -oDir::State="$state"
      -oDir::State::Status=/dev/null -oDir::Cache="$state" -oDir::Etc::SourceList="$state/sources.list"
      -oDir::Etc::SourceParts=/dev/null)
    rm -rf "$state/got"
    mkdir "$state/got"
    if "${apt[@]}" update >>"$log" 2>&1 && (cd "$state/got" && "${apt[@]}" source --download-only "$1") >>"$log" 2>&1; then
      mkdir "$folder/sources/$1"
      tar -C "$folder/sources/$1" --strip-components=1 -xf "$(echo "$state/got"/*.orig.tar.*[!c])"
      return 0
    fi
  done
  skip "$mirror" "the sources of $1" "$(tail -n 1 "$log")"
}

build_libtirpc() { # [CONFIGURE OPTION]...
  rm -rf "$folder/libtirpc" && mkdir "$folder/libtirpc" && cd "$folder/libtirpc" &&
    "$folder/sources/libtirpc/configure" --host="$triplet" --prefix=/usr --libdir=/usr/lib --sysconfdir=/etc \
      --disable-gssapi --with-pic "$@" CC="$CC" CFLAGS="-O2 -w" &&
    make -j2 && make install DESTDIR="$folder/root" && rm -f "$folder/root/usr/lib/"*.la
}

# The library for programs that hold Lua, and an interpreter that finds shared
# libraries of the prefix, also those of the modules that it loads.
build_lua() {
  local source=$folder/sources/lua5.1/src headers=$folder/root/usr/include/lua5.1 libraries=$folder/root/usr/lib
  local flags=(-O2 -w -fPIC -DLUA_USE_POSIX -DLUA_USE_DLOPEN) files=() file
  for file in "$source"/*.c; do
    case ${file##*/} in lua.c | luac.c | print.c) ;; *) files+=("$file") ;; esac
  done
  rm -rf "$folder/lua" && mkdir -p "$folder/lua" "$folder/root/usr/bin" "$headers" "$libraries/pkgconfig" &&
    cd "$folder/lua" && "$CC" "${flags[@]}" -c "${files[@]}" && rm -f "$libraries/liblua5.1.a" &&
    ar rcs "$libraries/liblua5.1.a" ./*.o &&
    "$CC" "${flags[@]}" -o "$folder/root/usr/bin/lua5.1" "$source/lua.c" ./*.o -Wl,-E \
      -Wl,--disable-new-dtags,-rpath,"$libraries" -ldl -lm &&
    cp "$source"/{lua,luaconf,lualib,lauxlib}.h "$source"/../etc/lua.hpp "$headers/" &&
    printf '%s\n' 'Name: Lua' 'Description: Lua 5.1' 'Version: 5.1.5' 'Cflags: -I/usr/include/lua5.1' \
      'Libs: -L/usr/lib -llua5.1 -lm -ldl' >"$libraries/pkgconfig/lua5.1.pc"
}

fetch libtirpc
fetch lua5.1
echo "dev_cross: building libtirpc and Lua for $triplet"
(build_libtirpc "$@") >>"$log" 2>&1 </dev/null || fail libtirpc "a library" "$(tail -n 1 "$log") ($log)"
(build_lua) >>"$log" 2>&1 || fail lua5.1 "an interpreter" "$(tail -n 1 "$log") ($log)"
echo "$stamp" >"$folder/root/built"
