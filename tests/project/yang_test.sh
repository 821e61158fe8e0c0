#!/usr/bin/env bash
# usage: yang_test.sh SOURCE_DIR VPM
# The modules give no warning, every example validates, and so does what vpm makes of it.
set -euo pipefail

source=$1
vpm=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

fail() {
  printf 'FAILED: %s\n' "$*"
  failures=$((failures + 1))
}

validates() { yanglint -p "$source/yang" -t data "$source"/yang/*.yang "$1" >"$work/said" 2>&1; }

for module in "$source"/yang/*.yang; do
  yanglint -V -p "$source/yang" "$module" >"$work/said" 2>&1 || fail "$module is refused"
  ! grep -E '^libyang (warn|err)|^YANGLINT\[[EW]\]' "$work/said" || fail "$module draws a warning"
  printf 'checked %s\n' "${module##*/}"
done

examples=0
for document in "$source"/examples/*.json; do
  translated=$work/${document##*/}
  validates "$document" || fail "$document is refused: $(cat "$work/said")"
  "$vpm" translate "$document" --output "$translated" --quiet || fail "vpm refuses $document"
  grep -q '"vela-l3v2:policy-source"' "$translated" || fail "no version 2 came of $document"
  validates "$translated" || fail "what vpm made of $document is refused: $(cat "$work/said")"
  printf 'checked %s and its translation\n' "${document##*/}"
  examples=$((examples + 1))
done
((examples > 0)) || fail "there are no examples in $source/examples"

# A check that refuses nothing says nothing: a priority out of range has to be found in both.
sed 's/"priority": 20000/"priority": 9999/' "$source/examples/firewall.json" >"$work/wrong.json"
! validates "$work/wrong.json" || fail "a version-1 priority of 9999 is accepted"
sed 's/"priority": *20000/"priority":9999/' "$work/firewall.json" >"$work/wrong.json"
! validates "$work/wrong.json" || fail "a version-2 priority of 9999 is accepted"

exit $((failures > 0))
