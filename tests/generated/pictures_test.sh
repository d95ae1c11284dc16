#!/bin/sh
# Fails when a drawing in docs/ is not what tools/draw.sh makes of its source.
#     pictures_test.sh SOURCE SCRATCH
set -eu
. "$(dirname "$0")/../../tools/fail.sh"
rm -rf "$2"
"$1/tools/draw.sh" "$2"
status=0
for drawing in "$2"/*.svg; do
  diff -u "$1/docs/$(basename "$drawing")" "$drawing" || {
    complain "docs/$(basename "$drawing")" "what tools/draw.sh draws" "the difference above"
    status=1
  }
done
exit $status
