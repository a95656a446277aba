#!/bin/bash
# Runs the fuzz target over a corpus made of the captured payloads. usage: run.sh [SECONDS]
# What it finds stays in build/fuzz/findings.
set -eu
cd "$(dirname "$0")/../.."
seconds=${1:-600}
corpus=build/fuzz/corpus findings=build/fuzz/findings
mkdir -p "$corpus" "$findings"
# The two bytes in front choose an agent and an event; every payload is tried under several.
number=0
for payload in tests/bridge/payloads/*/*.json; do
  number=$((number + 1))
  for choice in $((number % 250)) $((number * 7 % 250)); do
    name=$(printf 'seed-%04d-%03d' "$number" "$choice")
    # shellcheck disable=SC2059
    { printf "\\x$(printf %02x "$choice")\\x0f"; cat "$payload"; } >"$corpus/$name"
  done
done
exec build/fuzz/tests/bridge_fuzz "$corpus" -artifact_prefix="$findings/" -max_total_time="$seconds" -max_len=200000 \
  -timeout=10 -rss_limit_mb=512 -print_final_stats=1
