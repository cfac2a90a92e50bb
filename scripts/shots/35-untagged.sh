# SPDX-License-Identifier: GPL-3.0-or-later
# Untagged songs and the tag editor for one and for several songs.
# Sourced by scripts/screenshots.sh (start, stop, shot, click, $library).
loose="$work/Loose"
for theme in ${SHOT_THEMES:-noir sunrise light}; do
  # Afresh for each theme: the previous theme's shots saved tags into them.
  rm -rf "$loose"
  mkdir -p "$loose"
  for name in "Demo take 1" "Demo take 2" "Field recording" "Voice memo"; do
    sox -n -r 44100 -c 2 -b 16 "$loose/$name.flac" synth 1 sine 330 2> /dev/null
  done
  metaflac --set-tag="TITLE=Voice memo" --set-tag="ARTIST=Orlo" "$loose/Voice memo.flac"
  start "$theme" true "$loose"
  click 70 170 # "Untagged Songs"
  sleep 0.8
  shot "untagged-$theme"
  click 500 205 # a click on the first song edits it
  sleep 0.5
  shot "editor-one-$theme"
  xdotool type "Sketch"
  xdotool key Escape
  sleep 0.3
  shot "editor-discard-$theme"
  click 642 384 # "Discard"
  sleep 0.4
  click 1005 107 # "Select All"
  sleep 0.3
  shot "untagged-selected-$theme"
  click 977 107 # "Edit 4 selected"
  sleep 0.5
  shot "editor-several-$theme"
  click 530 425 # the album field
  xdotool type "Sketches"
  click 666 468 # "Save"
  sleep 1.0
  shot "untagged-saved-$theme"
  stop
done
