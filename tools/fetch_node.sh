#!/bin/bash
# Fetches what the tests of the web console and the linter of its JavaScript are made
# of, as tests/web/package-lock.json pins it, into a folder:
#
#     fetch_node.sh FOLDER
#
# Nothing runs while it is fetched, and nothing is installed: the folder is a build's.
set -euo pipefail
. "$(dirname "$0")/fail.sh"
folder=$1
source=$(cd "$(dirname "$0")/../tests/web" && pwd)

for program in node npm; do
  command -v "$program" >/dev/null ||
    fail programs "$program" none
done
mkdir -p "$folder"
stamp=$(cat "$source/package.json" "$source/package-lock.json" | sha256sum)
[ "$(cat "$folder/fetched" 2>/dev/null)" != "$stamp" ] || exit 0
rm -f "$folder/fetched"
cp "$source/package.json" "$source/package-lock.json" "$folder"
npm ci --prefix "$folder" --ignore-scripts --no-audit --no-fund >"$folder/npm.log" 2>&1 ||
  fail "$folder" "npm to fetch the packages" "$(grep -m 1 -i err "$folder/npm.log") ($folder/npm.log)"
echo "$stamp" >"$folder/fetched"
