#!/usr/bin/env bash
# usage: headers_test.sh SOURCE_DIR BUILD_DIR
# Each header that is installed compiles alone, with GCC and with clang, without a warning; its
# namespaces are marked as visible, and those of headers that are not installed are not.
set -euo pipefail

source=$1
build=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
failures=0

fail() {
  printf 'FAILED: %s\n' "$*"
  failures=$((failures + 1))
}

cmake --install "$build" --component dev --prefix "$scratch" >"$scratch/said"
cd "$scratch/include/velapolicytranslate"
find . -name '*.h' -printf '%P\n' | sort >"$scratch/headers"
(($(wc -l <"$scratch/headers") > 100)) || fail "hardly anything is installed"

! grep -rnE '^namespace [A-Za-z]+ *\{' --include='*.h' . |
  grep -vE ':namespace (Impl|System|TextTrace) \{' || fail "the namespaces above have no mark"
while IFS= read -r header; do
  # src/framework/Kel/Kel.h is Kel/Kel.h, src/common/Parts.h is common/Parts.h.
  name=$(basename "$(dirname "$header")")/$(basename "$header")
  [[ -f $name ]] || fail "$header is marked as visible and not installed"
done < <(grep -rlE '^namespace \[\[using gnu: visibility' --include='*.h' "$source"/src)

# shellcheck disable=SC2317  # xargs calls it
compile() {
  local compiler
  for compiler in g++ clang++; do
    "$compiler" -std=c++20 -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -fsyntax-only \
      -I . -x c++ - <<<"#include \"$1\"" || printf '%s, by %s\n' "$1" "$compiler" >>../failed
  done
}
export -f compile
xargs -P "$(nproc)" -I '{}' bash -c 'compile {}' <"$scratch/headers"
[[ ! -s ../failed ]] || fail "do not compile alone: $(<../failed)"

exit $((failures > 0))
