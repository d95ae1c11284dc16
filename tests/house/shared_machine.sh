#!/bin/bash
# ./dev on a machine that others use too:
#
#     shared_machine.sh SOURCE CASE
#
# runs case_CASE in a copy of the source tree. A case may put programs of its own
# into $stubs, which stands before everything else on the path.
set -euo pipefail
. "$(dirname "$0")/../../tools/fail.sh"
source=$1 name=$2
tool+=": $name"

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
chmod 755 "$scratch"
tree=$scratch/tree stubs=$scratch/stubs
mkdir "$tree" "$stubs"
tar -C "$source" --exclude='./build*' --exclude=./.git -cf - . | tar -C "$tree" -xf - --no-same-owner
cd "$tree"
PATH=$stubs:$PATH
# as where nobody chose
unset CMAKE_GENERATOR CMAKE_BUILD_PARALLEL_LEVEL

program() { # NAME, its text on standard input
  cat >"$scratch/program"
  chmod +x "$scratch/program"
  mv -fT "$scratch/program" "$stubs/$1" # in place of a link, not through it
}

# A machine without the programs named, and with nothing of ours on its path.
without() { # PROGRAM...
  local folder others
  for folder in /usr/sbin /usr/bin; do
    ln -sf "$folder"/* "$stubs"
  done
  for others; do
    rm -f "$stubs/$others"
  done
  PATH=$stubs
}

run() { # COMMAND...: its output to $out, its status to $status
  status=0
  out=$("$@" 2>&1) || status=$?
}

expect_success() { # WHERE
  [ "$status" = 0 ] || fail "$1" "success" "status $status: $(tail -n 5 <<<"$out")"
}

expect_text() { # WHERE TEXT
  [[ $out == *"$2"* ]] || fail "$1" "'$2'" "'$(tail -n 5 <<<"$out")'"
}

# A package manager: $missing are not installed; luajit would push a web server's
# module out; what is asked for goes to $scratch/asked.
package_manager() {
  program dpkg-query <<END
#!/bin/sh
for package; do :; done
case " $missing " in
*" \$package "*) ;;
*) printf installed ;;
esac
END
  program apt-get <<END
#!/bin/sh
case " \$* " in
*" -s "*luajit*) echo 'Remv libnginx-mod-http-lua [1:0.10.23-1]' ;;
*" -s "*) ;;
*)
  echo "\$*" >>$scratch/asked
  case "\$*" in *luajit*)
    echo 'E: Packages need to be removed but remove is disabled.'
    exit 100 ;;
  esac ;;
esac
END
  program apt-cache </dev/null
  # whoever runs this may install what it lacks, which is nothing real
  program sudo <<'END'
#!/bin/sh
shift # -E
exec "$@"
END
  # nothing to build or run: only what is installed matters
  program cmake </dev/null
  program ctest </dev/null
  touch "$scratch/asked"
}

case_nothing_has_a_fixed_name_in_tmp() {
  run grep -nE '(^|[^A-Za-z0-9_}])/(tmp|var/tmp|dev/shm)/' dev tools/*.sh .ci/run
  [ "$status" = 1 ] || fail "scripts" "no name in /tmp that another user may have taken" "$out"
}

case_logs_stand_in_the_build_folder() {
  run ./dev build release help
  expect_success "./dev build"
  grep -q 'Build files have been written' build/configure.log || fail build/configure.log "CMake's words" "others"
}

case_failure_gives_the_reason_of_this_clone() {
  echo 'message(FATAL_ERROR "a reason of its own")' >>CMakeLists.txt
  run ./dev build release help
  [ "$status" != 0 ] || fail "./dev build" "a failure" "success"
  expect_text "./dev build" "a reason of its own"
  run ./dev demo
  expect_text "./dev demo" "a reason of its own"
}

case_plain_build_folder_serves_dev() {
  run cmake -S . -B build -G 'Unix Makefiles' -DLIBRPC_SANITIZE=undefined -DLIBRPC_LUA=lua5.4 -DLIBRPC_LUA_INCLUDE_DIR=/usr/include
  expect_success "cmake"
  run ./dev build release help
  expect_success "./dev build"
  expect_text "./dev build" "golden_test"
  for wanted in 'CMAKE_GENERATOR:.*=Unix Makefiles' 'LIBRPC_LUA:.*=lua5.1' 'LIBRPC_LUA_INCLUDE_DIR:.*=' \
    'LIBRPC_SANITIZE:.*=' 'LIBRPC_TESTS:.*=ON'; do
    grep -qx "$wanted" build/CMakeCache.txt || fail build/CMakeCache.txt "$wanted" "$(grep "^${wanted%%:*}" build/CMakeCache.txt)"
  done
}

case_folder_of_dev_serves_a_plain_build() {
  run ./dev build release help
  expect_success "./dev build"
  run cmake -S . -B build
  expect_success "cmake -S . -B build"
  run cmake --build build --target help
  expect_success "cmake --build build"
  expect_text "cmake --build build" "golden_test"
}

# Of what tests need, ./dev demo installs GoogleTest alone.
case_what_the_demo_builds_wants_no_python() {
  without python3
  run cmake --preset release
  expect_success "cmake --preset release"
  run ctest --test-dir build -N -L web
  expect_text "ctest -N" "web.python3"
}

case_package_that_would_remove_others_is_left_out() {
  without luajit lua5.2
  missing='luajit lua5.2'
  package_manager
  run ./dev test
  expect_success "./dev test"
  expect_text "./dev test" "dev: luajit: left out: expected to install it and remove nothing, found that libnginx-mod-http-lua would go"
  asked=$(cat "$scratch/asked")
  [[ $asked == *' lua5.2'* && $asked != *luajit* ]] || fail apt-get "lua5.2 installed, and not luajit" "$asked"
}

case_nothing_is_removed_for_what_is_needed() {
  missing=libluajit-needed
  package_manager
  sed -i 's/^packages_build=(/&libluajit-needed /' dev
  run ./dev build
  [ "$status" = 1 ] || fail "./dev build" "a failure" "status $status: $out"
  expect_text "./dev build" "remove nothing, found that libnginx-mod-http-lua would go"
  run grep -v -e ' --no-remove ' -e ' update$' "$scratch/asked"
  [ -z "$out" ] || fail apt-get "--no-remove wherever it installs" "$out"
}

case_others_that_install_are_waited_for() {
  missing=ninja-build
  package_manager
  program apt-get <<END
#!/bin/sh
echo "\$*" >>$scratch/asked
[ "\$(wc -l <$scratch/asked)" -gt 1 ] && exit
echo 'E: Could not get lock /var/lib/apt/lists/lock. It is held by process 1 (apt-get)'
exit 100
END
  run ./dev build
  expect_success "./dev build"
  run grep -c -- '-o DPkg::Lock::Timeout=[1-9]' "$scratch/asked"
  [ "$out" = 3 ] || fail apt-get "update twice, then install, each with a time-out for dpkg's lock" "$(cat "$scratch/asked")"
}

needs_root() {
  [ "$(id -u)" = 0 ] || skip privileges root "$(id -un)"
}

user=65534
as_user() { # COMMAND...
  setpriv --reuid=$user --regid=$user --clear-groups "$@"
}

case_files_of_root_go_to_the_owner_of_the_tree() {
  needs_root
  chown -R $user .
  run ./dev build release help
  expect_success "./dev build as root"
  run find . ! -user $user
  [ -z "$out" ] || fail "./dev build as root" "every file the owner's" "$out"
  run as_user ./dev build release help
  expect_success "./dev build as the owner"
}

case_files_of_root_that_stay_are_named() {
  needs_root
  chown -R $user .
  mkdir build
  touch build/left
  chown $user build
  without sudo
  run as_user ./dev build release help
  [ "$status" = 1 ] || fail "./dev build" "a failure" "status $status: $out"
  expect_text "./dev build" "dev: ./build/left: expected a file of nobody, found one of root"
}

case_user_who_may_have_no_network_is_told() {
  needs_root
  without newuidmap
  run as_user tools/with_device.sh build -- true
  [ "$status" = 2 ] || fail with_device "status 2" "status $status: $out"
  expect_text with_device "with_device: privileges: expected root (try sudo) or user namespaces with ids (Debian: uidmap), found nobody"
}

"case_$name"
