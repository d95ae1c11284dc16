#!/bin/sh
# check.sh DOCUMENT BUILD CTEST: every test that the document names in backticks
# is one of the build's, and every line of its "shown by" tables names one.
set -eu
document=$1 build=$2 ctest=$3
layers='unit|services|golden|e2e|calls|fuzz|memory|system_calls|lua|trust|host|hosts|soak|web'

listed=$("$ctest" --test-dir "$build" -N | sed -n 's/^ *Test *#[0-9]*: //p')
named=$(grep -oE "\`($layers)\.[^\`]+\`" "$document" | tr -d '\140' | sort -u)
[ -n "$named" ] || {
	echo "check.sh: $document: expected names of tests, found none" >&2
	exit 1
}

status=0
for test in $named; do
	printf '%s\n' "$listed" | grep -qxF -- "$test" || {
		echo "check.sh: $document: expected a test of ctest -N, found '$test'" >&2
		status=1
	}
done

awk -v layers="$layers" -v document="$document" '
	/^\|/ && $0 ~ /shown by/ { inside = 1; next }
	!/^\|/ { inside = 0 }
	inside && !/^\|-/ && $0 !~ "`(" layers ")[.]" {
		print "check.sh: " document ":" NR ": expected a test that shows the line, found none" | "cat >&2"
		wrong = 1
	}
	END { exit wrong }
' "$document" || status=1
exit "$status"
