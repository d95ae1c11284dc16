#!/bin/bash
# The libraries that librpc.so needs: libtirpc and libc.
set -euo pipefail
needed=$(readelf -d "$1" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' | sort | tr '\n' ' ')
[ "$needed" = "libc.so.6 libtirpc.so.3 " ] || {
  echo "needed: $1: expected libc.so.6 libtirpc.so.3, found $needed" >&2
  exit 1
}
