#!/bin/bash
# Builds Nibbo and starts it. Where there is no display, plays the demo on a private one and says where the pictures are.
set -eu
cd "$(dirname "$0")/.."
scripts/build.sh release
if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
  exec build/release/bin/nibbo "$@"
fi
pictures=${NIBBO_PICTURES:-$PWD/build/demo}
mkdir -p "$pictures"
echo "There is no display here: the demo plays on a private one, in about two minutes."
tests/support/with-desktop.sh build/release/bin/nibbo --demo --record "$pictures"
echo "Pictures of it: $pictures"
