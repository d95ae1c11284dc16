#!/bin/bash
# Runs one end-to-end test beside the simulated device:
#
#     run.sh BUILD INTERPRETER [FILE CASE]
#
# From the environment: LIBRPC_TEST_UNDER is put before the interpreter (valgrind
# and its options), LIBRPC_TEST_PRELOAD is loaded into it.
set -euo pipefail
build=$1
shift
here=$(dirname "$(realpath "$0")")
export LUA_CPATH="$build/?.so;$build/tests/e2e/?.so;;"
export LUA_PATH="$here/?.lua;$here/../lua/?.lua;$here/../../lua/?.lua;;" LIBRPC_NAMES="$here/../../sim/names.lua"
interpreter=$1
shift
command=()
[ -z "${LIBRPC_TEST_PRELOAD:-}" ] || command+=(env "LD_PRELOAD=$LIBRPC_TEST_PRELOAD")
read -ra under <<<"${LIBRPC_TEST_UNDER:-}"
command+=("${under[@]}" "$interpreter")
export E2E_INTERPRETER="${command[*]}" # for tests that start another one
exec "$here/../../tools/with_device.sh" "$build" -- "${command[@]}" "$@"
