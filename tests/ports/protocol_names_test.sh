#!/bin/bash
# A protocol file with names has them beside its fields, and means the same to rpcgen.
#     protocol_names_test.sh SOURCE SCRATCH LUA
set -euo pipefail
. "$(dirname "$0")/../../tools/fail.sh"
source=$1 scratch=$2 lua=$3

mkdir -p "$scratch/plain" "$scratch/named"
export LUA_PATH="$source/lua/?.lua" LIBRPC_NAMES="$source/sim/names.lua"
for protocol in "$source"/protocol/*.x; do
  name=${protocol##*/}
  "$lua" "$source/tools/protocol_names.lua" "$protocol" >"$scratch/named/$name"
  cp "$protocol" "$scratch/plain/"
  for folder in plain named; do
    rm -f "$scratch/$folder/made.h"
    (cd "$scratch/$folder" && rpcgen -h -o made.h "$name")
  done
  cmp "$scratch/plain/made.h" "$scratch/named/made.h" || fail "$name" "the same header of both" "another"
done
# a field and a unit of sim/names.lua
for line in 'int in_cir; /* rate_in, in kbit/s */' 'int ifx; /* key, port */'; do
  grep -qF "    $line" "$scratch/named/nsminfo.x" || fail nsminfo.x "$line" "none"
done
