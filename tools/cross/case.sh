#!/bin/bash
# Runs one end-to-end case beside the device of a build; its output is in LOG, or in
# LOG.passed:
#
#     case.sh DEVICE_BUILD LUA FILE CASE LOG
#
# A machine with other work may stand still for a moment: a case that failed is
# tried once more, and says so.
set -euo pipefail
device=$1 lua=$2 file=$3 case=$4 log=$5

run() {
  "$(dirname "$0")/../with_device.sh" "$device" -- "$lua" "$file" "$case" >"$log" 2>&1 </dev/null &&
    grep -q "passed $case\$" "$log"
}

run || {
  echo "dev_cross: $case: failed, and is tried once more" >&2
  run
} && mv "$log" "$log.passed"
