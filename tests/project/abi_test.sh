#!/usr/bin/env bash
# usage: abi_test.sh SOURCE_DIR BUILD_DIR [--accept]
# Compares what the libraries of a debug build export, and the layout of the types behind it, with
# what packaging/abi holds. A difference needs to be recorded, which --accept does; an incompatible
# one is refused, and nothing is recorded, while the SONAME is one that was released.
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

# differences LIBRARY: what an agent that was built against the agreed interface misses or finds
# changed.
differences() {
  local library=$1 removed
  removed=$(LC_ALL=C comm -23 "$agreed/$library.symbols" "$scratch/$library.symbols")
  [[ -z $removed ]] || printf '%s\n' "-${removed//$'\n'/$'\n'-}"
  abidiff --no-added-syms --exported-interfaces-only "$scratch/$library.abi" \
    "$build/lib/$library.so" >"$scratch/diff" 2>&1 || cat "$scratch/diff"
}

readonly libraries=(libvelaframework libvelamodel libvelapolicytranslate)

for library in "${libraries[@]}"; do
  file=$build/lib/$library.so
  symbols "$file" >"$scratch/$library.symbols"
  xz --decompress --stdout "$agreed/$library.abi.xz" >"$scratch/$library.abi"
  soname=$(soname "$file")
  if grep -q "soname='$soname'" "$scratch/$library.abi"; then
    said=$(differences "$library")
    if [[ -n $said ]] && grep -qx "${soname##*.}" "$agreed/released"; then
      printf '%s\n' "$said"
      fail "agents that were built against $soname would no longer run: move VELA_ABI" \
        "in CMakeLists.txt, or find another way (packaging/abi/README.md)"
      continue
    fi
  else
    said="the SONAME has moved to $soname"
  fi
  [[ $accept != --accept ]] || continue
  if [[ -n $said ]]; then
    printf '%s\n' "$said"
    fail "$library is not what was agreed; record it with ./dev abi --accept"
  elif ! diff -U0 "$agreed/$library.symbols" "$scratch/$library.symbols" >"$scratch/diff"; then
    grep '^[-+][FD]' "$scratch/diff"
    fail "$library exports more than was agreed; record it with ./dev abi --accept"
  fi
done

if [[ $accept == --accept ]] && ((failures == 0)); then
  for library in "${libraries[@]}"; do
    cp "$scratch/$library.symbols" "$agreed/"
    layout "$build/lib/$library.so" "$scratch/$library.abi"
    xz -9 --stdout "$scratch/$library.abi" >"$agreed/$library.abi.xz"
  done
fi

exit $((failures > 0))
