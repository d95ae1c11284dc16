# How every script says what is wrong: `tool: where: expected X, found Y`. For sh and bash:
#
#     . "$(dirname "$0")/fail.sh"
#
# The tool is the script's name; one that is part of another sets `tool` behind that line.
# shellcheck shell=sh
tool=$(basename "$0" .sh)
failure=1 # the status that a failed script ends with

complain() { # WHERE EXPECTED FOUND
  printf '%s: %s: expected %s, found %s\n' "$tool" "$1" "$2" "$3" >&2
}

fail() { # WHERE EXPECTED FOUND
  complain "$@"
  exit "$failure"
}

# What lacks something that it needs is left out: ctest and ./dev take 77 for that.
skip() { # WHERE EXPECTED FOUND
  complain "SKIPPED: $1" "$2" "$3"
  exit 77
}
