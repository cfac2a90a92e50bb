#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# One Tarnwell per session (Xvfb, a private session bus): later starts hand
# their folder or song to the running window and exit; checked over D-Bus.
# Usage: single_instance.sh PATH/TO/tarnwell   (run through tests/support/isolated.sh)
set -euo pipefail
# shellcheck source=tests/e2e/session.sh
source "$(dirname "${BASH_SOURCE[0]}")/../e2e/session.sh" "$@"

# One lasts a second, so that the library moves on to the next song soon.
music="$work/music"
for song in First/One:1 Second/Two:3 Third/Three:3; do
  mkdir -p "$music/${song%/*}"
  sox -n -r 44100 -c 2 -b 16 "$music/${song%:*}.flac" synth "${song#*:}" sine 440 2> /dev/null
done

playing() { mpris metadata xesam:title; }
is_playing() { [ "$(playing)" = "$1" ] && [ "$(mpris status)" = Playing ]; }
windows() { xdotool search --onlyvisible --name '^Tarnwell$' 2> /dev/null | wc -l; }
# Runs a later start, which must hand over and exit by itself.
second_start() {
  timeout 30 "$app" "$@" > "$work/second.log" 2>&1 || fail "the later start $* failed: $(cat "$work/second.log")"
}

launch "$music/First/One.flac"
wait_until is_playing One || fail "tarnwell SONG did not play it (playing: \"$(playing)\")"
echo "ok: tarnwell SONG imports its folder and plays it"

second_start "$music/Second"
[ "$(windows)" -eq 1 ] || fail "$(windows) windows after the second start"
# First's only song ends after a second; without Second in the library it
# would start over, with it the library goes on to Two.
wait_until is_playing Two || fail "the second start's folder did not join the library (playing: \"$(playing)\")"
echo "ok: a second start with a folder imports it into the running window"

second_start "$music/Third/Three.flac"
wait_until is_playing Three || fail "the third start's song did not play (playing: \"$(playing)\")"
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
