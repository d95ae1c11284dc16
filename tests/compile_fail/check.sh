#!/bin/sh
# Compiles one case twice: without its defect it must compile, with it the
# compiler must refuse it with the message that the case's first line states.
#
#     check.sh CASE COMPILER [OPTION...]
#
# CASE is a .cpp file, or the rows of a service (.def), which service.cpp
# includes. The defect is what stands under #ifdef DEFECT.
set -eu

case_file=$1
shift
folder=$(dirname "$0")
name=$(basename "$case_file")

fail() {
    printf 'compile_fail: %s: expected %s, found:\n%s\n' "$name" "$1" "$2" >&2
    exit 1
}

expected=$(sed -n '1s|^// error: ||p' "$case_file")
[ -n "$expected" ] || fail "'// error: MESSAGE' in its first line" "$(head -n 1 "$case_file")"

compile() {
    case $case_file in
    *.def) "$@" "-DSERVICE_APIS=\"$case_file\"" "$folder/service.cpp" ;;
    *) "$@" "$case_file" ;;
    esac 2>&1
}

output=$(compile "$@") || fail "it to compile without its defect" "$output"

if output=$(compile "$@" -DDEFECT); then
    fail "the compiler to refuse its defect" "nothing wrong"
fi
case $output in
*"$expected"*) ;;
*) fail "the error '$expected'" "$output" ;;
esac
