#!/usr/bin/env bash
# usage: readme_test.sh SOURCE_DIR VPM
# Holds the README against the project. In its console blocks a line "$ COMMAND" is run, and the
# lines below it are what the command prints, where a line "..." stands for any number of lines.
# A command that ends with & goes on to run, and is waited for until it listens on its socket.
# A command of ./dev takes minutes and would run this test again, so that for these it is only
# checked that ./dev has them. The lines of the C++ block stand in examples/agent.cpp.
set -euo pipefail

source=$1
vpm=$2
cd "$source"
failures=0
commands=0
started=
folder=$(mktemp -d)
trap '[[ -z $started ]] || kill "$started" 2>/dev/null || true; rm -rf "$folder"' EXIT

fail() {
  printf 'FAILED: %s\n' "$*"
  failures=$((failures + 1))
}

# The lines of the README's blocks of one language.
blocks() { sed -n "/^\`\`\`$1\$/,/^\`\`\`\$/{/^\`\`\`/d;p}" README.md; }

# matches PRINTED EXPECTED: whether they are equal, with "..." standing for any lines.
matches() {
  local pattern
  pattern=$(printf '%s\n' "$2" | sed -e 's/[][\\*?]/\\&/g' -e 's/^\.\.\.$/*/')
  # shellcheck disable=SC2053  # Deliberate: the right side is a pattern.
  [[ $1 == $pattern ]]
}

check() {
  local command=$1 expected=$2 printed status=0
  commands=$((commands + 1))
  printf '%s\n' "$command"
  if [[ $command == ./dev* ]]; then
    read -r _ name _ <<<"$command"
    ./dev --help | grep -qE "^  $name( |\$)" || fail "./dev has no command $name"
    return
  fi
  command=${command//build\/release\/bin\/vpm/$vpm}
  command=${command//build\/lab.sock/$folder/lab.sock}
  expected=${expected//build\/lab.sock/$folder/lab.sock}
  if [[ $command == *' &' ]]; then
    bash -c "exec ${command% &}" >"$folder/background" 2>&1 &
    started=$!
    for _ in {1..100}; do
      [[ ! -S $folder/lab.sock ]] || ! grep -q listening "$folder/background" || break
      sleep 0.1
    done
    printed=$(<"$folder/background")
    matches "$printed" "$expected" || fail "it printed: $printed"
    return
  fi
  printed=$(bash -c "$command" 2>&1) || status=$?
  ((status == 0)) || fail "exit code $status: $printed"
  matches "$printed" "$expected" || fail "it printed:
$printed
instead of:
$expected"
}

command=
expected=
while IFS= read -r line; do
  if [[ $line == '$ '* ]]; then
    [[ -z $command ]] || check "$command" "$expected"
    command=${line#'$ '}
    expected=
  else
    expected+=${expected:+$'\n'}$line
  fi
done < <(blocks console)
[[ -z $command ]] || check "$command" "$expected"
((commands > 1)) || fail "the README has no commands"

lines=0
while IFS= read -r line; do
  [[ -n $line ]] || continue
  lines=$((lines + 1))
  grep -qF -- "$line" examples/agent.cpp || fail "not in examples/agent.cpp: $line"
done < <(blocks cpp)
((lines > 10)) || fail "the README has no C++ block"

exit $((failures > 0))
