#!/bin/bash
# The libraries that librpc.so needs: libtirpc and libc.
set -euo pipefail
. "$(dirname "$0")/../../tools/fail.sh"
needed=$(readelf -d "$1" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' | sort | tr '\n' ' ')
[ "$needed" = "libc.so.6 libtirpc.so.3 " ] ||
  fail "$1" "libc.so.6 libtirpc.so.3" "$needed"
