# SPDX-License-Identifier: GPL-3.0-or-later
# The smallest window, 820 x 540: an artist's page, the untagged list with a
# long file name, a song dragged onto a playlist, and Home.
# Sourced by scripts/screenshots.sh (start, stop, shot, click, $library).
small="$work/Small"
for theme in ${SHOT_THEMES:-noir sunrise light}; do
  rm -rf "$small"
  cp -r "$library" "$small"
  mkdir -p "$small/Loose" "$XDG_DATA_HOME/Tarnwell"
  sox -n -r 44100 -c 2 -b 16 "$small/Loose/Harbour field recording, early morning with gulls, rain and the ferry leaving (take 3).flac" \
    synth 1 sine 330 2> /dev/null
  printf '[{"id":"7D3A1C2E-9B1F-4C7A-8E2D-1A2B3C4D5E6F","name":"Road","tracks":[]}]\n' \
    > "$XDG_DATA_HOME/Tarnwell/playlists.json"
  start "$theme" true "$small"
  xdotool windowsize "$window" 820 540
  sleep 0.8
  click 70 130 # "All Songs"
  click 400 175 # the first song plays
  click 552 38 # home, further left in the narrow window
  sleep 0.4
  shot "min-home-$theme"
  click 70 98 # "All Artists"
  sleep 0.8
  click 330 260 # the first artist
  sleep 0.8
  shot "min-artist-$theme"
  xdotool mousemove --window "$window" 500 400 click 5 click 5 click 5 # the wheel: the page scrolls
  sleep 0.4
  shot "min-artist-scrolled-$theme"
  click 70 170 # "Untagged Songs"
  sleep 0.8
  xdotool mousemove --window "$window" 400 205
  sleep 0.4
  shot "min-untagged-$theme"
  click 70 130
  # The first song dragged over "Road".
  xdotool mousemove --window "$window" 400 175 mousedown 1
  sleep 0.2
  for step in 1 2 3 4 5 6 7 8; do
    xdotool mousemove --window "$window" $((400 - step * 41)) $((175 + step * 9))
    sleep 0.05
  done
  sleep 0.4
  shot "min-drag-$theme"
  xdotool mouseup 1
  stop
done
