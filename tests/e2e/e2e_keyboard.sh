#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# The whole user story with the keyboard alone: after the folder chooser (the
# one click), every step is an xdotool key press. Import, play from the list,
# next, previous, seek, shuffle, Space, a playlist made and filled, a restart
# that finds it, a tag edit in the untagged screen and an album found by
# searching; each step checked by state (MPRIS, playlists.json, the files, the
# program's log).
# Usage: e2e_keyboard.sh PATH/TO/tarnwell   (run through tests/support/isolated.sh)
set -euo pipefail
app=$1

for tool in Xvfb xdotool sox metaflac playerctl dbus-run-session; do
  command -v "$tool" > /dev/null || { echo "FAIL: $tool is missing (scripts/install-deps.sh installs it)"; exit 1; }
done
if [ -z "${TARNWELL_E2E_BUS:-}" ]; then
  TARNWELL_E2E_BUS=1 exec dbus-run-session -- bash "$0" "$@"
fi

work=$(mktemp -d "${TARNWELL_TEST_ROOT:-${TMPDIR:-/tmp}}/keys.XXXXXX")
xvfb_pid=""
app_pid=""
trap '[ -n "$app_pid" ] && kill "$app_pid" 2> /dev/null; [ -n "$xvfb_pid" ] && kill "$xvfb_pid" 2> /dev/null; true' EXIT INT TERM
# shellcheck source=/dev/null
source "$(dirname "${BASH_SOURCE[0]}")/../../scripts/lib/xvfb.sh"
start_xvfb "$work"
export QT_QPA_PLATFORM=xcb QT_LOGGING_RULES="tarnwell.app.debug=true"
playlists="$XDG_DATA_HOME/Tarnwell/playlists.json"

fail() { echo "FAIL: $*"; echo "--- program log"; cat "$work/log" || true; exit 1; }
ok() { echo "ok: $*"; }
keys() { for k in "$@"; do xdotool key --window "$window" "$k"; sleep 0.15; done; }
# Polls until a command prints the expected text; prints what it saw last.
expect() { # want command...
  local want=$1 got=""
  shift
  for _ in $(seq 300); do
    got=$("$@" 2> /dev/null || true)
    [ "$got" = "$want" ] && return 0
    sleep 0.1
  done
  echo "$got"
  return 1
}
logged() { grep -c -- "$1" "$work/log" || true; }
title() { playerctl -p tarnwell metadata xesam:title; }
status() { playerctl -p tarnwell status; }
shuffle() { playerctl -p tarnwell shuffle; }
in_playlist() { # name: the file names of its songs
  /usr/bin/python3 -c 'import json, sys, urllib.parse
for p in json.load(open(sys.argv[1])):
    if p["name"] == sys.argv[2]:
        print(" ".join(urllib.parse.unquote(t["url"]).rsplit("/", 1)[-1] for t in p["tracks"]))' "$playlists" "$1"
}
launch() {
  : > "$work/log"
  "$app" "$@" 2> "$work/log" &
  app_pid=$!
  wait_for_window || fail "no window"
  xdotool windowfocus --sync "$window" 2> /dev/null || true
  expect 1 sh -c 'playerctl -l 2> /dev/null | grep -c tarnwell' > /dev/null || true
}
quit() { kill "$app_pid"; wait "$app_pid" 2> /dev/null || true; app_pid=""; }

