#!/bin/bash
# examples/daemon is built from the protocol file by rpcgen, runs in place of the
# simulated device's daemon, and its 64-bit counters come as they are. Run beside a
# device, for this host or an emulated one:
#     daemon_test.sh SOURCE SCRATCH LUA [EMULATOR...]
# CC and make's TIRPC_CFLAGS, TIRPC_LIBS and LDFLAGS are taken from the environment.
set -euo pipefail
. "$(dirname "$0")/../../tools/fail.sh"
source=$1 scratch=$2 lua=$3
shift 3

rm -rf "$scratch"
mkdir -p "$scratch"
cp "$source"/examples/daemon/* "$scratch/"
make -e -C "$scratch" PROTOCOL="$source/protocol" CFLAGS="-O2 -Wall -Werror" >"$scratch/make.log" 2>&1 ||
  fail make "a daemon" "$(tail -n 5 "$scratch/make.log")"
"$SIM_DEVICE" --tell "$SIM_CONTROL" 'stop nsminfo' >/dev/null
"$@" "$scratch/daemon" &
daemon=$!
trap 'kill $daemon 2>/dev/null || true' EXIT
for ((tries = 0; tries < 200; tries++)); do
  ! rpcinfo -T udp 127.0.0.1 50004 1 >/dev/null 2>&1 || break
  kill -0 "$daemon" 2>/dev/null || fail daemon "one that runs" "it ended"
  sleep 0.05
done

ask() { # API ARGUMENT EXPECTED
  local found
  found=$("$lua" "$scratch/ask.lua" "$1" "$2" 2>&1) || true
  [ "$found" = "$3" ] || fail "$1 $2" "$3" "$found"
}
echo 'require "librpc" print(librpc.callapi(arg[1], arg[2]) or require "librpc.status".last())' >"$scratch/ask.lua"
ask oltmib_portstat_get_1 3 '3&0&ge3&15000000000&21&0&0&0&0&0&0&0&0&&0&0'
ask oltmib_portstat_getn_1 7 '8&0&ge8&40000000000&56&0&0&0&0&0&0&0&0&&0&0'
ask oltmib_portstat_getn_1 8 '9&0&&0&0&0&0&0&0&0&0&0&0&&0&1'
echo 'require "librpc" librpc.callapi(arg[1], arg[2]) print((require "librpc.status".last()))' >"$scratch/ask.lua"
ask oltmib_portinfo_get_1 1 rejected # a procedure that it does not have
