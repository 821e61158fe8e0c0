#!/usr/bin/env bash
# usage: linked_test.sh LIBRARY...
# The libraries need the C++ run-time library, the C library and each other, and nothing else.
set -euo pipefail

allowed='^(linux-vdso|libvela[a-z]+|libstdc\+\+|libgcc_s|libm|libc|ld-linux-[a-z0-9-]+)\.so'
status=0
for library in "$@"; do
  printf '%s:\n' "${library##*/}"
  needed=$(ldd "$library")
  printf '%s\n' "$needed"
  while read -r name _; do
    name=${name##*/}
    if [[ ! $name =~ $allowed ]]; then
      printf 'FAILED: %s needs %s\n' "${library##*/}" "$name"
      status=1
    fi
  done <<<"$needed"
  [[ $needed == *libstdc++* ]] || {
    printf 'FAILED: ldd says nothing of use about %s\n' "$library"
    status=1
  }
done
exit "$status"
