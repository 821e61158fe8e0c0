#!/usr/bin/env bash
# usage: dev_test.sh SOURCE_DIR
# ./dev explains itself, and answers a wrong command with the nearest right one.
set -euo pipefail

dev=$1/dev
failures=0

# expect STATUS TEXT ARGUMENT...: the exit code of ./dev ARGUMENT... and a text that it prints.
expect() {
  local wanted=$1 text=$2 output status=0
  shift 2
  output=$("$dev" "$@" 2>&1) || status=$?
  if ((status != wanted)) || [[ $output != *"$text"* ]]; then
    printf 'FAILED: ./dev %s: exit code %d (expected %d), and it said:\n%s\n(expected: %s)\n' \
      "$*" "$status" "$wanted" "$output" "$text"
    failures=$((failures + 1))
  fi
}

expect 0 'usage: ./dev COMMAND'
expect 0 'usage: ./dev COMMAND' --help
expect 0 'usage: ./dev COMMAND' help
expect 2 'there is no command "tset"; did you mean "test"?' tset
expect 2 'there is no command "buidl"; did you mean "build"?' buidl
expect 2 'there is no command "zzz"' zzz

exit $((failures > 0))
