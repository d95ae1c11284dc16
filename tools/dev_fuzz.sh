#!/bin/sh
# ./dev fuzz SECONDS [TARGET]: runs each fuzz target (or one) for SECONDS under
# libFuzzer, AddressSanitizer and UndefinedBehaviorSanitizer, one after the
# other. `golden` is the library beside its model in Python (tests/golden/model),
# which makes the cases. What libFuzzer learns stays in build-fuzz/corpus; what fails
# goes to build-fuzz/found. With KEEP=1 the kept inputs, tests/fuzz/corpus/*.kept,
# are worked out anew from all of it afterwards.
set -eu
. "$(dirname "$0")/fail.sh"
cd "$(dirname "$0")/.."
targets="$(cd tests/fuzz/corpus && echo *.kept | sed 's/\.kept//g') golden"

seconds=${1:-}
case $seconds in
  '' | *[!0-9]*) fail "command line" "SECONDS [TARGET]" "'$*'" ;;
esac
[ $# -lt 2 ] || case " $targets " in
  *" $2 "*) targets=$2 ;;
  *) fail "command line" "one of $targets" "'$2'" ;;
esac
command -v clang++ >/dev/null || fail PATH "clang++ (Debian: clang libclang-rt-14-dev)" none

build=$PWD/build-fuzz
kept=$build/unpacked
mkdir -p "$build/found"
cmake -S . -B "$build" -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
  -DCMAKE_BUILD_TYPE=RelWithDebInfo -DLIBRPC_WERROR=ON -DLIBRPC_TESTS=ON -DLIBRPC_FUZZ=ON \
  -DLIBRPC_SANITIZE=fuzzer-no-link,address,undefined >"$build/configure.log" ||
  fail "$build/configure.log" "a configured build" "the errors above"
# shellcheck disable=SC2046,SC2086 # lists
cmake --build "$build" --target $(printf 'fuzz_%s ' $targets | sed 's/fuzz_golden/golden_test/')

UBSAN_OPTIONS=print_stacktrace=1
export UBSAN_OPTIONS
failed=''
for target in $targets; do
  if [ "$target" = golden ]; then
    echo "dev_fuzz: $target: $seconds seconds"
    tests/golden/model/compare --seconds "$seconds" "$build/tests/golden/golden_test" || failed="$failed $target"
    continue
  fi
  fuzz=$build/tests/fuzz/fuzz_$target
  corpus=$build/corpus/$target
  mkdir -p "$corpus"
  rm -rf "${kept:?}/$target"
  tests/fuzz/corpus.py unpack "tests/fuzz/corpus/$target.kept" "$kept/$target"
  if [ "$seconds" -gt 0 ]; then
    echo "dev_fuzz: $target: $seconds seconds"
    log=$build/found/$target.log
    "$fuzz" -max_total_time="$seconds" -timeout=10 -max_len=12000 -close_fd_mask=1 -print_final_stats=1 \
      -artifact_prefix="$build/found/$target-" "$corpus" "$kept/$target" >"$log" 2>&1 || {
      failed="$failed $target"
      tail -n 60 "$log"
    }
    sed -n 's/^stat::number_of_executed_units:/  inputs run:/p; s/^Done/  done:/p' "$log"
  fi
  if [ "${KEEP:-0}" = 1 ]; then
    rm -rf "$build/kept"
    mkdir -p "$build/kept"
    # one input for each piece of code that is reached, not for each count
    "$fuzz" -set_cover_merge=1 -use_counters=0 -use_cmp=0 -max_len=12000 "$build/kept" "$kept/$target" "$corpus" \
      >"$build/found/$target-merge.log" 2>&1 ||
      fail "$target" "kept inputs" "what $build/found/$target-merge.log says"
    cp "$kept/$target"/edge_* "$build/kept" # chosen by hand
    tests/fuzz/corpus.py pack "$build/kept" "tests/fuzz/corpus/$target.kept"
    echo "  kept: $(wc -l <"tests/fuzz/corpus/$target.kept")"
  fi
done
[ -z "$failed" ] || fail "$build/found" "no failing input" "some of:$failed"
