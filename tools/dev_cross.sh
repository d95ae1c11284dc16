#!/bin/sh
# ./dev cross s390x|armhf: builds for another machine and runs golden vectors,
# unit tests, kept fuzz inputs and an end-to-end pass there, under qemu-user.
#
# Debian's packages of that machine are fetched with an apt configuration of
# their own and unpacked into build-cross-ARCH/sysroot, once. Set DEBIAN_MIRROR
# to fetch them elsewhere. Exit status 77: left out, for what the last line says.
set -eu

fail() {
	echo "dev_cross: $*" >&2
	exit 1
}

skip() {
	echo "dev_cross: SKIPPED: $*" >&2
	exit 77
}

arch=${1:-}
case $arch in
s390x) triplet=s390x-linux-gnu emulator=qemu-s390x-static compiler=g++-s390x-linux-gnu ;;
armhf) triplet=arm-linux-gnueabihf emulator=qemu-arm-static compiler=g++-arm-linux-gnueabihf ;;
*) fail "command line: expected s390x or armhf, found '$*'" ;;
esac
command -v $triplet-g++ >/dev/null || skip "PATH: expected $triplet-g++ (Debian: $compiler), found none"
command -v $emulator >/dev/null || skip "PATH: expected $emulator (Debian: qemu-user-static), found none"

