#!/bin/sh
# Compiles one case twice: without its defect it must compile, with it the compiler must
# refuse it with the message that stands before the case's section.
#
#     check.sh CASE FILE COMPILER [OPTION...] SOURCE
#
# FILE has the section, SOURCE is it or includes it. The defect is what stands under
# #ifdef DEFECT.
set -eu
. "$(dirname "$0")/../../tools/fail.sh"
tool=compile_fail

case=$1
file=$2
shift 2

before=$(grep -x -B 1 "#ifdef CASE_$case" "$file" | head -n 1)
expected=${before#// error: }
[ "$expected" != "$before" ] || fail "$case" "'// error: MESSAGE' before its section" "$before"

output=$("$@" "-DCASE_$case" 2>&1) || fail "$case" "it to compile without its defect" "$output"

if output=$("$@" "-DCASE_$case" -DDEFECT 2>&1); then
  fail "$case" "the compiler to refuse its defect" "nothing wrong"
fi
case $output in
  *"$expected"*) ;;
  *) fail "$case" "the error '$expected'" "$output" ;;
esac
