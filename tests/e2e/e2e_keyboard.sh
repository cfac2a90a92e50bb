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
# shellcheck source=tests/e2e/session.sh
source "$(dirname "${BASH_SOURCE[0]}")/session.sh" "$@"

keys() { for k in "$@"; do xdotool key --window "$window" "$k"; sleep 0.15; done; }
song "Nadia Lund/Harbour Songs" "01 Morning Light" "Nadia Lund" "Harbour Songs" "Morning Light"
song "Nadia Lund/Harbour Songs" "02 Glass River" "Nadia Lund" "Harbour Songs" "Glass River"
song "The Quiet Hours/Low Orbit" "01 Northern Line" "The Quiet Hours" "Low Orbit" "Northern Line"
song "Loose" "Demo take"
list_names

# ---- The first run: Ctrl+O opens the chooser; its button is the one click ---
launch
# Ctrl+O opens the chooser at the Music folder, whose one folder is chosen
# already; both are tried again until the window has come up and taken them.
for _ in $(seq 20); do
  keys ctrl+o
  sleep 0.5
  xdotool mousemove --window "$window" 686 526 click 1
  sleep 0.5
  grep -q "imported .*Library\": 4 audio files" "$work/log" && break
done
wait_for_log "imported .*Library\": 4 audio files, 4 new" || fail "the chosen folder was not imported"
ok "Ctrl+O opened the chooser and the folder was imported"

# ---- Playing from the list ---------------------------------------------------
keys ctrl+3 Return
got=$(expect "${names[0]}" mpris metadata xesam:title) || fail "Enter in the song list played \"$got\", not \"${names[0]}\""
keys Down Down Return
got=$(expect "${names[2]}" mpris metadata xesam:title) || fail "↓ ↓ Enter played \"$got\", not \"${names[2]}\""
keys End Return
got=$(expect "${names[3]}" mpris metadata xesam:title) || fail "End Enter played \"$got\", not \"${names[3]}\""
keys Home Return
got=$(expect "${names[0]}" mpris metadata xesam:title) || fail "Home Enter played \"$got\", not \"${names[0]}\""
ok "the list plays its current song with Enter after ↓, End and Home"

keys ctrl+Right
got=$(expect "${names[1]}" mpris metadata xesam:title) || fail "Ctrl+→ played \"$got\", not \"${names[1]}\""
keys ctrl+Left
got=$(expect "${names[0]}" mpris metadata xesam:title) || fail "Ctrl+← played \"$got\", not \"${names[0]}\""
ok "Ctrl+→ and Ctrl+← skip forward and back"
keys ctrl+s
got=$(expect On mpris shuffle) || fail "shuffle is \"$got\" after Ctrl+S"
keys ctrl+s
got=$(expect Off mpris shuffle) || fail "shuffle is \"$got\" after a second Ctrl+S"
ok "Ctrl+S turns shuffling on and off"
keys space
got=$(expect Paused mpris status) || fail "Space left playback \"$got\""
# The arrows seek once the list has let go of the focus (Tab goes on to the bar).
keys Tab Right Right
seeked() { position=$(mpris position); awk -v p="$position" 'BEGIN { exit !(p >= 9.5 && p < 20) }'; }
wait_until seeked || fail "→ → moved to $position s, not 10 s"
keys space
got=$(expect Playing mpris status) || fail "a second Space left playback \"$got\""
ok "Space pauses and plays; → seeks 5 s ($position s after two)"

# ---- A playlist, filled from the list's menu ---------------------------------
keys ctrl+n
xdotool type --delay 40 "Road Trip"
keys Return
wait_until grep -q '"name": *"Road Trip"' "$playlists" || fail "playlists.json has no \"Road Trip\""
keys ctrl+3 Down shift+F10 Down Return
wait_for_log 'banner: "Added to Road Trip"' || fail "no \"Added to Road Trip\""
[ "$(in_playlist "Road Trip")" = "${names[1]}.flac" ] || fail "Road Trip holds \"$(in_playlist "Road Trip")\""
ok "Ctrl+N made \"Road Trip\"; Shift+F10 on a song added it"
quit

# ---- A restart: the playlist, opened from the sidebar ------------------------
launch
# From the list, back past its Import button to the last playlist.
keys ctrl+3 shift+Tab shift+Tab Return
wait_for_log 'playlist: "Road Trip", 1 songs' || fail "the playlist did not open with its song"
ok "after a restart, Shift+Tab reaches \"Road Trip\" and Enter opens it"
quit

# ---- Tags: the untagged song edited with the keyboard ------------------------
launch # the library's folder is imported again at start
wait_for_log "imported .*: 4 audio files" || fail "the folder was not imported"
keys ctrl+4
wait_for_log "untagged: 1 songs missing tags" || fail "the untagged screen did not list the song"
keys Return
wait_for_log "untagged: editing 1 songs" || fail "Enter did not open the editor"
xdotool type --delay 30 "Demo"
keys Tab
xdotool type --delay 30 "Nadia Lund"
keys Tab
xdotool type --delay 30 "Sketches"
keys Return
wait_for_log "untagged: saved 1 files, 0 songs left" || fail "the tags were not saved"
demo="$library/Loose/Demo take.flac"
for tag in TITLE=Demo "ARTIST=Nadia Lund" ALBUM=Sketches; do
  metaflac --show-tag="${tag%%=*}" "$demo" | grep -qx "$tag" || fail "$demo lacks $tag"
done
ok "Ctrl+4, Enter, the fields and Enter saved the tags"

# ---- Search: ↓ and Enter from the field --------------------------------------
keys ctrl+f
xdotool type --delay 60 "low orb"
wait_for_log 'search: "low orb"' || fail "the search field did not take \"low orb\""
keys Down Return
wait_for_log 'artist: "The Quiet Hours", album: "Low Orbit"' || fail "the album did not open"
ok "Ctrl+F, \"low orb\", ↓ and Enter open The Quiet Hours at Low Orbit"
quit
echo PASS
