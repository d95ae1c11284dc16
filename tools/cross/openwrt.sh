#!/bin/bash
# Builds contrib/openwrt as its buildroot does and runs what it installs in a root
# that has musl, Lua and libtirpc and nothing else:
#
#     openwrt.sh BUILD DEVICE_BUILD     BUILD is ./dev cross musl's folder
#
# The buildroot's includes are imitated below in what the recipe uses of them:
# unpacking the archive, configuring with CMake, one root a package.
set -euo pipefail
. "$(dirname "$0")/../fail.sh"
cd "$(dirname "$0")/../.."
source=$PWD build=$1 device=$2 work=$1/openwrt

rm -rf "$work"
mkdir -p "$work"/{include,dl,build,packages,feed/librpc} "$work/staging/usr"
cp -r "$build/root/usr/." "$work/staging/usr/"
cp "$work"/staging/usr/include/lua5.1/* "$work/staging/usr/include/"
rm -r "$work/staging/usr/include/lua5.1" "$work/staging/usr/lib/pkgconfig/lua5.1.pc"
cp contrib/openwrt/Makefile "$work/feed/librpc/"
version=$(sed -n 's/^project(librpc VERSION \([^ ]*\).*/\1/p' CMakeLists.txt)
tar --exclude=./.git --exclude='./build*' --transform "s,^\.,librpc-$version," -czf "$work/dl/librpc-$version.tar.gz" .

cat >"$work/rules.mk" <<END
STAGING_DIR:=$work/staging
INCLUDE_DIR:=$work/include
DL_DIR:=$work/dl
BUILD_DIR:=$work/build
PACKAGES:=$work/packages
END
cat >"$work/include/package.mk" <<'END'
PKG_BUILD_DIR?=$(BUILD_DIR)/$(PKG_NAME)-$(PKG_VERSION)
.PHONY: compile prepared configured built
compile:
prepared:
	tar -C $(BUILD_DIR) -xf $(DL_DIR)/$(PKG_SOURCE)
	test -e $(PKG_BUILD_DIR)/CMakeLists.txt
define BuildPackage
compile: package-$(1)
package-$(1): built
	mkdir -p $(PACKAGES)/$(1)
	$(call Package/$(1)/install,$(PACKAGES)/$(1))
endef
END
cat >"$work/include/cmake.mk" <<END
configured: prepared
	cd \$(PKG_BUILD_DIR) && CC=$build/bin/musl-cc CXX=$build/bin/musl-c++ PKG_CONFIG_SYSROOT_DIR=\$(STAGING_DIR) \\
		PKG_CONFIG_LIBDIR=\$(STAGING_DIR)/usr/lib/pkgconfig cmake -DCMAKE_BUILD_TYPE=Release \\
		-DCMAKE_INSTALL_PREFIX=/usr -DCMAKE_INSTALL_LIBDIR=lib \$(CMAKE_OPTIONS) .
built: configured
	cmake --build \$(PKG_BUILD_DIR)
END
make -C "$work/feed/librpc" TOPDIR="$work" compile >"$work/make.log" 2>&1 || fail make packages "$(tail -n 3 "$work/make.log")"

# The root, and in it the packages.
root=$work/root
mkdir -p "$root"/{lib,etc,usr/bin,usr/lib,proc,tmp}
cp -L "/lib/ld-musl-$(uname -m).so.1" "$root/lib/"
cp -L "$build"/root/usr/lib/libtirpc.so.3 "$root/usr/lib/"
cp "$build/root/usr/bin/lua5.1" "$root/usr/bin/lua"
cp "$build/root/etc/netconfig" "$root/etc/" 2>/dev/null || true
for package in "$work"/packages/*; do
  cp -r "$package/." "$root/"
  echo "dev_cross: openwrt: ${package##*/}: $(find "$package" -type f | wc -l) files, $(du -sk "$package" | cut -f1) KB"
done
run="env -i PATH=/usr/bin:/usr/sbin LUA_PATH=/usr/lib/lua/?.lua LUA_CPATH=/usr/lib/lua/?.so LD_LIBRARY_PATH=/usr/lib chroot $root"
# shellcheck disable=SC2086 # a command and its options
found=$(tools/with_device.sh "$device" -- $run rpcctl call oltmib_devinfo_get_1 '' 2>&1) || fail rpcctl "a row" "$found"
[[ $found == *olt-lab-1* ]] || fail rpcctl "the device's name" "$found"
# shellcheck disable=SC2086
found=$($run rpcctl list | wc -l)
apis=$(grep -vc '^#' "$source/tests/golden/apis.txt")
[ "$found" = "$apis" ] || fail "rpcctl list" "$apis APIs" "$found"
echo "dev_cross: openwrt: rpcctl lists $found APIs and reads a row in a root of musl"
