#!/usr/bin/env bash
# usage: install_test.sh SOURCE_DIR BUILD_DIR COMPILER LIBDIR
# What is installed is whole: the agent of the examples compiles with the installed headers alone,
# links and runs with the installed libraries, and the installed program finds them by itself. Its
# manual page and completions are there.
set -euo pipefail

source=$1
build=$2
compiler=$3
libdir=$4
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT

cmake --install "$build" --prefix "$prefix" >"$prefix/said" || { cat "$prefix/said" && exit 1; }

"$compiler" -std=c++20 -Wall -Wextra -Wpedantic -Werror "$source/examples/agent.cpp" \
  -I "$prefix/include/velapolicytranslate" -o "$prefix/agent" -L "$prefix/$libdir" \
  -lvelapolicytranslate -lvelamodel -lvelaframework -Wl,-rpath,"$prefix/$libdir"
printed=$("$prefix/agent")
printf '%s\n' "$printed"
[[ $printed == 'rule 20000 of net-red: 10.1.0.0/16' ]] || { echo 'FAILED: the agent' && exit 1; }

version=$("$prefix/bin/vpm" --version)
printf '%s\n' "$version"
[[ $version == vpm\ [0-9]* ]] || { echo 'FAILED: the program' && exit 1; }

for file in man/man1/vpm.1 bash-completion/completions/vpm zsh/site-functions/_vpm \
  fish/vendor_completions.d/vpm.fish; do
  [[ -s $prefix/share/$file ]] || { echo "FAILED: share/$file" && exit 1; }
done

yanglint -p "$prefix/share/yang" "$prefix"/share/yang/vela-*.yang
