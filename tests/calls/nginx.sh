#!/bin/bash
# Runs nginx_test.py beside the simulated device, with nginx and its Lua module of
# Debian's packages, unpacked and not installed (installing them would take luajit
# away):
#
#     nginx.sh BUILD
#
# Ends with 77, which ctest counts as skipped, where they cannot be had.
set -euo pipefail
. "$(dirname "$0")/../../tools/fail.sh"
build=$(realpath "$1")
source=$(cd "$(dirname "$0")/../.." && pwd)
packages=(nginx nginx-common libnginx-mod-http-lua libnginx-mod-http-ndk lua-resty-core lua-resty-lrucache libluajit2-5.1-2)
folder=$build/tests/calls/nginx

unpack() {
  rm -rf "$folder"
  mkdir -p "$folder/packages" "$folder/root"
  (cd "$folder/packages" && apt-get -qq download "${packages[@]}") || return
  for package in "$folder/packages"/*.deb; do
    dpkg -x "$package" "$folder/root" || return
  done
  touch "$folder/complete"
}
if [ ! -e "$folder/complete" ]; then
  unpack >/dev/null 2>&1 || skip packages "${packages[*]}" "none that can be downloaded"
fi

# nginx of another system's libraries is none
LD_LIBRARY_PATH=$folder/root/usr/lib/$(gcc -print-multiarch)
export LD_LIBRARY_PATH
ldd "$folder/root/usr/sbin/nginx" "$folder/root/usr/lib/nginx/modules/ngx_http_lua_module.so" | grep -q "not found" &&
  skip nginx "its libraries" "some missing"

export LUA_PATH="$source/lua/?.lua;$folder/root/usr/share/lua/5.1/?.lua;;" LUA_CPATH="$build/?.so;;"
exec "$source/tools/with_device.sh" "$build" -- \
  python3 "$source/tests/calls/nginx_test.py" "$folder/root" "$source/examples/calls"
