#!/bin/bash
# Makes a source rock of these sources: librpc-VERSION-1.src.rock in FOLDER, which
# `luarocks install` takes without a network.
#
#     source_rock.sh FOLDER
set -euo pipefail
cd "$(dirname "$0")/../.."
folder=$(realpath "$1")

rockspec=$(echo librpc-*.rockspec)
version=${rockspec#librpc-} version=${version%-*.rockspec}
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
mkdir "$scratch/librpc-$version"
tar --exclude=./.git --exclude='./build*' -cf - . | tar -C "$scratch/librpc-$version" -xf -
tar -C "$scratch" --owner=0 --group=0 --sort=name -czf "$scratch/librpc-$version.tar.gz" "librpc-$version"
sed "s,^source = .*,source = { url = \"file://$scratch/librpc-$version.tar.gz\"\, dir = \"librpc-$version\" }," \
  "$rockspec" >"$scratch/$rockspec"
(cd "$scratch" && luarocks --lua-version 5.1 pack "$rockspec")
mv "$scratch"/*.src.rock "$folder"
