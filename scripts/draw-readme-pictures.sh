#!/bin/bash
# Makes the pictures of docs/images again, from the program itself: builds the dev preset, plays the demo (two minutes), draws
# the gallery, and photographs the windows. Needs ImageMagick. usage: draw-readme-pictures.sh [demo|gallery|windows]...
set -eu
cd "$(dirname "$0")/.."
[ $# -gt 0 ] || set -- demo gallery windows
images=$PWD/docs/images
scratch=$(mktemp -d "${TMPDIR:-/tmp}/nibbo-pictures-XXXXXX")
trap 'rm -rf "$scratch"' EXIT
mkdir -p "$images"

light='#dce4ee' dark='#262a38'
# Few colours and no dithering: drawings lose nothing by it, and take a third of the room.
reduced=(-strip -dither None -colors 160 -define png:compression-level=9)

# The recording's pictures come at an even pace over the story's 120 seconds.
story=120
frames=()
record_demo() {
  scripts/build.sh dev nibbo >/dev/null
  timeout 300 tests/support/with-desktop.sh build/dev/bin/nibbo --demo --record "$scratch/demo"
  mapfile -t frames < <(find "$scratch/demo" -name '[0-9]*.png' | sort)
  [ ${#frames[@]} -gt 100 ] || { echo "the demo left only ${#frames[@]} pictures" >&2; exit 1; }
}
# The pictures from one second of the story to another.
between() {
  local at=$(($1 * ${#frames[@]} / story / 10)) end=$(($2 * ${#frames[@]} / story / 10))
  printf '%s\n' "${frames[@]:at:end-at}"
}

# The bubble's window is wider for a card: every picture is put on ground of one size, feet on one line.
draw_demo() {
  record_demo
  # Tenths of seconds: thinking, searching, reading, git, the web, the plan, editing, tests, the card, building, the answer, rest.
  local moments=(62 76 96 110 130 144 206 220 262 276 300 314 384 400 420 434 468 496 512 524 815 840 1000 1016)
  local chosen=() at
  for ((at = 0; at < ${#moments[@]}; at += 2)); do
    mapfile -t -O ${#chosen[@]} chosen < <(between "${moments[at]}" "${moments[at + 1]}")
  done
  convert -delay 12 -loop 0 -dispose None -background "$light" "${chosen[@]}" \
    -gravity South -extent 304x350 -alpha remove -alpha off \
    +dither -colors 64 -layers Optimize "$images/at-work.gif"

  # Four moments side by side, two of them on a dark wallpaper.
  local pieces=() ground=$light second
  for second in 102 310 485 830; do
    [ "$second" -lt 400 ] || ground=$dark
    convert "$(between "$second" $((second + 5)) | head -1)" -background "$ground" -gravity South \
      -extent 320x350 -alpha remove -alpha off "$scratch/moment-$second.png"
    pieces+=("$scratch/moment-$second.png")
  done
  convert "${pieces[@]}" +append "${reduced[@]}" "$images/running.png"
}

draw_gallery() {
  scripts/build.sh dev nibbo >/dev/null
  build/dev/bin/nibbo --gallery "$scratch/gallery" >/dev/null 2>&1
  local name
  for name in states-light states-dark bubble-en-light bubble-zh-dark card-en-light card-zh-dark; do
    convert "$scratch/gallery/$name.png" "${reduced[@]}" "$images/$name.png"
  done
}

# The tests of the windows leave pictures of every page where they are told to. Kept are the two farthest apart, English on
# light and Chinese on dark, and the whole of a page that scrolls.
draw_windows() {
  local test
  for test in settings_window_test onboarding-tests; do
    scripts/build.sh dev "$test" >/dev/null
    NIBBO_PICTURES=$scratch/windows QT_QPA_PLATFORM=offscreen "build/dev/tests/$test" --gtest_filter='*icture*' >/dev/null 2>&1
  done
  local picture name
  for picture in "$scratch"/windows/*-{en-light,zh-dark}@1.png "$scratch"/windows/*-en-light@1-whole.png; do
    name=$(basename "$picture" .png)
    case $name in *-installing-*) continue ;; esac
    convert "$picture" "${reduced[@]}" "$images/window-${name/@1/}.png"
  done
}

for what in "$@"; do
  case $what in
    demo | gallery | windows) "draw_$what" ;;
    *) echo "usage: draw-readme-pictures.sh [demo|gallery|windows]..." >&2; exit 2 ;;
  esac
done
du -sh "$images"
