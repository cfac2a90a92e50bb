# SPDX-License-Identifier: GPL-3.0-or-later
# The song list, the now-playing bar, the sidebar and its playlists.
# Sourced by scripts/screenshots.sh (start, stop, shot, click, $library).
printf '[{"id":"7D3A1C2E-9B1F-4C7A-8E2D-1A2B3C4D5E6F","name":"Road","tracks":[]},{"id":"0B6E2F4A-3C5D-4E7F-9A1B-2C3D4E5F6A7B","name":"Late Night","tracks":[]}]\n' \
  > "$work/playlists.json"
songs_start() { # theme
  mkdir -p "$XDG_DATA_HOME/Tarnwell"
  cp "$work/playlists.json" "$XDG_DATA_HOME/Tarnwell/playlists.json"
  start "$1" true "$library"
}
for theme in ${SHOT_THEMES:-noir sunrise light}; do
  songs_start "$theme"
  click 70 130 # "All Songs"
  shot "songs-$theme"
  xdotool mousemove --window "$window" 500 190
  sleep 0.4
  shot "songs-hover-$theme"
  click 500 250 # the second song plays
  sleep 0.8
  xdotool mousemove --window "$window" 500 420
  sleep 0.4
  shot "songs-playing-$theme"
  click 1000 655 # pause in the now-playing bar
  sleep 0.4
  shot "songs-paused-$theme"
  click 70 260 # the playlist "Road"
  sleep 0.4
  shot "playlist-$theme"
  click 70 130
  # A song dragged over "Road".
  xdotool mousemove --window "$window" 500 190 mousedown 1
  sleep 0.2
  for step in 1 2 3 4 5 6 7 8; do
    xdotool mousemove --window "$window" $((500 - step * 55)) $((190 + step * 9))
    sleep 0.05
  done
  sleep 0.4
  shot "playlist-drop-$theme"
  xdotool mouseup 1
  sleep 0.6
  shot "playlist-added-$theme"
  click 196 232 # "+": a new playlist
  sleep 0.4
  xdotool type "Chill"
  shot "create-playlist-$theme"
  stop
done
