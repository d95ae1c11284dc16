#!/bin/bash
# Fetches Debian's packages of another architecture, with an apt configuration of
# their own, and unpacks them into FOLDER/root, once:
#
#     packages.sh FOLDER ARCHITECTURE PACKAGE...
#
# Exit status 77: they cannot be had, for what the last line says.
set -euo pipefail
. "$(dirname "$0")/../fail.sh"
tool=dev_cross
folder=$1 architecture=$2
shift 2
root=$folder/root

[ "$(cat "$root/unpacked" 2>/dev/null)" != "$*" ] || exit 0
echo "dev_cross: fetching $* for $architecture"
# shellcheck source=/dev/null
release=$(. /etc/os-release && echo "${VERSION_CODENAME:-bookworm}")
mirror=${DEBIAN_MIRROR:-http://deb.debian.org/debian}

# apt for that architecture, with nothing of this machine's but its keys.
foreign_apt() {
  apt-get -qq \
    -oAPT::Architecture="$architecture" -oAPT::Architectures="$architecture" \
    -oAPT::Sandbox::User=root -oDebug::NoLocking=1 \
    -oDir::State="$folder/apt/state" -oDir::State::Status=/dev/null \
    -oDir::Cache="$folder/apt/cache" \
    -oDir::Etc::SourceList="$folder/apt/sources.list" -oDir::Etc::SourceParts=/dev/null \
    -oDir::Etc::Preferences=/dev/null -oDir::Etc::PreferencesParts=/dev/null \
    "$@"
}

mkdir -p "$folder/apt/state/lists/partial" "$folder/apt/cache/archives/partial"
echo "deb [signed-by=/usr/share/keyrings/debian-archive-keyring.gpg] $mirror $release main" >"$folder/apt/sources.list"
foreign_apt update >"$folder/apt/log" 2>&1 ||
  skip "$mirror" "package lists for $architecture" "$(tail -n 1 "$folder/apt/log")"
foreign_apt --yes --no-install-recommends --download-only install "$@" >>"$folder/apt/log" 2>&1 ||
  skip "$mirror" "$* for $architecture" "$(tail -n 1 "$folder/apt/log")"

rm -rf "$root.new"
mkdir -p "$root.new"
for package in "$folder"/apt/cache/archives/*.deb; do
  dpkg-deb --extract "$package" "$root.new"
done
# absolute links would lead to this machine's own files
find "$root.new" -type l -lname '/*' | while IFS= read -r link; do
  target=$(readlink "$link")
  ln -sfn "$(realpath -m --relative-to="$(dirname "$link")" "$root.new$target")" "$link"
done
rm -rf "$root"
mv "$root.new" "$root"
echo "$*" >"$root/unpacked"
