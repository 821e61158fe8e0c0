#!/usr/bin/env bash
# usage: abi_accept_test.sh SOURCE_DIR COMPILER
# What tests/project/abi_test.sh says of a small library that changes as libraries do, and what
# --accept then records.
set -euo pipefail

test=$1/tests/project/abi_test.sh
compiler=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
agreed=$scratch/packaging/abi
mkdir -p "$agreed" "$scratch/lib"
failures=0

# build SONAME_NUMBER MEMBERS FUNCTIONS: the three libraries, which are one here.
build() {
  local name
  printf 'struct Thing { int one; %s };\nint one(const Thing& thing) { return thing.one; }\n%s\n' \
    "$2" "$3" >"$scratch/thing.cpp"
  for name in libvelaframework libvelamodel libvelapolicytranslate; do
    "$compiler" -g -shared -fPIC -Wl,-soname,"$name.so.$1" "$scratch/thing.cpp" \
      -o "$scratch/lib/$name.so"
  done
}

# expect WORD TEXT [--accept]: whether the comparison is a success or a failure, what it says, and
# that a refusal records nothing.
expect() {
  local word=$1 text=$2 outcome=success said before
  shift 2
  before=$(cat "$agreed"/*.symbols "$agreed"/*.abi.xz | sha256sum)
  said=$("$test" "$scratch" "$scratch" "$@" 2>&1) || outcome=failure
  if [[ $outcome != "$word" || $said != *"$text"* ]]; then
    printf 'FAILED: %s instead of %s (%s), saying:\n%s\n' "$outcome" "$word" "$text" "$said"
    failures=$((failures + 1))
  fi
  [[ $outcome == success || $before == "$(cat "$agreed"/*.symbols "$agreed"/*.abi.xz | sha256sum)" ]] || {
    printf 'FAILED: a refusal has recorded something\n'
    failures=$((failures + 1))
  }
}

readonly another='int another() { return 2; }'
printf '0\n' >"$agreed/released"
for name in libvelaframework libvelamodel libvelapolicytranslate; do
  : >"$agreed/$name.symbols"
  printf '<abi-corpus/>\n' | xz >"$agreed/$name.abi.xz"
done
build 0 '' ''
expect failure 'the SONAME has moved to libvelamodel.so.0'
expect success '' --accept
expect success ''

build 0 '' "$another"
expect failure 'exports more than was agreed'
expect success '' --accept
expect success ''

build 0 '' ''
expect failure '-F another()'
expect failure 'would no longer run: move VELA_ABI' --accept
build 0 'int two;' "$another"
expect failure 'type size changed'
expect failure 'would no longer run: move VELA_ABI' --accept

build 1 'int two;' ''
expect failure 'the SONAME has moved to libvelamodel.so.1'
expect success '' --accept
expect success ''

# 1 was not released yet, so that nobody has it.
build 1 'int two; int three;' ''
expect failure 'record it with ./dev abi --accept'
expect success '' --accept
printf '1\n' >>"$agreed/released"
expect success ''
build 1 'int two;' ''
expect failure 'would no longer run: move VELA_ABI' --accept

exit $((failures > 0))
