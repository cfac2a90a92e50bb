#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# The whole program as a person uses it, under Xvfb and driven with xdotool,
# from the first-run welcome to an album found by searching. Every step waits
# for and is checked by state (MPRIS, the files, playlists.json, the program's
# log, the window's pixels) and leaves a screenshot in $TARNWELL_E2E_ARTEFACTS.
# Usage: e2e_program.sh PATH/TO/tarnwell   (run through tests/support/isolated.sh)
set -euo pipefail
command -v import > /dev/null && command -v convert > /dev/null || { echo "FAIL: ImageMagick is missing"; exit 1; }
# shellcheck source=tests/e2e/session.sh
source "$(dirname "${BASH_SOURCE[0]}")/session.sh" "$@"
artefacts=$(mkdir -p "${TARNWELL_E2E_ARTEFACTS:-e2e-artefacts}" && cd "${TARNWELL_E2E_ARTEFACTS:-e2e-artefacts}" && pwd)
config="$XDG_CONFIG_HOME/Tarnwell/Tarnwell.conf"

# The first album's folder and the loose song's are named in Latin-1, not UTF-8,
# as on disks filled by older systems: the song clicked first and the one tagged
# in the window are found by their exact names.
harbour=$'Nadia Lund/Harbour S\xf6ngs'
loose=$'Lo\xf6se'
song "$harbour" "01 Morning Light" "Nadia Lund" "Harbour Songs" "Morning Light"
song "$harbour" "02 Glass River" "Nadia Lund" "Harbour Songs" "Glass River"
song "The Quiet Hours/Low Orbit" "01 Northern Line" "The Quiet Hours" "Low Orbit" "Northern Line"
song "The Quiet Hours/Low Orbit" "02 Static Bloom" "The Quiet Hours" "Low Orbit" "Static Bloom"
song "$loose" "Demo take"
list_names
[ ${#names[@]} -eq 5 ] || fail "the library should list 5 songs, not ${#names[@]}"

step=0
shot() {
  step=$((step + 1))
  import -window "$window" "$artefacts/$(printf '%02d' "$step")-$1.png"
}
# The share of pixels of one colour (within 3 %) in a rectangle of a screenshot.
share() { # colour width height x y
  import -window "$window" "$work/probe.png"
  convert "$work/probe.png" -crop "$2x$3+$4+$5" +repage -fuzz 3% -fill black +opaque "$1" \
    -fill white -opaque "$1" -format '%[fx:mean]' info:
}
at_least() { awk -v a="$1" -v b="$2" 'BEGIN { exit !(a >= b) }'; }
# Polls until the share of a colour reaches (or, with "below", falls under) a
# level; prints the last share. Animations run slower on a busy machine.
wait_share() { # at_least|below level colour width height x y
  local mode=$1 level=$2 got=0
  shift 2
  for _ in $(seq 120); do
    got=$(share "$@")
    if [ "$mode" = at_least ]; then at_least "$got" "$level" && break
    else at_least "$level" "$got" && break; fi
    sleep 0.25
  done
  echo "$got"
}
# The window's pixels above the now-playing bar (whose progress moves), raw.
capture() { import -window "$window" -crop 1280x600+0+0 +repage rgb:"$1" 2> /dev/null; }
# Waits until the window has changed since the last click (the next screen,
# panel or dialog is coming), then lets its opening animation end.
settle() {
  for _ in $(seq 200); do
    capture "$work/now.rgb"
    cmp -s "$work/now.rgb" "$work/before.rgb" || { sleep 0.5; return 0; }
    sleep 0.05
  done
  fail "the window did not change after step $step"
}
# Waits until two captures a moment apart are the same: a fade has ended.
still() {
  capture "$work/last.rgb"
  for _ in $(seq 100); do
    sleep 0.1
    capture "$work/now.rgb"
    cmp -s "$work/now.rgb" "$work/last.rgb" && return 0
    mv "$work/now.rgb" "$work/last.rgb"
  done
}
click() { # x y, in window coordinates
  capture "$work/before.rgb"
  xdotool mousemove --window "$window" "$1" "$2" click 1
}
# ---- First run: the welcome, and the import from its button ------------------
launch
button=$(wait_share at_least 0.5 '#E3F794' 200 36 430 476) # the reveal ends with the button
shot "welcome"
at_least "$button" 0.5 || fail "no \"Import Music Folder\" button after the reveal (lime share $button)"
ok "the first run shows the welcome with its button (lime share $button)"

click 530 493 # "Import Music Folder"
settle
shot "import-dialog"
# The dialog opens at the Music folder, whose one folder is chosen already.
click 686 526 # "Import Folder"
wait_for_log "imported .*Library\": 5 audio files, 5 new" || fail "the chosen folder was not imported"
grep -q 'didCompleteOnboarding=true' "$config" || fail "the finished welcome was not remembered"
button=$(wait_share below 0.05 '#E3F794' 200 36 430 476) # the welcome fades out
still
shot "imported"
at_least 0.05 "$button" || fail "the welcome is still shown after the import (lime share $button)"
ok "the dialog imported ${#names[@]} songs and the welcome went away"

# ---- Playing: click, next, previous, shuffle, Space --------------------------
click 70 134 # "All Songs"
settle
click 500 175 # the first song
expect Playing mpris status > /dev/null || fail "a click on the first song did not play it"
title=$(mpris metadata xesam:title)
[ "$title" = "${names[0]}" ] || fail "MPRIS shows \"$title\", not \"${names[0]}\""
shot "playing"
ok "a click plays \"$title\", and MPRIS says so"

click 1025 657 # next
got=$(expect "${names[1]}" mpris metadata xesam:title) || fail "next played \"$got\", not \"${names[1]}\""
ok "next plays \"${names[1]}\""
click 934 657 # previous
got=$(expect "${names[0]}" mpris metadata xesam:title) || fail "previous played \"$got\", not \"${names[0]}\""
ok "previous goes back to \"${names[0]}\""
click 891 657 # shuffle
got=$(expect On mpris shuffle) || fail "shuffle is \"$got\" after its button"
shot "shuffled"
click 891 657
got=$(expect Off mpris shuffle) || fail "shuffle is \"$got\" after its second press"
ok "the shuffle button turns shuffling on and off"

xdotool mousemove --window "$window" 600 450
xdotool key --window "$window" space
got=$(expect Paused mpris status) || fail "Space left playback \"$got\""
shot "paused"
xdotool key --window "$window" space
got=$(expect Playing mpris status) || fail "a second Space left playback \"$got\""
ok "Space pauses and plays again"

# ---- A playlist, filled by dragging a song onto it ---------------------------
click 191 231 # "+"
settle
xdotool type --delay 40 "Road Trip"
xdotool key Return
wait_until grep -q '"name": *"Road Trip"' "$playlists" || fail "playlists.json has no \"Road Trip\""
ok "\"Road Trip\" was created and stored"

capture "$work/before.rgb"
xdotool mousemove --window "$window" 500 229 mousedown 1 # the second song
# Motion events a moment apart, as a hand makes them.
for i in 1 2 3 4 5 6 7 8; do
  xdotool mousemove --window "$window" $((500 - i * 55)) $((229 + i * 5))
  sleep 0.05
done
settle
shot "dragging"
xdotool mouseup 1
wait_for_log 'banner: "Added to Road Trip"' || fail "no \"Added to Road Trip\" after the drop"
shot "added"
[ "$(in_playlist "Road Trip")" = "${names[1]}.flac" ] || fail "playlists.json does not hold just \"${names[1]}\""
ok "a song dragged onto the playlist was added (\"Added to Road Trip\")"
quit

# ---- A restart: the playlist stays, the library's folder is imported again ---
launch
wait_for_log "imported .*Library\": 5 audio files, 5 new" || fail "the remembered folder was not imported at start"
[ "$(in_playlist "Road Trip")" = "${names[1]}.flac" ] || fail "the playlist lost its song on restart"
click 70 265 # "Road Trip": the window answers, so the welcome would be showing by now
wait_for_log 'playlist: "Road Trip", 1 songs' || fail "the playlist does not open with its song"
settle
shot "playlist-after-restart"
lime=$(share '#E3F794' 200 36 430 476)
at_least 0.05 "$lime" || fail "the welcome came back after the restart (lime share $lime)"
ok "after a restart: no welcome, the songs back without importing, and \"Road Trip\" with its song"
quit

# ---- Tags: the untagged song gets its tags and leaves the list ---------------
launch "$library"
wait_for_log "imported .*: 5 audio files, 5 new" || fail "the folder on the command line was not imported"
lime=$(wait_share at_least 0.2 '#E3F794' 220 45 780 15)
at_least "$lime" 0.2 || fail "no import button in the top bar with songs in the library (lime share $lime)"
click 70 170 # "Untagged Songs"
settle
shot "untagged"
click 500 205 # the only song without tags
settle
xdotool type --delay 30 "Demo"
xdotool key Tab
xdotool type --delay 30 "Nadia Lund"
xdotool key Tab
xdotool type --delay 30 "Sketches"
shot "editing"
click 666 468 # "Save"
wait_for_log "untagged: saved 1 files, 0 songs left" || fail "the tags were not saved, or the song stayed in the list"
demo="$library/$loose/Demo take.flac"
for tag in TITLE=Demo "ARTIST=Nadia Lund" ALBUM=Sketches; do
  metaflac --show-tag="${tag%%=*}" "$demo" | grep -qx "$tag" || fail "$demo lacks $tag"
done
metaflac --show-md5sum "$demo" > /dev/null
flac -t -s "$demo" 2> /dev/null || fail "$demo no longer decodes"
shot "tagged"
ok "the untagged song got its title, artist and album and left the list"

cp "$library/$harbour/01 Morning Light.flac" "$library/$harbour/03 Copy.flac"
wait_for_log 'banner: "1 new song added"' || fail "no banner for a song copied into the watched folder"
ok "a song copied into the folder is added (\"1 new song added\")"

# ---- Search: an album, opened from the dropdown -------------------------------
click 758 38 # the magnifying glass
settle
capture "$work/before.rgb"
xdotool type --delay 60 "low orb"
settle
shot "search"
click 615 110 # the album, alone in the dropdown
wait_for_log 'artist: "The Quiet Hours", album: "Low Orbit"' || fail "the album did not open"
settle
shot "album"
ok "searching \"low orb\" and choosing the album opens The Quiet Hours at Low Orbit"
quit
echo "PASS (screenshots in $artefacts)"
