#!/bin/bash
# Runs a command beside a port mapper and the simulated device, in a network of
# their own:
#
#     with_device.sh BUILD [DEVICE OPTION]... -- COMMAND [ARGUMENT]...
#
# The command finds, in its environment,
#     SIM_DEVICE   the simulated device's program
#     SIM_CONTROL  the socket that it takes commands on (simulated_device --help)
#     SIM_LOG      its log, a line a call
#     RPCBIND_PID  the port mapper
# and in /run a file system that nobody else sees. Ends with the command's status.
#
#     with_device.sh --allowed
#
# tells whether this user may have such a network: root, or whoever may make user
# namespaces and has ids of their own there (the port mapper changes its user).
set -euo pipefail
. "$(dirname "$0")/fail.sh"
failure=2 # a command that fails mostly ends with 1

# Sets `namespaces` to what runs a command in a network of its own.
make_namespaces() {
  local problem
  PATH=$PATH:/usr/sbin:/sbin # where a user's shell does not look
  for program in unshare ip rpcbind rpcinfo; do
    command -v "$program" >/dev/null || fail programs "$program (./dev demo installs it)" none
  done
  namespaces=(unshare -n -m)
  if [ "$(id -u)" != 0 ]; then
    namespaces+=(--user --map-root-user --map-auto)
    problem=$("${namespaces[@]}" true 2>&1) ||
      fail privileges "root (try sudo) or user namespaces with ids (Debian: uidmap)" "$(id -un): $problem"
  fi
  # in a chroot / is no mount point, whose propagation could be changed
  "${namespaces[@]}" true 2>/dev/null || namespaces+=(--propagation unchanged)
  problem=$("${namespaces[@]}" true 2>&1) || fail privileges "leave to make network and mount namespaces" "$problem"
}

if [ "$*" = --allowed ]; then
  make_namespaces
  exit
fi

[ $# -ge 3 ] || fail arguments "BUILD [OPTION]... -- COMMAND..." "$*"

if [ -z "${IN_DEVICE_NETWORK:-}" ]; then
  make_namespaces
  [ -x "$1/simulated_device" ] || fail "$1" "a built simulated_device" none
  IN_DEVICE_NETWORK=1 exec "${namespaces[@]}" "$0" "$@"
fi
unset IN_DEVICE_NETWORK

build=$(realpath "$1")
shift
options=()
while [ $# -gt 0 ] && [ "$1" != -- ]; do
  options+=("$1")
  shift
done
[ $# -ge 2 ] || fail arguments "-- and a command" "none"
shift

mount -t tmpfs none /run
ip link set lo up

export SIM_DEVICE=$build/simulated_device
export SIM_CONTROL=/run/simulated_device.control
export SIM_LOG=/run/simulated_device.log

device_pid=
# shellcheck disable=SC2317  # called by the trap
clean_up() {
  for pid in $device_pid $RPCBIND_PID; do
    kill "$pid" 2>/dev/null || true
  done
  wait 2>/dev/null || true
  umount -l /run || true # where the mount could be seen from outside, it goes too
}

# Asks until `$2...` succeeds or the process $1 is gone.
wait_until() {
  local pid=$1 tries
  shift
  for ((tries = 0; tries < 3000; tries++)); do
    "$@" >/dev/null 2>&1 && return 0
    kill -0 "$pid" 2>/dev/null || return 1
    sleep 0.02
  done
  return 1
}

rpcbind -f &
export RPCBIND_PID=$!
trap clean_up EXIT
wait_until "$RPCBIND_PID" rpcinfo -T udp 127.0.0.1 100000 2 || fail rpcbind "a port mapper on 127.0.0.1" "none that answers"

: >"$SIM_LOG"
"$SIM_DEVICE" --log "$SIM_LOG" --control "$SIM_CONTROL" "${options[@]}" &
device_pid=$!
wait_until "$device_pid" "$SIM_DEVICE" --tell "$SIM_CONTROL" ping || fail simulated_device "a device that answers" "none"

status=0
"$@" || status=$?
exit "$status"