cd "$(dirname "$0")/.."
build=$PWD/build-cross-$arch
sysroot=$build/sysroot
packages='libc6-dev libstdc++6 libtirpc-dev liblua5.1-0-dev lua5.1 libgtest-dev'
# shellcheck source=/dev/null
release=$(. /etc/os-release && echo "${VERSION_CODENAME:-bookworm}")
mirror=${DEBIAN_MIRROR:-http://deb.debian.org/debian}

# apt for that machine, with nothing of this one's but its keys.
foreign_apt() {
	apt-get -qq \
		-oAPT::Architecture="$arch" -oAPT::Architectures="$arch" \
		-oAPT::Sandbox::User=root -oDebug::NoLocking=1 \
		-oDir::State="$build/apt/state" -oDir::State::Status=/dev/null \
		-oDir::Cache="$build/apt/cache" \
		-oDir::Etc::SourceList="$build/apt/sources.list" -oDir::Etc::SourceParts=/dev/null \
		-oDir::Etc::Preferences=/dev/null -oDir::Etc::PreferencesParts=/dev/null \
		"$@"
}

fetch() {
	mkdir -p "$build/apt/state/lists/partial" "$build/apt/cache/archives/partial"
	echo "deb [signed-by=/usr/share/keyrings/debian-archive-keyring.gpg] $mirror $release main" \
		>"$build/apt/sources.list"
	foreign_apt update >"$build/apt/log" 2>&1 ||
		skip "$mirror: expected package lists for $arch, found $(tail -n 1 "$build/apt/log")"
	# shellcheck disable=SC2086 # a list
	foreign_apt --yes --no-install-recommends --download-only install $packages >>"$build/apt/log" 2>&1 ||
		skip "$mirror: expected $packages for $arch, found $(tail -n 1 "$build/apt/log")"
}

unpack() {
	rm -rf "$sysroot.new"
	mkdir -p "$sysroot.new"
	for package in "$build"/apt/cache/archives/*.deb; do
		dpkg-deb --extract "$package" "$sysroot.new"
	done
	# absolute links would lead to this machine's own files
	find "$sysroot.new" -type l -lname '/*' | while IFS= read -r link; do
		target=$(readlink "$link")
		ln -sfn "$(realpath -m --relative-to="$(dirname "$link")" "$sysroot.new$target")" "$link"
	done
	rm -rf "$sysroot"
	mv "$sysroot.new" "$sysroot"
	echo "$packages" >"$sysroot/unpacked"
}

if [ "$(cat "$sysroot/unpacked" 2>/dev/null)" != "$packages" ]; then
	echo "dev_cross: fetching $packages for $arch"
	fetch
	unpack
fi

LIBRPC_CROSS_TRIPLET=$triplet LIBRPC_CROSS_SYSROOT=$sysroot LIBRPC_CROSS_EMULATOR=$emulator
export LIBRPC_CROSS_TRIPLET LIBRPC_CROSS_SYSROOT LIBRPC_CROSS_EMULATOR
build() { # FOLDER NAME [OPTION]...
	folder=$1 name=$2
	shift 2
	mkdir -p "$folder"
	if ! cmake -S . -B "$folder" -DCMAKE_BUILD_TYPE=Release -DLIBRPC_WERROR=ON -DLIBRPC_TESTS=ON "$@" \
		>"$folder/configure.log" 2>&1; then
		cat "$folder/configure.log" >&2
		fail "cmake: expected a configured build for $name, found the errors above"
	fi
}
build "$build" "$arch" -DCMAKE_TOOLCHAIN_FILE=cmake/cross.cmake
cmake --build "$build" --target rpc e2e_process unit_test exports_test golden_test services_test \
	calls_test calls_host fuzz_arguments fuzz_replies fuzz_exchange fuzz_tables fuzz_helpers
# the device that the library talks to is this machine's own
build "$build/native" "this machine"
cmake --build "$build/native" --target simulated_device

failed=0
emulated="$emulator -L $sysroot"

# Why a test is left out; the name is a gtest filter or an end-to-end case.
excluded=''
leave_out() { # NAME WHY
	echo "dev_cross: left out: $1: $2"
	excluded="$excluded:$1"
}
[ "$arch" = armhf ] ||
	leave_out Hostpdinfo.DecimalCommaOfTheProcessLocaleGoesForBothWays "this machine's localedef writes its own byte order"
leave_out descriptor_limit_gives_no_value_and_the_next_call_works "the emulator needs descriptors of its own"

for test in unit/unit unit/exports golden/golden services/services calls/calls; do
	echo "dev_cross: $arch: ${test#*/}"
	# shellcheck disable=SC2086 # a command and its options
	$emulated "$build/tests/${test}_test" --gtest_brief=1 "--gtest_filter=*-${excluded#:}" \
		>"$build/${test#*/}.log" 2>&1 || {
		failed=$((failed + 1))
		grep -v '^Running main' "$build/${test#*/}.log" | head -n 60
	}
	tail -n 2 "$build/${test#*/}.log" | grep PASSED || :
done

for target in arguments replies exchange tables helpers; do
	echo "dev_cross: $arch: fuzz $target"
	# shellcheck disable=SC2086
	$emulated "$build/tests/fuzz/fuzz_$target" "tests/fuzz/corpus/$target.kept" || failed=$((failed + 1))
done

# The end-to-end tests, with that machine's Lua and library.
lua=$build/lua5.1
printf '#!/bin/sh\nexec %s %s/usr/bin/lua5.1 "$@"\n' "$emulated" "$sysroot" >"$lua"
chmod +x "$lua"
if ! problem=$(tools/with_device.sh --allowed 2>&1); then
	[ "$failed" = 0 ] || fail "$arch: expected every test to pass, found $failed that did not"
	skip "$problem"
fi
LUA_CPATH="$build/?.so;$build/tests/e2e/?.so" LUA_PATH="$PWD/tests/e2e/?.lua;$PWD/tests/lua/?.lua"
E2E_INTERPRETER=$lua LIBRPC_TEST_SOURCE=$PWD
export LUA_CPATH LUA_PATH E2E_INTERPRETER LIBRPC_TEST_SOURCE
passed=0
for file in e2e/dispatch e2e/client e2e/faults calls/all calls/group calls/message; do
	topic=${file#*/}
	echo "dev_cross: $arch: end to end: $topic"
	# shellcheck disable=SC2013 # names have no blanks
	for case in $(sed -n 's/^case "\([^"]*\)".*/\1/p' "tests/$file.lua"); do
		case "$excluded:" in *":$case:"*) continue ;; esac
		log=$build/end_to_end.log
		if tools/with_device.sh "$build/native" -- "$lua" "tests/$file.lua" "$case" >"$log" 2>&1 </dev/null &&
			grep -qx "passed $case" "$log"; then
			passed=$((passed + 1))
		else
			failed=$((failed + 1))
			echo "dev_cross: $arch: $topic: expected '$case' to pass, found:" >&2
			tail -n 20 "$log" >&2
		fi
	done
done
[ "$passed" -gt 0 ] || fail 'tests/e2e: expected cases, found none that ran'
echo "dev_cross: $arch: $passed end-to-end cases passed"
[ "$failed" = 0 ] || fail "$arch: expected every test to pass, found $failed that did not"
