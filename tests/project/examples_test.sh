#!/usr/bin/env bash
# usage: examples_test.sh SOURCE_DIR VPM
# Runs the examples of every help text as they stand there, in a copy of examples/. Those of one
# text are run one after the other. Each has to end with exit code 0, and to have printed something
# or written a file, unless it is known to do its work in silence. Examples of "vpm ctl" and "vpm
# explain" find an agent; an agent that an example starts has to answer, and is stopped.
set -euo pipefail

source=$1
vpm=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
mkdir "$scratch/bin"
ln -s "$vpm" "$scratch/bin/vpm"
PATH=$scratch/bin:$PATH
export VPM_SOCKET=lab.sock
failures=0
examples=0

fail() {
  printf 'FAILED: %s\n' "$*"
  failures=$((failures + 1))
}

# The commands of the program, "vpm ctl show" and so on, as the completion knows them.
commands() { vpm completion bash | grep -oE "'vpm( [a-z]+)*'\)" | tr -d "')" | sort -u; }

# The examples of one help text: lines at two blanks, with the lines that go on with them. Each ends
# with a NUL.
examples_of() {
  local line example='' inside=0
  while IFS= read -r line; do
    case $line in
      Examples:) inside=1 ;;
      [!\ ]* | '') inside=0 ;;
      *)
        ((inside)) || continue
        if [[ -n $example ]]; then
          example+=$'\n'$line
        elif [[ $line == '  '[!\ ]* ]]; then
          example=$line
        else
          continue
        fi
        # It goes on until it is whole.
        if [[ $example != *\\ ]] && bash -n -c "$example" 2>/dev/null; then
          printf '%s\0' "$example"
          example=
        fi
        ;;
    esac
  done < <("$@" --help)
}

# Starts an agent and waits for its answer.
start_agent() {
  bash -c "exec $1" >>agent.out 2>&1 &
  agent=$!
  for ((i = 0; i < 200; i++)); do
    [[ ! -S lab.sock ]] || ! vpm ctl stats >/dev/null 2>&1 || return 0
    sleep 0.05
  done
  fail "no agent answers after: $1: $(cat agent.out)"
}

stop_agent() {
  vpm ctl stop 2>/dev/null || true
  wait "$agent" || fail "the agent ended with exit code $?: $(cat agent.out)"
}

# What a folder holds, to see whether something came.
holds() { find . -type f -size +0 ! -name agent.out ! -name printed | sort; }

run() {
  local command=$1 before status=0
  examples=$((examples + 1))
  printf '%s\n' "$command"
  case $command in
    *'| man '*) command -v man >/dev/null || return 0 ;;
    *'| jq '*) command -v jq >/dev/null || return 0 ;;
    *'vpm agent '*)
      start_agent "$command"
      stop_agent
      return
      ;;
    # Goes on until it is stopped.
    *' --follow '*) command="timeout 2 ${command#"${command%%[! ]*}"} || [[ \$? == 124 ]]" ;;
  esac
  before=$(holds)
  bash -c "$command" >printed 2>&1 || status=$?
  ((status == 0)) || fail "exit code $status: $(head -5 printed)"
  case $command in
    *'ctl wait '* | *'ctl stop'* | *'source <('*) ;;
    *) [[ -s printed || $(holds) != "$before" ]] || fail "it printed and wrote nothing" ;;
  esac
}

while read -r -a words; do
  name=${words[*]}
  folder=$scratch/${name// /-}
  cp -r "$source/examples" "$folder"
  cd "$folder"
  asks=0
  [[ $name != 'vpm ctl'* && $name != 'vpm explain' ]] || asks=1
  ((!asks)) || start_agent 'vpm agent --config firewall.json'
  count=$examples
  while IFS= read -r -d '' example; do
    run "$example" </dev/null
  done < <(examples_of "${words[@]}")
  ((examples > count)) || fail "the help of $name has no examples"
  ((!asks)) || stop_agent
done < <(commands)
((examples > 20)) || fail "only $examples examples were found"

exit $((failures > 0))
