#!/bin/bash
# The version is set in CMakeLists.txt; formats that cannot ask it there have the same.
#     version_test.sh SOURCE VERSION
set -euo pipefail
. "$(dirname "$0")/../../tools/fail.sh"
cd "$1"
version=$2

expect() { # FILE LINE
  grep -qxF -- "$2" "$1" || fail "$1" "'$2'" none
}
expect "librpc-$version-1.rockspec" "version = \"$version-1\""
expect contrib/openwrt/Makefile "PKG_VERSION:=$version"
packaging/debian_changelog.py . 0 >/dev/null # which compares CHANGELOG.md
