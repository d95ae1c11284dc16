#!/bin/sh
# Runs a program of the tests under valgrind, which ends with 99 where it finds a
# fault or memory that nobody has any more:
#
#     valgrind.sh PROGRAM [ARGUMENT]...
#
# Also where a test's PATH leads nowhere.
here=${0%/*}
valgrind=$(PATH=$PATH:/usr/bin:/bin command -v valgrind)
exec "$valgrind" -q --leak-check=full --show-leak-kinds=definite,indirect,possible --error-exitcode=99 \
  --errors-for-leak-kinds=definite,indirect,possible --suppressions="$here/kept_on_purpose.supp" "$@"
