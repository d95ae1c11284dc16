#!/bin/bash
# LuaRocks: a tree made from these sources, and one from a source rock, which
# holds all that it needs: no network.
#
#     rock.sh FOLDER
set -euo pipefail
. "$(dirname "$0")/../fail.sh"
tool=package
cd "$(dirname "$0")/../.."
folder=$1

apis=$(grep -vc '^#' tests/golden/apis.txt)
check() { # TREE
  [ "$("$1/bin/rpcctl" list | wc -l)" = "$apis" ] || fail "$1/bin/rpcctl" "$apis APIs" "another number"
  # no shell looks into a rock's own folder
  local unseen
  unseen=$(find "$1" -name man1 -o -name man3 -o -name bash-completion -o -name zsh -o -name fish)
  [ -z "$unseen" ] || fail "$1" "no manual pages and completion" "$unseen"
}

rm -rf "$folder/rocks"
mkdir -p "$folder/rocks"
tools/package/source_rock.sh "$folder/rocks" >"$folder/rocks.log" 2>&1 || fail luarocks "a source rock" "$(tail -n 1 "$folder/rocks.log")"
rock=$(echo "$folder"/rocks/librpc-*.src.rock)
# a network of its own, in which there is nothing
unshare -n luarocks --lua-version 5.1 install --tree "$folder/rocks/tree" "$rock" >>"$folder/rocks.log" 2>&1 ||
  fail luarocks "an installed rock" "$(tail -n 1 "$folder/rocks.log")"
check "$folder/rocks/tree"
echo "package: luarocks installs ${rock##*/} without a network"
