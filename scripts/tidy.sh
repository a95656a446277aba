#!/bin/bash
# clang-tidy over our own sources as the dev preset compiles them. usage: tidy.sh [FILE...]
set -eu
cd "$(dirname "$0")/.."
files=("$@")
[ ${#files[@]} -gt 0 ] || mapfile -t files < <(git ls-files 'src/*.cpp')
log=$(mktemp)
trap 'rm -f "$log"' EXIT
# GCC's own warning flags mean nothing to clang.
if ! printf '%s\0' "${files[@]}" |
  xargs -0 -n 4 -P "$(nproc)" clang-tidy -p build/dev --quiet --extra-arg=-Wno-unknown-warning-option >"$log" 2>/dev/null; then
  cat "$log"
  exit 1
fi
