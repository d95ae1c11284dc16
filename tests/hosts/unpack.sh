#!/bin/bash
# Unpacks Debian packages, and what they need beyond what is installed, into a folder:
#
#     unpack.sh FOLDER PACKAGE...
#
# Nothing is installed: a web server's package would start it where the whole network can reach
# it, and nginx's Lua module would take the package luajit away. A package that Debian lacks is
# told and left out.
set -euo pipefail
. "$(dirname "$0")/../../tools/fail.sh"
folder=$1
shift

apt=(env DEBIAN_FRONTEND=noninteractive apt-get -qq -o Debug::NoLocking=1 -o APT::Sandbox::User=root)
candidates() { apt-cache policy "$@" | sed -n 's/^ *Candidate: //p'; }
available() { candidates "$1" | grep -qv '^(none)$'; }

stamp="$* $(candidates "$@" | tr '\n' ' ')"
[ "$(cat "$folder.unpacked" 2>/dev/null)" != "$stamp" ] || exit 0
available "$1" || "${apt[@]}" update

packages=()
for package in "$@"; do
  if available "$package"; then
    packages+=("$package")
  else
    complain packages "$package" "none: tests that need it are skipped"
  fi
done
[ ${#packages[@]} -gt 0 ] || exit 0
rm -rf "$folder" "$folder.unpacked"
archives=$(mktemp -d)
trap 'rm -rf "$archives"' EXIT
mkdir -p "$folder" "$archives/partial"
"${apt[@]}" -y --download-only --reinstall --no-install-recommends -o "Dir::Cache::archives=$archives" \
  install "${packages[@]}" >/dev/null
shopt -s nullglob
for archive in "$archives"/*.deb; do
  dpkg -x "$archive" "$folder"
done
echo "$stamp" >"$folder.unpacked"
