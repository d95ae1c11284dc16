#!/bin/sh
# Fails when a committed derived file differs from what the description gives,
# when one is there that nothing makes any more, or when .gitattributes does not
# mark one as derived.
#     check_fresh.sh LIBRPC_DESCRIBE SOURCE SCRATCH
set -eu
. "$(dirname "$0")/../fail.sh"
tool=describe
describe=$1 source=$2 scratch=$3

rm -rf "$scratch"
mkdir -p "$scratch/first" "$scratch/second"
"$describe" files "$source" "$scratch/first"
"$describe" files "$source" "$scratch/second"

stale=0
wrong() { # WHERE EXPECTED FOUND
  complain "$@"
  stale=1
}
compare() { # WHERE EXPECTED FOUND, which are folders
  diff -ru "$2" "$3" || wrong "$1" "what the target \`describe\` makes" "the difference above"
}
compare "two runs" "$scratch/first" "$scratch/second"
for path in protocol docs/reference tools/wireshark/librpc.lua; do
  compare "$path" "$scratch/first/$path" "$source/$path"
done
unmarked=$(cd "$scratch/first" && find . -type f | sed 's,^\./,,' |
  git -C "$source" check-attr --stdin linguist-generated 2>/dev/null | grep -v ': set$') || :
[ -z "$unmarked" ] || wrong .gitattributes "derived files to be marked" "$unmarked"
exit $stale
