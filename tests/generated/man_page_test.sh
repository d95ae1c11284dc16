#!/bin/sh
# The committed manual page of rpcctl is what rpcctl says of itself today.
#
#     man_page_test.sh SOURCE BUILD LUA
set -eu
. "$(dirname "$0")/../../tools/fail.sh"
source=$1
lua=$3
page=$source/docs/man/rpcctl.1
export LIBRPC_BUILD="$2"

# its date and version stay as they were when it was made
date=$(sed -n '1s/^\.TH RPCCTL 1 \([^ ]*\) .*/\1/p' "$page")
version=$(sed -n '1s/.*"librpc \([^"]*\)".*/\1/p' "$page")
grep -q "^project(librpc VERSION $version " "$source/CMakeLists.txt" ||
  fail "$page" "the project's version" "$version"
LIBRPC_NAMES="" "$lua" "$source/tools/man_page.lua" "$source" "$LIBRPC_BUILD" "$version" "$date" | diff - "$page" ||
  fail "$page" "the output of tools/man_page.lua" "the differences above"
