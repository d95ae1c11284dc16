#!/bin/bash
# Adds a table and a service as CONTRIBUTING.md says, and a table of every text
# form as every_form.md says, to a copy of the tree; then the layers of tests that
# see a description must pass, none of them changed.
#
#     book.sh SOURCE COPY
set -euo pipefail
. "$(dirname "$0")/../../tools/fail.sh"
source=$1 tree=$2

step() { # WORD...
  echo "book: $* ($SECONDS s)"
}

rm -rf "$tree"
mkdir -p "$tree"
tar -C "$source" --exclude='./build*' --exclude=./.git -cf - . | tar -C "$tree" -xf - --no-same-owner
cd "$tree"

step "follow the documents"
python3 tests/book/follow.py . 'CONTRIBUTING.md:Add a table' 'CONTRIBUTING.md:Add a service' tests/book/every_form.md

step build
./dev build release rpc simulated_device golden_test unit_test exports_test services_test \
  e2e_process e2e_many_states >build/book.log 2>&1 ||
  fail build "everything to compile" "$(tail -n 40 build/book.log)"

step test
run_tests() {
  ctest --test-dir build --no-tests=error --output-on-failure -j "$((2 * $(nproc)))" "$@" >build/book.log 2>&1
}
layers='unit|services|golden|describe|generated\.reference_examples|lua\.lua5\.1\.(schema|record|rpcctl|documents)_test'
whole_registry='e2e\.(a_thousand_states|lua5\.1\.(client\.every_registered|dispatch\.showapi_lists_every))'
run_tests -R "^($layers|$whole_registry)" || fail tests "all to pass" "$(cat build/book.log)"
sed -n '/tests passed/p' build/book.log

# A description that changes goes on compiling, so that describe.stale can say
# what to run: here a field with another name in another place.
step "change a field"
record=services/faninfo/records.h
sed -i '/^    int speed;$/d; s/^    int ifx;$/    int turns;\n&/; s/fanEntry, ifx, name, speed,/fanEntry, turns, ifx, name,/' "$record"
grep -q 'RECORD(oltmib_fanEntry, turns, ifx, name, oper, res)' "$record" ||
  fail "$record" "the changed record" "$(cat "$record")"
./dev build release rpc librpc_describe simulated_device plain_faninfo services_test >build/book.log 2>&1 ||
  fail build "a changed description to compile" "$(tail -n 40 build/book.log)"
if run_tests -R '^describe\.stale$' || ! grep -q 'expected what the target .describe. makes' build/book.log; then
  fail describe.stale "to name the target that writes the files" "$(cat build/book.log)"
fi
step passed
