#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# One Tarnwell per session, under Xvfb on a private session bus:
# - `tarnwell SONG` imports the song's folder and plays the song;
# - a second `tarnwell FOLDER` hands the folder to the running program and
#   exits; the running library goes on into that folder's songs;
# - a third `tarnwell SONG` plays that song in the running window;
# - there is one window throughout, and no action such as a new window.
# Everything is checked over D-Bus: the name's owner, and MPRIS with playerctl.
# Usage: single_instance.sh PATH/TO/tarnwell   (run through tests/support/isolated.sh)
set -euo pipefail
app=$1

for tool in Xvfb xdotool sox dbus-run-session gdbus playerctl; do
  command -v "$tool" > /dev/null || { echo "FAIL: $tool is missing (scripts/install-deps.sh installs it)"; exit 1; }
done
# Its own session bus, which ends with the script (and so does everything on it).
[ -n "${TARNWELL_TEST_BUS:-}" ] || TARNWELL_TEST_BUS=1 exec dbus-run-session -- bash "$0" "$@"

work=$(mktemp -d "${TARNWELL_TEST_ROOT:-${TMPDIR:-/tmp}}/single.XXXXXX")
# shellcheck source=/dev/null
source "$(dirname "${BASH_SOURCE[0]}")/../../scripts/lib/xvfb.sh"
start_xvfb "$work"
app_pid=""
trap 'kill $app_pid $xvfb_pid 2> /dev/null' EXIT
fail() {
  echo "FAIL: $*"
  echo "--- log of the first start"
  cat "$work/log"
  exit 1
}
export QT_QPA_PLATFORM=xcb QT_LOGGING_RULES="tarnwell.app.debug=true"

# A song of one second, so that the library moves on to the next one soon.
music="$work/music"
mkdir -p "$music/First" "$music/Second" "$music/Third"
sox -n -r 44100 -c 2 -b 16 "$music/First/One.flac" synth 1 sine 440 2> /dev/null
sox -n -r 44100 -c 2 -b 16 "$music/Second/Two.flac" synth 3 sine 550 2> /dev/null
sox -n -r 44100 -c 2 -b 16 "$music/Third/Three.flac" synth 3 sine 660 2> /dev/null

playing() { playerctl -p tarnwell metadata xesam:title 2> /dev/null || true; }
# Waits up to $2 seconds for the song named $1 to play.
wait_for_song() {
  for _ in $(seq $(($2 * 10))); do
    [ "$(playing)" = "$1" ] && [ "$(playerctl -p tarnwell status 2> /dev/null)" = Playing ] && return 0
    sleep 0.1
  done
  return 1
}
windows() { xdotool search --onlyvisible --name '^Tarnwell$' 2> /dev/null | wc -l; }
# Runs a later start, which must hand over and exit by itself.
second_start() {
  timeout 30 "$app" "$@" > "$work/second.log" 2>&1 || fail "the later start $* failed: $(cat "$work/second.log")"
}

"$app" "$music/First/One.flac" 2> "$work/log" &
app_pid=$!
wait_for_window || fail "no window"
wait_for_song One 20 || fail "tarnwell SONG did not play it (playing: \"$(playing)\")"
echo "ok: tarnwell SONG imports its folder and plays it"
gdbus call --session --dest org.freedesktop.DBus --object-path /org/freedesktop/DBus \
  --method org.freedesktop.DBus.GetNameOwner org.tarnwell.tarnwell > /dev/null ||
  fail "nobody owns org.tarnwell.tarnwell"

second_start "$music/Second"
[ "$(windows)" -eq 1 ] || fail "$(windows) windows after the second start"
# First's only song ends after a second; without Second in the library it
# would start over, with it the library goes on to Two.
wait_for_song Two 30 || fail "the second start's folder did not join the library (playing: \"$(playing)\")"
echo "ok: a second start with a folder imports it into the running window"

second_start "$music/Third/Three.flac"
wait_for_song Three 20 || fail "the third start's song did not play (playing: \"$(playing)\")"
[ "$(windows)" -eq 1 ] || fail "$(windows) windows after the third start"
echo "ok: a later start with a song plays it in the running window"

second_start
kill -0 "$app_pid" 2> /dev/null || fail "the first start ended"
[ "$(windows)" -eq 1 ] || fail "$(windows) windows after a start without arguments"
if gdbus call --session --dest org.tarnwell.tarnwell --object-path /org/tarnwell/tarnwell \
  --method org.freedesktop.Application.ActivateAction new-window '[]' '{}' > /dev/null 2>&1; then
  fail "the program offers an action \"new-window\""
fi
echo "ok: a start without arguments only raises the window; no other actions"
echo "PASS"
