#!/usr/bin/env bash
# usage: install_test.sh SOURCE_DIR BUILD_DIR LIBDIR
# What is installed is whole, and goes on to work after it was moved: no text of it names a path of
# the build or the place where it was first, the program finds its libraries and the libraries each
# other, and its manual page, its completions, the modules and the unit are good.
set -euo pipefail

source=$1
build=$2
libdir=$3
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
first=$scratch/first/usr
prefix=$scratch/second
failures=0

fail() {
  printf 'FAILED: %s\n' "$*"
  failures=$((failures + 1))
}

cmake --install "$build" --prefix "$first" >"$scratch/said" || { cat "$scratch/said" && exit 1; }
mv "$first" "$prefix"

for path in "$source" "$build" "$scratch/first"; do
  ! grep -rIlF -- "$path" "$prefix" || fail "the files above name $path"
done

version=$("$prefix/bin/vpm" --version) || fail "the program does not start"
printf '%s\n' "$version"
[[ $version == vpm\ [0-9]* ]] || fail "the program is of version \"$version\""
for library in velaframework velamodel velapolicytranslate; do
  file=$prefix/$libdir/lib$library.so
  soname=$(readelf -d "$file" | sed -nE 's/.*SONAME.*\[(.*)\]/\1/p')
  printf '%s\n' "$soname"
  [[ $soname =~ ^lib$library\.so\.[0-9]+$ ]] || fail "lib$library.so calls itself \"$soname\""
  [[ $(readlink -f "$prefix/$libdir/$soname") == "$prefix/$libdir/lib$library.so".*.*.* ]] ||
    fail "$soname does not lead to a library with a version"
  ! ldd "$file" | grep -E 'not found|libvela' | grep -vF "$prefix/" ||
    fail "lib$library.so does not find its neighbours"
done

for file in man/man1/vpm.1.gz bash-completion/completions/vpm zsh/site-functions/_vpm \
  fish/vendor_completions.d/vpm.fish; do
  [[ -s $prefix/share/$file ]] || fail "share/$file is missing"
done
yanglint -p "$prefix/share/yang" "$prefix"/share/yang/vela-*.yang || fail "the YANG modules"

# Where there is a systemd, it has an opinion about the unit.
unit=$prefix/lib/systemd/system/vpm-agent.service
grep -q '^ExecStart=vpm agent ' "$unit" || fail "the unit starts something else"
if command -v systemd-analyze >/dev/null; then
  sed "s#^ExecStart=vpm#ExecStart=$prefix/bin/vpm#; /^Documentation/d" "$unit" \
    >"$scratch/vpm-agent.service"
  said=$(systemd-analyze verify "$scratch/vpm-agent.service" 2>&1) || fail "the unit: $said"
  [[ -z $said ]] || fail "the unit: $said"
fi

exit $((failures > 0))
