#!/usr/bin/env bash
# usage: abi_test.sh SOURCE_DIR BUILD_DIR [--accept]
# Compares what the libraries of a debug build export, and the layout of the types behind it, with
# what packaging/abi holds. An addition needs to be recorded; an incompatible change is refused
# unless the SONAME has moved. --accept records what there is.
set -euo pipefail

agreed=$1/packaging/abi
build=$2
accept=${3:-}
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
failures=0

fail() {
  printf 'FAILED: %s\n' "$*"
  failures=$((failures + 1))
}

# symbols LIBRARY: functions (F), objects and type information (D). What depends on the compiler's
# mood is left out: weak functions and tables of virtual ones, and constants, which every caller
# compiles for itself.
symbols() {
  nm -D --defined-only --without-symbol-versions "$1" | c++filt |
    grep -vE ' V vtable for |::k[A-Z]\w+$' |
    sed -nE 's/^[0-9a-f]+ T /F /p; s/^[0-9a-f]+ [BDRVu] /D /p' | LC_ALL=C sort -u
}

layout() {
  abidw --exported-interfaces-only --no-show-locs --no-comp-dir-path --no-corpus-path \
    --out-file "$2" "$1"
}

soname() { readelf -d "$1" | sed -nE 's/.*SONAME.*\[(.*)\]/\1/p'; }

for library in libvelaframework libvelamodel libvelapolicytranslate; do
  file=$build/lib/$library.so
  if [[ $accept == --accept ]]; then
    symbols "$file" >"$agreed/$library.symbols"
    layout "$file" "$scratch/$library.abi"
    xz -9 --stdout "$scratch/$library.abi" >"$agreed/$library.abi.xz"
    continue
  fi
  symbols "$file" >"$scratch/$library.symbols"
  if ! diff -U0 "$agreed/$library.symbols" "$scratch/$library.symbols" >"$scratch/diff"; then
    grep '^[-+][FD]' "$scratch/diff"
    fail "$library exports other symbols than packaging/abi/$library.symbols says;" \
      "see packaging/abi/README.md for what to do"
  fi
  xz --decompress --stdout "$agreed/$library.abi.xz" >"$scratch/$library.abi"
  if ! grep -q "soname='$(soname "$file")'" "$scratch/$library.abi"; then
    fail "the SONAME has moved to $(soname "$file"):" \
      "record what it stands for with ./dev abi --accept"
  elif ! abidiff --no-added-syms --exported-interfaces-only "$scratch/$library.abi" "$file" \
    >"$scratch/diff" 2>&1; then
    cat "$scratch/diff"
    fail "agents that were built against $(soname "$file") would no longer run;" \
      "see packaging/abi/README.md for what to do"
  fi
done

exit $((failures > 0))
