#!/usr/bin/env bash
# usage: agent_test.sh SOURCE_DIR BUILD_DIR COMPILER LIBDIR
# An agent that knows nothing but what is installed: examples/agent builds, in a folder of its own,
# with CMake and with pkg-config, linked to the library and loading it, and lives its life to the
# end. With CMake it keeps its own symbols hidden, as many agents do.
set -euo pipefail

source=$1
build=$2
compiler=$3
libdir=$4
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
prefix=$scratch/installed
failures=0

fail() {
  printf 'FAILED: %s\n' "$*"
  failures=$((failures + 1))
}

quietly() { "$@" >"$scratch/said" 2>&1 || { cat "$scratch/said" && echo "FAILED: $*" && exit 1; }; }

quietly cmake --install "$build" --prefix "$prefix"
cp -r "$source/examples/agent" "$scratch/agent"
cp -r "$source/examples/agent" "$scratch/agent-make"
# The libraries of the build tree are out of reach too.
readonly flags='-Wall -Wextra -Wpedantic -Werror -MMD'

cd "$scratch/agent"
quietly cmake -S . -B built -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER="$compiler" \
  -DCMAKE_CXX_FLAGS="$flags -fvisibility=hidden -fvisibility-inlines-hidden"
quietly cmake --build built --parallel 2
cd "$scratch/agent-make"
export PKG_CONFIG_PATH=$prefix/$libdir/pkgconfig
quietly make --jobs=2 CXX="$compiler" CXXFLAGS="$flags" LDFLAGS="-Wl,-rpath,$prefix/$libdir"

# What was compiled came from the scratch folder and the system.
! find "$scratch" -name '*.d' -exec grep -HF -e "$source/" -e "$build/" {} + ||
  fail "the agent was compiled with files of the source or the build tree"
[[ $(find "$scratch" -name '*.d' | wc -l) -ge 6 ]] || fail "nobody knows what was compiled"

expected="rule 20000 of net-red begins with 10.1.0.0/16
rule 20000 of net-red gains 10.2.0.0/16
rule 20000 of net-red loses 10.1.0.0/16
interface 192.0.2.1 of net-red reaches 1 subnet
refused: Kel::String::bytes > maxLength() not allowed
ZARN_MOUNT_TIMEOUT: agent is unable to mount from server /vela/policy.
stopped, with 0 policy sets and 0 devices in version 2
objects left: 0"
export LD_LIBRARY_PATH=$prefix/$libdir
for built in "$scratch/agent/built" "$scratch/agent-make"; do
  for agent in linked loaded; do
    printed=$(timeout 20 "$built/$agent") || fail "${built##*/}/$agent ended with exit code $?"
    [[ $printed == "$expected" ]] || fail "${built##*/}/$agent printed:"$'\n'"$printed"
  done
  [[ $("$built/first") == 'rule 20000 of net-red: 10.1.0.0/16' ]] || fail "${built##*/}/first"
  ! ldd "$built/loaded" | grep velapolicytranslate || fail "what loads the library is linked to it"
done
printf '%s\n' "$printed"

exit $((failures > 0))