library="$HOME/Music/Library"
song() { # folder file [artist album title]
  mkdir -p "$library/$1"
  sox -n -r 22050 -c 1 -b 16 "$library/$1/$2.flac" synth 30 sine 440 2> /dev/null
  [ $# -eq 2 ] || metaflac --set-tag="ARTIST=$3" --set-tag="ALBUM=$4" --set-tag="TITLE=$5" "$library/$1/$2.flac"
}
song "Nadia Lund/Harbour Songs" "01 Morning Light" "Nadia Lund" "Harbour Songs" "Morning Light"
song "Nadia Lund/Harbour Songs" "02 Glass River" "Nadia Lund" "Harbour Songs" "Glass River"
song "The Quiet Hours/Low Orbit" "01 Northern Line" "The Quiet Hours" "Low Orbit" "Northern Line"
song "Loose" "Demo take"
# The names the song list shows, in its order.
mapfile -t names < <("$(dirname "$app")/tarnwell-cli" scan "$library" | sed 's|.*/||; s|\.[^.]*$||')

# ---- The first run: Ctrl+O opens the chooser; its button is the one click ---
launch
# Ctrl+O opens the chooser at the Music folder, whose one folder is chosen
# already; both are tried again until the window has come up and taken them.
for _ in $(seq 20); do
  keys ctrl+o
  sleep 0.5
  xdotool mousemove --window "$window" 686 526 click 1
  sleep 0.5
  [ "$(logged "imported .*Library\": 4 audio files")" = 0 ] || break
done
expect 1 logged "imported .*Library\": 4 audio files, 4 new" > /dev/null || fail "the chosen folder was not imported"
ok "Ctrl+O opened the chooser and the folder was imported"

# ---- Playing from the list ---------------------------------------------------
keys ctrl+3 Return
got=$(expect "${names[0]}" title) || fail "Enter in the song list played \"$got\", not \"${names[0]}\""
keys Down Down Return
got=$(expect "${names[2]}" title) || fail "↓ ↓ Enter played \"$got\", not \"${names[2]}\""
keys End Return
got=$(expect "${names[3]}" title) || fail "End Enter played \"$got\", not \"${names[3]}\""
keys Home Return
got=$(expect "${names[0]}" title) || fail "Home Enter played \"$got\", not \"${names[0]}\""
ok "the list plays its current song with Enter after ↓, End and Home"

keys ctrl+Right
got=$(expect "${names[1]}" title) || fail "Ctrl+→ played \"$got\", not \"${names[1]}\""
keys ctrl+Left
got=$(expect "${names[0]}" title) || fail "Ctrl+← played \"$got\", not \"${names[0]}\""
ok "Ctrl+→ and Ctrl+← skip forward and back"
keys ctrl+s
got=$(expect On shuffle) || fail "shuffle is \"$got\" after Ctrl+S"
keys ctrl+s
got=$(expect Off shuffle) || fail "shuffle is \"$got\" after a second Ctrl+S"
ok "Ctrl+S turns shuffling on and off"
keys space
got=$(expect Paused status) || fail "Space left playback \"$got\""
# The arrows seek once the list has let go of the focus (Tab goes on to the bar).
keys Tab Right Right
position=$(playerctl -p tarnwell position)
awk -v p="$position" 'BEGIN { exit !(p >= 9.5 && p < 20) }' || fail "→ → moved to $position s, not 10 s"
keys space
got=$(expect Playing status) || fail "a second Space left playback \"$got\""
ok "Space pauses and plays; → seeks 5 s ($position s after two)"

# ---- A playlist, filled from the list's menu ---------------------------------
keys ctrl+n
xdotool type --delay 40 "Road Trip"
keys Return
expect 1 grep -c '"name": *"Road Trip"' "$playlists" > /dev/null || fail "playlists.json has no \"Road Trip\""
keys ctrl+3 Down shift+F10 Down Return
expect 1 logged 'banner: "Added to Road Trip"' > /dev/null || fail "no \"Added to Road Trip\""
[ "$(in_playlist "Road Trip")" = "${names[1]}.flac" ] || fail "Road Trip holds \"$(in_playlist "Road Trip")\""
ok "Ctrl+N made \"Road Trip\"; Shift+F10 on a song added it"
quit

# ---- A restart: the playlist, opened from the sidebar ------------------------
launch
# From the list, back past its Import button to the last playlist.
keys ctrl+3 shift+Tab shift+Tab Return
expect 1 logged 'playlist: "Road Trip", 1 songs' > /dev/null || fail "the playlist did not open with its song"
ok "after a restart, Shift+Tab reaches \"Road Trip\" and Enter opens it"
quit

# ---- Tags: the untagged song edited with the keyboard ------------------------
launch # the library's folder is imported again at start
expect 1 logged "imported .*: 4 audio files" > /dev/null || fail "the folder was not imported"
keys ctrl+4 Return
sleep 0.5
xdotool type --delay 30 "Demo"
keys Tab
xdotool type --delay 30 "Nadia Lund"
keys Tab
xdotool type --delay 30 "Sketches"
keys Return
expect 1 logged "untagged: saved 1 files, 0 songs left" > /dev/null || fail "the tags were not saved"
demo="$library/Loose/Demo take.flac"
for tag in TITLE=Demo "ARTIST=Nadia Lund" ALBUM=Sketches; do
  metaflac --show-tag="${tag%%=*}" "$demo" | grep -qx "$tag" || fail "$demo lacks $tag"
done
ok "Ctrl+4, Enter, the fields and Enter saved the tags"

# ---- Search: ↓ and Enter from the field --------------------------------------
keys ctrl+f
xdotool type --delay 60 "low orb"
sleep 0.5
keys Down Return
expect 1 logged 'artist: "The Quiet Hours", album: "Low Orbit"' > /dev/null || fail "the album did not open"
ok "Ctrl+F, \"low orb\", ↓ and Enter open The Quiet Hours at Low Orbit"
quit
echo PASS
