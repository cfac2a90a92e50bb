# SPDX-License-Identifier: GPL-3.0-or-later
# A second start (the library's folders imported again), the Music Folders
# dialog, and a save that fails on a read-only file, keeping what was typed.
# Sourced by scripts/screenshots.sh (start, stop, shot, click, $library).
locked="$work/Locked"
for theme in ${SHOT_THEMES:-noir sunrise light}; do
  start "$theme" true "$library"
  stop
  KEEP_SETTINGS=1 start "$theme" true
  sleep 0.5
  shot "second-launch-$theme"
  click 1021 38 # the menu button
  click 940 144 # "Music Folders…"
  sleep 0.6
  shot "music-folders-$theme"
  stop

  rm -rf "$locked"
  mkdir -p "$locked"
  sox -n -r 44100 -c 2 -b 16 "$locked/Demo take 1.flac" synth 1 sine 330 2> /dev/null
  chmod 444 "$locked/Demo take 1.flac"
  start "$theme" true "$locked"
  click 70 170 # "Untagged Songs"
  sleep 0.8
  click 500 205 # the song: its editor
  sleep 0.5
  xdotool type "Sketch"
  xdotool key Return
  sleep 1.0
  shot "editor-failed-$theme"
  stop
done
