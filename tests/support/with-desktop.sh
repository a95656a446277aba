#!/bin/bash
# Runs a command on a private X server with a session bus, a window manager and a compositor, and passes its exit status on.
# usage: with-desktop.sh [--no-wm] [--no-compositor] [--screen WxHxD] COMMAND...
set -u
wm=1 compositor=1 screen=1280x800x24
while [ $# -gt 0 ]; do
  case $1 in
    --no-wm) wm=0; compositor=0; shift ;;
    --no-compositor) compositor=0; shift ;;
    --screen) screen=$2; shift 2 ;;
    *) break ;;
  esac
done
for tool in Xvfb openbox picom dbus-daemon xprop; do
  command -v "$tool" >/dev/null || { echo "[skipped] $tool is not installed"; exit 0; }
done

scratch=$(mktemp -d "${TMPDIR:-/tmp}/nibbo-desktop-XXXXXX")
pids=()
finish() {
  for pid in "${pids[@]}"; do kill "$pid" 2>/dev/null; done
  for pid in "${pids[@]}"; do wait "$pid" 2>/dev/null; done
  rm -rf "$scratch"
}
trap finish EXIT

mkdir -m 700 "$scratch/run"
mkdir "$scratch/home"
export XDG_RUNTIME_DIR=$scratch/run HOME=$scratch/home NIBBO_TEST_DESKTOP=1 QT_QPA_PLATFORM=xcb
export XDG_CONFIG_HOME=$HOME/.config XDG_CACHE_HOME=$HOME/.cache XDG_DATA_HOME=$HOME/.local/share
unset WAYLAND_DISPLAY DBUS_SESSION_BUS_ADDRESS SESSION_MANAGER

# A bus that starts nothing by itself: what the tests need they start.
cat >"$scratch/bus.conf" <<CONF
<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig><type>session</type><listen>unix:path=$scratch/run/bus</listen><auth>EXTERNAL</auth>
<policy context="default"><allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/><allow own="*"/></policy>
</busconfig>
CONF
dbus-daemon --config-file="$scratch/bus.conf" --nofork --nopidfile 2>/dev/null &
pids+=($!)
export DBUS_SESSION_BUS_ADDRESS=unix:path=$scratch/run/bus

# Xvfb picks a free number itself and writes it when it listens. Without -noreset it starts over when the first client leaves.
started=0
for _ in 1 2 3; do
  : >"$scratch/display"
  Xvfb -displayfd 3 -screen 0 "$screen" -nolisten tcp -noreset 3>"$scratch/display" 2>"$scratch/xvfb.log" &
  server=$!
  for _ in $(seq 300); do
    [ -s "$scratch/display" ] && { started=1; break; }
    kill -0 "$server" 2>/dev/null || break
    sleep 0.1
  done
  [ "$started" = 1 ] && break
  kill "$server" 2>/dev/null; wait "$server" 2>/dev/null
done
[ "$started" = 1 ] || { echo "no X server started"; cat "$scratch/xvfb.log"; exit 1; }
pids=("$server" "${pids[@]}")
DISPLAY=:$(cat "$scratch/display")
export DISPLAY
for _ in $(seq 300); do [ -S "$scratch/run/bus" ] && break; sleep 0.1; done

if [ "$wm" = 1 ]; then
  openbox >/dev/null 2>&1 &
  pids=("$!" "${pids[@]}")
  for _ in $(seq 300); do
    xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q 'window id' && break
    sleep 0.1
  done
fi
if [ "$compositor" = 1 ]; then
  picom --config /dev/null --backend xrender >/dev/null 2>&1 &
  pids=("$!" "${pids[@]}")
fi
"$@"
