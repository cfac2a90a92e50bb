#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# `tarnwell DIR` under Xvfb: the folder is imported and the top bar appears; a
# file copied into DIR afterwards shows "1 new song added"; Space toggles
# playback (seen over MPRIS with playerctl).
# Usage: e2e_shell.sh PATH/TO/tarnwell   (run through tests/support/isolated.sh)
set -euo pipefail
app=$1

for tool in Xvfb xdotool import convert sox; do
  command -v "$tool" > /dev/null || { echo "SKIP: $tool is missing"; exit 77; }
done
# A private session bus, so that MPRIS can be checked without touching the user's.
if [ -z "${TARNWELL_E2E_BUS:-}" ] && command -v dbus-run-session > /dev/null; then
  TARNWELL_E2E_BUS=1 exec dbus-run-session -- bash "$0" "$@"
fi

work=$(mktemp -d "${TARNWELL_TEST_ROOT:-${TMPDIR:-/tmp}}/e2e.XXXXXX")
xvfb_pid=""
app_pid=""
cleanup() {
  [ -n "$app_pid" ] && kill "$app_pid" 2> /dev/null || true
  [ -n "$xvfb_pid" ] && kill "$xvfb_pid" 2> /dev/null || true
}
trap cleanup EXIT INT TERM
fail() {
  echo "FAIL: $*"
  echo "--- program log"
  cat "$work/log" || true
  exit 1
}

# shellcheck source=/dev/null
source "$(dirname "${BASH_SOURCE[0]}")/../../scripts/lib/xvfb.sh"
start_xvfb "$work"
export QT_QPA_PLATFORM=xcb
export QT_LOGGING_RULES="tarnwell.app.debug=true"

music="$work/music"
mkdir -p "$music/Album"
sox -n -r 44100 -c 2 -b 16 "$music/Album/01 First.flac" synth 3 sine 440 2> /dev/null
sox -n -r 44100 -c 2 -b 16 "$music/Album/02 Second.flac" synth 3 sine 550 2> /dev/null

# The share of pixels of one colour (within 3 %) in a rectangle of a screenshot.
share() { # file colour width height x y
  convert "$1" -crop "$3x$4+$5+$6" +repage -fuzz 3% -fill black +opaque "$2" -fill white -opaque "$2" \
    -format '%[fx:mean]' info:
}
at_least() { awk -v a="$1" -v b="$2" 'BEGIN { exit !(a >= b) }'; }
wait_for_log() { # pattern seconds
  for _ in $(seq $(($2 * 10))); do grep -q "$1" "$work/log" && return 0; sleep 0.1; done
  return 1
}

"$app" "$music" 2> "$work/log" &
app_pid=$!
wait_for_window || fail "no window"
wait_for_log 'audio files, 2 new' 10 || fail "the folder was not imported"
echo "ok: the folder given on the command line was imported"

# The top bar: with songs in the library the lime "Import Music" button sits
# at the right end (noir theme).
xdotool mousemove --window "$window" 1 690
sleep 1.2
import -window "$window" "$work/imported.png"
lime=$(share "$work/imported.png" '#E3F794' 220 45 780 15)
at_least "$lime" 0.2 || fail "no import button in the top bar (lime share $lime)"
echo "ok: the top bar shows its buttons (lime share $lime)"

cp "$music/Album/01 First.flac" "$music/Album/03 Third.flac"
wait_for_log 'banner: "1 new song added"' 10 || fail "no banner for the copied file"
sleep 0.6
import -window "$window" "$work/banner.png"
banner=$(share "$work/banner.png" '#E3F794' 200 60 430 630)
at_least "$banner" 0.2 || fail "the banner is not on screen (lime share $banner)"
echo "ok: \"1 new song added\" is shown at the bottom (lime share $banner)"

# Space toggles playback, which MPRIS reports. Without the player on the bus
# there is nothing to toggle yet.
if command -v playerctl > /dev/null && playerctl -l 2> /dev/null | grep -q tarnwell; then
  # "All Songs" in the sidebar, then a click on the first song plays it.
  xdotool mousemove --window "$window" 70 130 click 1
  sleep 0.5
  xdotool mousemove --window "$window" 500 175 click 1
  for _ in $(seq 30); do
    [ "$(playerctl -p tarnwell status 2> /dev/null)" = Playing ] && break
    sleep 0.1
  done
  before=$(playerctl -p tarnwell status 2> /dev/null || echo none)
  [ "$before" = Playing ] || fail "a click on the first song did not play it ($before)"
  title=$(playerctl -p tarnwell metadata xesam:title 2> /dev/null || true)
  [ "$title" = "01 First" ] || fail "MPRIS shows the title \"$title\", not \"01 First\""
  echo "ok: a click on the first song plays \"$title\""
  xdotool windowfocus --sync "$window" 2> /dev/null || true
  xdotool key --window "$window" space
  after=""
  for _ in $(seq 30); do
    after=$(playerctl -p tarnwell status 2> /dev/null || echo none)
    [ "$after" != "$before" ] && break
    sleep 0.1
  done
  [ "$after" = Paused ] || fail "Space did not pause playback ($before -> $after)"
  echo "ok: Space toggled playback ($before -> $after)"
elif [ -n "${TARNWELL_E2E_BUS:-}" ] && command -v playerctl > /dev/null; then
  fail "the program is not on the session bus as an MPRIS player"
else
  echo "note: no session bus or playerctl; playback was not checked"
fi
echo "PASS"
