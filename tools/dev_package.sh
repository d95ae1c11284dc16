#!/bin/bash
# ./dev package: builds the Debian packages of packaging/debian into build-package/
# and asks lintian.
# ./dev package check: then builds them once more elsewhere and compares; makes a
# LuaRocks tree; installs them with apt into roots of their own that have nothing
# but Debian's base system, tries them there beside the simulated device of build/,
# and removes them again. `check` needs root and takes some minutes.
set -euo pipefail
. "$(dirname "$0")/fail.sh"
tool=package
cd "$(dirname "$0")/.."

build=$PWD/build-package
mkdir -p "$build"
tools/package/build.sh "$PWD" "$build"
for package in "$build"/*.deb; do
  echo "package: $package"
  dpkg-deb --contents "$package" | awk '$1 !~ /^d/ { print "  " $6 }'
done
# no distribution, no bug that asks for the package
lintian --allow-root --fail-on warning --suppress-tags initial-upload-closes-no-bugs "$build"/*.deb ||
  fail lintian "no warnings" "those above"
[ "${1:-}" = check ] || exit 0

tools/package/same.sh "$build"
tools/package/rock.sh "$build"
[ "$(id -u)" = 0 ] || fail privileges root "$(id -un)"
[ -x build/simulated_device ] || fail build "the simulated device (./dev build)" none
for suite in bookworm trixie bullseye; do
  tools/package/root.sh "$build" "$suite" || [ $? = 77 ]
done
