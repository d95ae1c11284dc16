#!/bin/sh
# trust.sh DOCUMENT BUILD CTEST: every test that the document names in backticks
# is one of the build's, and every line of its "shown by" tables names one.
set -eu
. "$(dirname "$0")/../../tools/fail.sh"
document=$1 build=$2 ctest=$3
layers='unit|services|golden|e2e|calls|fuzz|memory|system_calls|lua|trust|host|hosts|soak|web'

listed=$("$ctest" --test-dir "$build" -N | sed -n 's/^ *Test *#[0-9]*: //p')
named=$(grep -oE "\`($layers)\.[^\`]+\`" "$document" | tr -d '\140' | sort -u)
[ -n "$named" ] || fail "$document" "names of tests" none

status=0
for test in $named; do
  printf '%s\n' "$listed" | grep -qxF -- "$test" || {
    complain "$document" "a test of ctest -N" "'$test'"
    status=1
  }
done

awk -v layers="$layers" -v where="$tool: $document" '
	/^\|/ && $0 ~ /shown by/ { inside = 1; next }
	!/^\|/ { inside = 0 }
	inside && !/^\|-/ && $0 !~ "`(" layers ")[.]" {
		print where ":" NR ": expected a test that shows the line, found none" | "cat >&2"
		wrong = 1
	}
	END { exit wrong }
' "$document" || status=1
exit "$status"
