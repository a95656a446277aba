#!/bin/bash
# Installs the build into a scratch folder and uses it from there: what an installed Nibbo needs must have come along.
# usage: installation.sh BUILD_DIRECTORY
set -eu
build=$1
scratch=$(mktemp -d "${TMPDIR:-/tmp}/nibbo-installation-XXXXXX")
trap 'rm -rf "$scratch"' EXIT
prefix="$scratch/a prefix"
export HOME=$scratch/home XDG_CONFIG_HOME='' XDG_RUNTIME_DIR=$scratch/run QT_QPA_PLATFORM=offscreen
mkdir -m 700 "$HOME" "$XDG_RUNTIME_DIR"
failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }

cmake --install "$build" --prefix "$prefix" >"$scratch/install.log" || { cat "$scratch/install.log"; exit 1; }

for file in bin/nibbo libexec/nibbo/nibbo-bridge libexec/nibbo/nibbo-cleaner; do
  [ -x "$prefix/$file" ] || fail "$file is no program"
done
for file in share/nibbo/pets/{nibbo,furli,template}/pack.json share/nibbo/icons/{nibbo,MenuBarIcon,NibboMascot}.svg \
  share/doc/nibbo/LICENSE share/doc/nibbo/copyright; do
  [ -s "$prefix/$file" ] || fail "$file is missing"
done
[ -z "$(find "$prefix" -type l -o -name '*.qrc')" ] || fail "links or sources were installed"

# The desktop finds the program and the picture by the names in the entry.
entry=$prefix/share/applications/nibbo.desktop
[ -x "$prefix/bin/$(sed -n 's/^Exec=//p' "$entry")" ] || fail "the desktop entry starts nothing"
[ -s "$prefix/share/icons/hicolor/scalable/apps/$(sed -n 's/^Icon=//p' "$entry").svg" ] || fail "the desktop entry has no icon"

"$prefix/bin/nibbo" --version | grep -Eq '^nibbo [0-9]+\.[0-9]+\.[0-9]+$' || fail "no version"
"$prefix/bin/nibbo" --gallery "$scratch/gallery" >/dev/null || fail "no gallery"
# A sheet of states without its pets would be nearly empty.
[ "$(stat -c %s "$scratch/gallery/states-light.png")" -gt 100000 ] || fail "the gallery has no pets"

# The hooks lead to this installation, also through a path with blanks.
"$prefix/bin/nibbo" --install-hooks | grep -qx 'nibbo: install-hooks OK' || fail "no hooks"
grep -qF "$prefix" "$HOME/.nibbo/bin/nibbo-bridge" || fail "the launcher does not know the prefix"
cmp -s "$prefix/libexec/nibbo/nibbo-cleaner" "$HOME/.nibbo/bin/nibbo-cleaner" || fail "the cleaner was not put beside the launcher"
[ "$("$HOME/.nibbo/bin/nibbo-bridge" --version)" = "nibbo-bridge $("$prefix/bin/nibbo" --version | cut -d' ' -f2)" ] ||
  fail "the launcher does not reach the helper"

exit $((failures > 0))
