#!/bin/bash
# ./dev package: builds the Debian packages, of the library and of the web console,
# into build-package/ and asks lintian.
# ./dev package check: then makes a LuaRocks tree; installs the packages with apt
# into a root of its own that has nothing but Debian's base system, tries them there
# beside the simulated device of build/, and removes them again. `check` needs root
# and takes a minute or two.
set -euo pipefail
cd "$(dirname "$0")/.."

fail() {
  echo "package: $1: expected $2, found $3" >&2
  exit 1
}

build="build-package"
cmake -S . -B $build -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/usr -DLIBRPC_TESTS=OFF >/dev/null
cmake --build $build
rm -f $build/*.deb
(cd $build && cpack -G DEB >cpack.log) || fail cpack "a package" "$(tail -n 3 $build/cpack.log)"
package=$(echo $build/lua-librpc_*.deb) web=$(echo $build/librpc-web_*.deb)
for each in "$package" "$web"; do
  dpkg-deb --contents "$each" | awk '{ print $6 }'
  lintian --fail-on error "$each" || fail lintian "no errors in $each" "those above"
  echo "package: $each"
done
[ "${1:-}" = check ] || exit 0

# LuaRocks, into a tree of its own.
rocks=$PWD/$build/rocks
rm -rf "$rocks"
luarocks --lua-version 5.1 make --tree "$rocks" >$build/rocks.log 2>&1 ||
  fail luarocks "an installed rock" "$(tail -n 1 $build/rocks.log)"
rm -rf build.luarocks
apis=$(grep -vc '^#' tests/golden/apis.txt)
[ "$("$rocks/bin/rpcctl" list | wc -l)" = "$apis" ] || fail "$rocks/bin/rpcctl" "$apis APIs" "another number"

[ "$(id -u)" = 0 ] || fail privileges root "$(id -un)"
command -v debootstrap >/dev/null || fail programs debootstrap none
[ -x build/simulated_device ] || fail build "the simulated device (./dev build)" none

# A clean root, kept for the next time as an archive.
archive=$build/root.tar
root=$build/root
rm -rf $root
if [ ! -e $archive ]; then
  mirror=$(sed -n -E 's/^(deb|URIs:)( \[[^]]*\])? *(https?:[^ ]+).*/\3/p' /etc/apt/sources.list /etc/apt/sources.list.d/* 2>/dev/null | head -n 1) || true
  debootstrap --variant=minbase bookworm $root "${mirror:-http://deb.debian.org/debian}" >$build/debootstrap.log 2>&1 ||
    fail debootstrap "Debian 12's base system" "$(tail -n 1 $build/debootstrap.log)"
  rm -f $root/etc/apt/sources.list
  for file in /etc/apt/sources.list /etc/apt/sources.list.d /etc/apt/apt.conf.d /etc/apt/trusted.gpg.d; do
    [ ! -e $file ] || cp -rT $file $root$file
  done
  cp /etc/resolv.conf $root/etc/
  tar -C $root -cf $archive .
else
  mkdir $root
  tar -C $root -xf $archive
fi
cp "$package" $root/package.deb
cp "$web" $root/web.deb
# Debian's minimal images leave manual pages out; this check wants to read one.
mkdir -p $root/etc/librpc/names
cp web/servers/web.lua $root/etc/librpc/
cp sim/names.lua $root/etc/librpc/names/
cat >$root/check.sh <<'END'
set -eu
export DEBIAN_FRONTEND=noninteractive
rm -f /etc/dpkg/dpkg.cfg.d/docker* /etc/apt/apt.conf.d/docker-*
apt-get -qq update
apt-get -qq install -y --no-install-recommends /package.deb /web.deb man-db >/dev/null
lua5.1 -e 'require "librpc" assert(require "librpc.schema".api("oltmib_devinfo_get_1"))'
[ "$(rpcctl list | wc -l)" = "$1" ]
man rpcctl | grep -q 'rpcctl - read'
man librpc | grep -q callapi
[ "$(stat -c '%U %a' /run/librpc-web)" = "www-data 700" ]
cmp /usr/share/librpc-web/servers/web.lua /etc/librpc/web.lua
END
cat >$root/remove.sh <<'END'
set -eu
DEBIAN_FRONTEND=noninteractive apt-get -qq purge -y librpc-web lua-librpc >/dev/null
rm -r /etc/librpc # ours
left=$(find / -xdev \( -path /proc -o -path /var/cache -o -name '*.deb' \) -prune -o \( -name '*rpcctl*' -o -name '*librpc*' \) -print)
[ -z "$left" ] || { echo "package: removal: expected nothing left, found $left" >&2; exit 1; }
END
mount -t proc proc $root/proc
mount -t devpts devpts $root/dev/pts
trap 'umount "$root/proc" "$root/dev/pts"' EXIT
chroot $root sh /check.sh "$apis"
tools/with_device.sh build -- chroot $root sh -c 'rpcctl get devinfo && rpcctl rows portinfo --fields ifx,name'
# the gateway as a web server starts it
cat >$root/ask.sh <<'END'
export REQUEST_METHOD=GET REMOTE_USER=ann SCRIPT_NAME=/api PATH_INFO=$1
exec setpriv --reuid www-data --regid www-data --clear-groups /usr/share/librpc-web/librpc.cgi
END
tools/with_device.sh build -- sh -c "chroot $root sh /ask.sh /health && chroot $root sh /ask.sh /session" >$build/web.log
for expected in '"well":true' '"user":"ann"' '"token":"[0-9a-f]*"'; do
  grep -q "$expected" $build/web.log || fail librpc.cgi "$expected" "$(tail -n 3 $build/web.log)"
done
chroot $root sh /remove.sh
umount $root/proc $root/dev/pts
trap - EXIT
rm -rf $root
echo "package: installs, runs and leaves nothing behind"
