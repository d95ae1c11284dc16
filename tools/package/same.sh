#!/bin/bash
# Builds the packages again, from another path, at another time, with another user
# mask, locale and time zone, and compares:
#
#     same.sh FOLDER     FOLDER has the packages of the first build
set -euo pipefail
. "$(dirname "$0")/../fail.sh"
tool=package
cd "$(dirname "$0")/../.."
folder=$1

elsewhere=$(mktemp -d /tmp/a-path-of-another-length.XXXXXX)
trap 'rm -rf "$elsewhere"' EXIT
mkdir -m 755 "$elsewhere/first" "$elsewhere/second"
tar --exclude='./build*' -cf - . | tar --touch -C "$elsewhere/first" -xf - # files of now
# the time that a tree without its history would not have
SOURCE_DATE_EPOCH=$(dpkg-parsechangelog -l "$folder/source/debian/changelog" -S Timestamp)
export SOURCE_DATE_EPOCH
(
  umask 077
  export NO_FAKE_STAT=1 # ninja compares files' times, which stay the machine's
  TZ=Asia/Kathmandu LC_ALL=C.UTF-8 LANG=de_DE.UTF-8 faketime '+400 days' \
    tools/package/build.sh "$elsewhere/first" "$elsewhere/second"
)
failed=0
for package in "$folder"/*.deb; do
  if ! cmp "$package" "$elsewhere/second/${package##*/}"; then
    failed=1
    mkdir -p "$folder/first" "$folder/second"
    dpkg-deb -R "$package" "$folder/first/${package##*/}"
    dpkg-deb -R "$elsewhere/second/${package##*/}" "$folder/second/${package##*/}"
  fi
done
[ "$failed" = 0 ] || fail "two builds" "the same bytes" "those that differ in $folder/first and $folder/second"
echo "package: the same bytes from another path, time, user mask, locale and time zone"
