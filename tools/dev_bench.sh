#!/bin/bash
# The benchmark, `./dev bench`: builds release, then measures in a network of its
# own with a port mapper and one bare daemon, everything on one core.
#
#   tools/dev_bench.sh [--quick] [--record]
#     --quick   a tenth of the rounds, to see that everything works
#     --record  writes docs/performance.md and docs/performance.svg, and the ratios
#               into README.md; else the two go to bench/ in the build folder
#
# LIBRPC_BENCH_BUILD names another build folder than build-bench/.
set -euo pipefail
. "$(dirname "$0")/fail.sh"
cd "$(dirname "$0")/.."

# The second half, inside: starts the daemons and measures.
measure() {
  local build=$1 output=$2 speed=$3 port daemon
  mount -t tmpfs tmpfs /run
  ip link set lo up
  rpcbind -w
  exec 3< <(exec "$build/bench/bench_daemon")
  read -r port daemon <&3 || fail bench_daemon "its port" "nothing"
  export LUA_PATH="$PWD/bench/?.lua;$PWD/lua/?.lua" LUA_CPATH="$build/?.so;$build/bench/?.so"
  lua5.1 bench/run.lua "$build" "$port" "$daemon" "$output" "$speed"
}

if [ "${1:-}" = inside ]; then
  shift
  measure "$@"
  exit
fi

speed=full record=no
for option; do
  case $option in
    --quick) speed=quick ;;
    --record) record=yes ;;
    *) fail "argument" "--quick or --record" "$option" ;;
  esac
done

[ "$(id -u)" = 0 ] || fail "user" "root, for a network of its own" "$(id -un)"
for program in cmake rpcgen lua5.1 rpcbind valgrind strace unshare ip taskset readelf size strip lscpu pkg-config; do
  command -v "$program" >/dev/null || fail "$program" "an installed program" "none"
done

build=${LIBRPC_BENCH_BUILD:-build-bench}
cmake --preset release -B "$build" -DLIBRPC_TESTS=OFF -DLIBRPC_BENCH=ON >/dev/null
cmake --build "$build" --target bench
build=$(cd "$build" && pwd)
output=$build/bench
[ $record = no ] || output=$PWD/docs

core=$(taskset -pc $$ | sed 's/.*: //; s/[-,].*//')
unshare --net --mount --pid --fork --mount-proc --kill-child taskset -c "$core" "$0" inside "$build" "$output" "$speed"
echo "Written: $output/performance.md and $output/performance.svg"
[ $record = no ] || LUA_PATH="bench/?.lua" lua5.1 bench/readme.lua docs/performance.md README.md
