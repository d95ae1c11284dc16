#!/bin/sh
# Runs a program of the tests under valgrind, which ends with 99 where it finds a
# fault or memory that nobody has any more:
#
#     valgrind.sh PROGRAM [ARGUMENT]...
here=$(dirname "$(realpath "$0")")
exec valgrind -q --leak-check=full --show-leak-kinds=definite,indirect,possible --error-exitcode=99 \
  --errors-for-leak-kinds=definite,indirect,possible --suppressions="$here/kept_on_purpose.supp" "$@"
