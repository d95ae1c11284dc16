#!/bin/bash
# The version is set in CMakeLists.txt, and every copy of it is the same: also after
# the next version was begun and released, in a copy of the sources.
#     version_test.sh SOURCE VERSION SCRATCH
set -euo pipefail
. "$(dirname "$0")/../../tools/fail.sh"
source=$1 version=$2 scratch=$3

found=$("$source/tools/release.py" check)
[ "$found" = "$version" ] || fail CMakeLists.txt "$version" "$found"

rm -rf "$scratch"
mkdir -p "$scratch"
tar -C "$source" --exclude=./.git --exclude='./build*' --exclude=node_modules -cf - . | tar -C "$scratch" -xf -
cd "$scratch"
mentions() { # VERSION: files that have it as a word of its own
  grep -rlE --exclude-dir=tests --exclude-dir=vendor "(^|[^0-9.])${1//./\\.}([^0-9.]|\$)" . | sort
}
before=$(mentions "$version")
if grep -qx "## $version (not yet released)" CHANGELOG.md; then
  sed -i "s/^## ${version//./\\.} .*/&\n\n- Something./" CHANGELOG.md # there may be nothing new yet
  tools/release.py finish 2031-02-03
fi
grep -q "^## $version (20" CHANGELOG.md || fail CHANGELOG.md "the date of $version" "none"
tools/release.py begin 98.7.6
[ "$(tools/release.py check)" = 98.7.6 ] || fail "release check" 98.7.6 "another version"
# a rockspec is named after its version
expected=$(echo "${before//$version/98.7.6}" | sort)
[ "$(mentions 98.7.6)" = "$expected" ] || fail "files with the new version" "$expected" "$(mentions 98.7.6)"
[ "$(mentions "$version")" = ./CHANGELOG.md ] || fail "files with the old version" ./CHANGELOG.md "$(mentions "$version")"

refused() { # COMMAND...: with a reason, and without a change
  local reason
  ! reason=$(tools/release.py "$@" 2>&1) || fail "release $*" "that it is refused" "that it is done"
  [[ $reason == "release: "*": expected "*", found "* ]] || fail "release $*" "a reason" "$reason"
}
refused finish # nothing is new yet
refused begin 98.7.5
refused begin 99
sed -i "s/^## 98\.7\.6.*/&\n\n- Something./" CHANGELOG.md
refused finish 2031-02-30
tools/release.py finish 2031-03-04
refused finish
debian=$(packaging/debian_changelog.py . 0)
[[ $debian == "librpc (98.7.6-1) "* ]] || fail debian/changelog "librpc (98.7.6-1)" "${debian%%$'\n'*}"
sed -i 's/^PKG_VERSION:=.*/PKG_VERSION:=1.2.3/' contrib/openwrt/Makefile
refused check
