#!/bin/bash
# What `./dev lint` does. Every check runs; the last line says which failed.
set -uo pipefail
cd "$(dirname "$0")/.." || exit

failed=()
check() { # NAME COMMAND...
  local name=$1
  shift
  echo "lint: $name"
  "$@" || failed+=("$name")
}

# The files that end so, and the programs that such an interpreter runs.
written_in() { # ENDING INTERPRETER, both patterns
  git ls-files | while read -r file; do
    [ -f "$file" ] && { [[ $file =~ \.($1)$ ]] || head -n 1 "$file" | grep -aEq "^#!.*\\b($2)\\b"; } && echo "$file"
  done
}

mapfile -t shell_files < <(written_in 'sh|bash' 'sh|bash')
mapfile -t lua_files < <(written_in lua 'lua[0-9.]*')
mapfile -t python_files < <(written_in py python3)
mapfile -t cpp_files < <(git ls-files '*.cpp' '*.h')
# files that must not compile have no entry in the compilation database
mapfile -t tidy_files < <(git ls-files 'common/*.cpp' 'rpc/*.cpp' 'services/*.cpp' 'sim/*.cpp')

tidy() {
  cmake --preset clang >/dev/null &&
    printf '%s\n' "${tidy_files[@]}" | xargs -P "$(nproc)" -n 2 clang-tidy -quiet -p build-clang 2>/dev/null
}
eslint() {
  build/web/node/node_modules/.bin/eslint --config tests/web/eslint.config.mjs --max-warnings 0 web/console tests/web
}
build() { # PRESET FOLDER
  cmake --preset "$1" >/dev/null || return
  cmake --build "$2" >"$2/build.log" && return
  tail -n 50 "$2/build.log"
  return 1
}

check floors tools/check_floors.sh
check shellcheck shellcheck --source-path=SCRIPTDIR "${shell_files[@]}"
check shfmt shfmt -d "${shell_files[@]}" # by .editorconfig
check luacheck luacheck -q "${lua_files[@]}"
check eslint eslint
check pyflakes pyflakes3 "${python_files[@]}"
check clang-format clang-format --dry-run -Werror "${cpp_files[@]}"
check "g++ -Wall -Wextra -Werror" build release build
check "clang++ -Wall -Wextra -Werror" build clang build-clang
check clang-tidy tidy

if [ ${#failed[@]} -gt 0 ]; then
  printf 'lint: failed:'
  printf ' %s;' "${failed[@]}"
  echo
  exit 1
fi
echo "lint: passed"
