#!/bin/bash
# Checks everything: formatting, the sanitizers' builds, clang-tidy, and all tests. --quick: the dev preset's tests alone.
set -eu
cd "$(dirname "$0")/.."
quick=0
case "${1:-}" in
  "") ;;
  --quick) quick=1 ;;
  *) echo "usage: test.sh [--quick]" >&2; exit 2 ;;
esac

say() { printf '\n== %s (after %d s)\n' "$1" "$SECONDS"; }
# A desktop test on a loaded machine may be unlucky once; a fault is not.
run_tests() { ctest --preset "$1" --output-on-failure --repeat until-pass:3 "${@:2}"; }

if [ "$quick" = 0 ]; then
  scripts/install-packages.sh
  say "formatting"
  git ls-files '*.h' '*.cpp' | tr '\n' '\0' | xargs -0 clang-format --dry-run -Werror
  say "address and undefined-behaviour sanitizers"
  scripts/build.sh asan
  run_tests asan -LE 'desktop|slow' -j2
  say "thread sanitizer"
  scripts/build.sh tsan threads_tests
  run_tests tsan -L threads
fi
say "dev preset"
scripts/build.sh dev
if [ "$quick" = 0 ]; then
  say "clang-tidy"
  scripts/tidy.sh
fi
say "tests"
run_tests dev -j2
