#!/bin/bash
# Runs one Lua test:
#
#     run.sh BUILD LIBRARIES INTERPRETER TEST [device [ARGUMENT]...]
#
# LIBRARIES is the folder of librpc.so for that interpreter; with `device` the
# test runs beside the simulated device of BUILD. From the environment:
# LIBRPC_TEST_UNDER is put before the interpreter (tests/e2e/leaks/valgrind.sh),
# LIBRPC_TEST_PRELOAD is loaded into it.
set -euo pipefail
build=$1 libraries=$2 interpreter=$3 test=$4
source=$(cd "$(dirname "$0")/../.." && pwd)
export LIBRPC_TEST_SOURCE=$source LIBRPC_BUILD=$libraries
export LUA_PATH="$source/tests/lua/?.lua;$source/tests/rpcctl/?.lua;$source/lua/?.lua;;" LUA_CPATH="$libraries/?.so;;"
# the tests of names bring their own
export LIBRPC_NAMES=${LIBRPC_TEST_NAMES:-}
unset LUA_INIT NO_COLOR
command=()
# a sanitized library in an interpreter that is not
[ -z "${LIBRPC_TEST_PRELOAD:-}" ] || command+=("$(command -v env)" "LD_PRELOAD=$LIBRPC_TEST_PRELOAD")
read -ra under <<<"${LIBRPC_TEST_UNDER:-}"
command+=("${under[@]}" "$(command -v "$interpreter")")
export LIBRPC_TEST_INTERPRETER="${command[*]}" # for tests that start another one, whatever their PATH
command+=("$source/tests/lua/$test.lua")
if [ "${5:-}" = device ]; then
  exec "$source/tools/with_device.sh" "$build" -- "${command[@]}" "${@:6}"
fi
exec "${command[@]}"
