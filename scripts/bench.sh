#!/bin/bash
# Builds the release preset and runs the benchmarks, each of which prints a table with its ratios. usage: bench.sh [NAME...]
set -eu
cd "$(dirname "$0")/.."
scripts/build.sh release
for benchmark in build/release/benchmarks/*; do
  if [ ! -f "$benchmark" ] || [ ! -x "$benchmark" ]; then continue; fi
  name=$(basename "$benchmark")
  case " $* " in
    *" $name "*|"  ") ;;
    *) continue ;;
  esac
  # What helps a benchmark to have a peer is not run by itself.
  case $name in *-floor|*-peer) continue ;; esac
  printf '\n== %s\n' "$name"
  case $name in
    PetBenchmark*|StartBenchmark*) tests/support/with-desktop.sh "$benchmark" ;;
    *) "$benchmark" ;;
  esac
done
