#!/bin/bash
# Builds the Debian packages of packaging/debian:
#
#     build.sh SOURCE FOLDER
#
# Lays a copy of the sources into FOLDER/source and leaves the packages in FOLDER.
# The same sources give the same bytes: SOURCE_DATE_EPOCH is the date of a release
# that CHANGELOG.md does not date, or else that of the last commit.
set -euo pipefail
. "$(dirname "$0")/../fail.sh"
tool=package
source=$1 folder=$2

time=${SOURCE_DATE_EPOCH:-$(git -C "$source" log -1 --format=%ct 2>/dev/null || stat -c %Y "$source/CHANGELOG.md")}
rm -rf "$folder/source" "$folder"/*.deb
mkdir -p "$folder/source"
# one time for all files: a clone's are of when it was made
tar -C "$source" --exclude=./.git --exclude='./build*' --mtime="@$time" -cf - . | tar -C "$folder/source" -xf -
cp -r "$source/packaging/debian" "$folder/source/debian"
"$source/packaging/debian_changelog.py" "$source" "$time" >"$folder/source/debian/changelog"
(
  unset SOURCE_DATE_EPOCH # the changelog's
  # what ./dev and CMake's users say in the environment is not for packages
  unset CFLAGS CXXFLAGS LDFLAGS CC CXX CMAKE_GENERATOR
  cd "$folder/source"
  DEB_BUILD_OPTIONS="noautodbgsym ${DEB_BUILD_OPTIONS:-}" nice dpkg-buildpackage -b -us -uc
) >"$folder/build.log" 2>&1 || fail dpkg-buildpackage packages "$(tail -n 5 "$folder/build.log") ($folder/build.log)"
