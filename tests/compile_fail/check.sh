#!/bin/sh
# Compiles one case twice: without its defect it must compile, with it the compiler must
# refuse it with the message that stands before the case's section.
#
#     check.sh CASE FILE COMPILER [OPTION...] SOURCE
#
# FILE has the section, SOURCE is it or includes it. The defect is what stands under
# #ifdef DEFECT.
set -eu

case=$1
file=$2
shift 2

fail() {
    printf 'compile_fail: %s: expected %s, found:\n%s\n' "$case" "$1" "$2" >&2
    exit 1
}

before=$(grep -x -B 1 "#ifdef CASE_$case" "$file" | head -n 1)
expected=${before#// error: }
[ "$expected" != "$before" ] || fail "'// error: MESSAGE' before its section" "$before"

output=$("$@" "-DCASE_$case" 2>&1) || fail "it to compile without its defect" "$output"

if output=$("$@" "-DCASE_$case" -DDEFECT 2>&1); then
    fail "the compiler to refuse its defect" "nothing wrong"
fi
case $output in
*"$expected"*) ;;
*) fail "the error '$expected'" "$output" ;;
esac
