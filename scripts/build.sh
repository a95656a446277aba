#!/bin/bash
# Builds a preset (release unless told otherwise) with everything it needs. usage: build.sh [PRESET] [TARGET...]
set -eu
cd "$(dirname "$0")/.."
preset=${1:-release}
[ $# -eq 0 ] || shift
scripts/install-packages.sh
# Every checkout shares the compiler's cache, wherever it lies.
export CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1
cmake --preset "$preset" >"/tmp/nibbo-configure-$$.log" 2>&1 || { cat "/tmp/nibbo-configure-$$.log"; exit 1; }
rm -f "/tmp/nibbo-configure-$$.log"
targets=()
for target in "$@"; do targets+=(--target "$target"); done
cmake --build --preset "$preset" "${targets[@]}"
