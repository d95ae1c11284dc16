#!/bin/sh
# ./dev fuzz SECONDS [TARGET]: runs each fuzz target (or one) for SECONDS under
# libFuzzer, AddressSanitizer and UndefinedBehaviorSanitizer, one after the
# other. What it learns stays in build-fuzz/corpus; what fails goes to
# build-fuzz/found. With KEEP=1 the kept inputs, tests/fuzz/corpus/*.kept,
# are worked out anew from all of it afterwards.
set -eu

cd "$(dirname "$0")/.."
targets=$(cd tests/fuzz/corpus && echo *.kept | sed 's/\.kept//g')

fail() {
	echo "dev_fuzz: $*" >&2
	exit 1
}

seconds=${1:-}
case $seconds in
'' | *[!0-9]*) fail "command line: expected SECONDS [TARGET], found '$*'" ;;
esac
[ $# -lt 2 ] || case " $targets " in
*" $2 "*) targets=$2 ;;
*) fail "command line: expected one of $targets, found '$2'" ;;
esac
command -v clang++ >/dev/null || fail 'PATH: expected clang++ (Debian: clang libclang-rt-14-dev), found none'

build=$PWD/build-fuzz
kept=$build/unpacked
mkdir -p "$build/found"
cmake -S . -B "$build" -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
	-DCMAKE_BUILD_TYPE=RelWithDebInfo -DLIBRPC_WERROR=ON -DLIBRPC_TESTS=ON -DLIBRPC_FUZZ=ON \
	-DLIBRPC_SANITIZE=fuzzer-no-link,address,undefined >"$build/configure.log" ||
	fail "$build/configure.log: expected a configured build, found the errors above"
# shellcheck disable=SC2046,SC2086 # lists
cmake --build "$build" --target $(printf 'fuzz_%s ' $targets)

UBSAN_OPTIONS=print_stacktrace=1
export UBSAN_OPTIONS
failed=''
for target in $targets; do
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
			fail "$target: expected kept inputs, found what $build/found/$target-merge.log says"
		cp "$kept/$target"/edge_* "$build/kept" # chosen by hand
		tests/fuzz/corpus.py pack "$build/kept" "tests/fuzz/corpus/$target.kept"
		echo "  kept: $(wc -l <"tests/fuzz/corpus/$target.kept")"
	fi
done
[ -z "$failed" ] || fail "$build/found: expected no failing input, found some of:$failed"
