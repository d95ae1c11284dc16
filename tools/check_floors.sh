#!/bin/bash
# Fails when an #include of the library points up, or when includes go in a
# circle. A file that is added to common/ and made of services joins `upper`.
set -euo pipefail
. "$(dirname "$0")/fail.sh"
cd "$(dirname "$0")/.."

upper='calls calls_module dispatch module schema schema_module state status status_module'

# The floor of a file, from the ground: the wire, what services are made of, the
# services, what Lua sees.
floor_of() { # FILE
  local stem=${1#common/}
  case $1 in
    rpc/*) echo 0 ;;
    common/*) [[ " $upper " == *" ${stem%.*} "* ]] && echo 3 || echo 1 ;;
    services/*) echo 2 ;;
    *) echo 4 ;;
  esac
}

# The room of a file of a service; the files beside the rooms are everybody's.
room_of() { # FILE
  local inside=${1#services/}
  [[ $1 == services/*/* ]] && echo "${inside%%/*}"
}

status=0
wrong() { # WHERE EXPECTED FOUND
  complain "$@"
  status=1
}

declare -A floors
edges=
while IFS=: read -r from _ include; do
  to=${include#*\"}
  to=${to%\"*}
  for file in "$from" "$to"; do
    [ -n "${floors[$file]:-}" ] || floors[$file]=$(floor_of "$file")
  done
  [ "${floors[$to]}" -le "${floors[$from]}" ] || wrong "$from" "files of its own floor or below it" "an include of $to"
  if [[ $to == services/*/* && $(room_of "$from") != "$(room_of "$to")" ]]; then
    wrong "$from" "files of its own room" "an include of $to"
  fi
  [ "${from%.*}" = "${to%.*}" ] || edges+="${from%.*} ${to%.*}"$'\n'
done < <(git grep --untracked -n '^#include "' -- 'rpc/*' 'common/*' 'services/*')

if ! circle=$(tsort <<<"$edges" 2>&1 >/dev/null); then
  wrong includes "no circle" "one through: $(tr '\n' ' ' <<<"$circle")"
fi
exit "$status"
