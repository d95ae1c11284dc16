#!/bin/bash
# Installs the packages into a root that has nothing but a Debian release's base
# system, tries them there beside the simulated device of build/, and removes them:
#
#     root.sh FOLDER SUITE
#
# Where the release's C library is older than the packages ask for, apt must
# refuse and name it, and nothing may be installed. The base system is kept in
# FOLDER as an archive. Exit status 77: the release cannot be had, for what the
# last line says.
set -euo pipefail
. "$(dirname "$0")/../fail.sh"
cd "$(dirname "$0")/../.."
folder=$1 suite=$2 tool="package: $2"

# The base system, with apt told where it came from.
archive=$folder/root-$suite.tar root=$folder/root-$suite
umount -q "$root/proc" "$root/dev/pts" 2>/dev/null || true
rm -rf "$root"
if [ ! -e "$archive" ]; then
  mirror=$(sed -n -E 's/^(deb|URIs:)( \[[^]]*\])? *(https?:[^ ]+).*/\3/p' /etc/apt/sources.list /etc/apt/sources.list.d/* 2>/dev/null | head -n 1) || true
  # apt here as on this machine: a proxy, a certificate
  mmdebstrap --quiet --format=tar --variant=minbase --customize-hook="copy-in /etc/resolv.conf /etc" \
    "$suite" "$archive.new" "${DEBIAN_MIRROR:-${mirror:-http://deb.debian.org/debian}}" >"$folder/mmdebstrap.log" 2>&1 ||
    skip mmdebstrap "its base system" "$(grep '^E:' "$folder/mmdebstrap.log" | tail -n 1)"
  mv "$archive.new" "$archive"
fi
mkdir "$root"
tar -C "$root" -xf "$archive"
mkdir "$root/packages"
cp "$folder"/*.deb "$root/packages/"
mount -t proc proc "$root/proc"
mount -t devpts devpts "$root/dev/pts"
trap 'umount "$root/proc" "$root/dev/pts"' EXIT

cat >"$root/install.sh" <<'END'
set -eu
export DEBIAN_FRONTEND=noninteractive LC_ALL=C
# Debian's minimal images leave manual pages out; this check wants to read one.
rm -f /etc/dpkg/dpkg.cfg.d/docker* /etc/apt/apt.conf.d/docker-*
apt-get -qq update
exec apt-get -q install -y --no-install-recommends /packages/*.deb man-db lua5.1 luajit lua5.2 lua5.3 lua5.4
END
cat >"$root/check.sh" <<'END'
set -eu
for lua in lua5.1 luajit lua5.2 lua5.3 lua5.4; do
  $lua -e 'require "librpc" require "librpc.record" assert(require "librpc.schema".api("oltmib_devinfo_get_1"))'
done
[ "$(rpcctl list | wc -l)" = "$1" ]
man rpcctl | grep -q '^ *rpcctl  *- '
man librpc | grep -q callapi
[ "$(stat -c '%U %a' /run/librpc-web)" = "www-data 700" ]
cmp /usr/share/librpc-web/servers/web.lua /etc/librpc/web.lua
[ -e /usr/share/doc/librpc-doc/docs/reference/../../protocol/devinfo.x ] # as the reference links
END
cat >"$root/remove.sh" <<'END'
set -eu
rm -r /etc/librpc # ours
DEBIAN_FRONTEND=noninteractive apt-get -qq purge -y $(cd /packages && ls | sed 's/_.*//') >/dev/null
left=$(find / -xdev \( -path /proc -o -path /var/cache -o -path /packages \) -prune -o \( -name '*rpcctl*' -o -name '*librpc*' \) -print)
[ -z "$left" ] || { echo "package: removal: expected nothing left, found $left" >&2; exit 1; }
END

# the gateway as a web server starts it
mkdir -p "$root/etc/librpc/names"
cp web/servers/web.lua "$root/etc/librpc/"
cp sim/names.lua "$root/etc/librpc/names/"
cat >"$root/ask.sh" <<'END'
export REQUEST_METHOD=GET REMOTE_USER=ann SCRIPT_NAME=/api PATH_INFO=$1
exec setpriv --reuid www-data --regid www-data --clear-groups /usr/share/librpc-web/librpc.cgi
END

wanted=$(dpkg-deb --field "$(echo "$folder"/lua-librpc_*.deb)" Depends | sed -n 's/.*libc6 (>= \([0-9.]*\)).*/\1/p')
# shellcheck disable=SC2016 # dpkg-query's own
has=$(chroot "$root" dpkg-query -W -f '${Version}' libc6)
has=${has%%-*}
status=0
chroot "$root" sh /install.sh >"$root.log" 2>&1 || status=$?
if dpkg --compare-versions "$has" lt "$wanted"; then
  grep -q "lua-librpc.* Depends: libc6 (>= $wanted) but" "$root.log" ||
    fail apt "a sentence that libc6 is older than $wanted" "$(tail -n 5 "$root.log")"
  installed=$(chroot "$root" dpkg-query -W 2>/dev/null | grep -E 'rpcctl|librpc' || true)
  if [ "$status" = 0 ] || [ -n "$installed" ]; then
    fail apt "nothing installed" "$installed"
  fi
  echo "package: $suite: libc6 $has: refused: $(sed -n 's/^ *\(lua-librpc.*Depends: libc6.*\)/\1/p' "$root.log" | head -n 1)"
else
  [ "$status" = 0 ] || fail apt "installed packages" "$(tail -n 5 "$root.log")"
  chroot "$root" sh /check.sh "$(grep -vc '^#' tests/golden/apis.txt)" ||
    fail check.sh "each of its lines to hold" "one that does not"
  tools/with_device.sh build -- chroot "$root" sh -c 'rpcctl call oltmib_devinfo_get_1 "" && rpcctl rows portinfo --fields ifx,name'
  tools/with_device.sh build -- sh -c "chroot '$root' sh /ask.sh /health && chroot '$root' sh /ask.sh /session" >"$root.web"
  for expected in '"well":true' '"user":"ann"' '"token":"[0-9a-f]*"'; do
    grep -q "$expected" "$root.web" || fail librpc.cgi "$expected" "$(tail -n 3 "$root.web")"
  done
  chroot "$root" sh /remove.sh
  echo "package: $suite: libc6 $has: installs, runs with five Luas and leaves nothing behind"
fi
umount "$root/proc" "$root/dev/pts"
trap - EXIT
rm -rf "$root"
