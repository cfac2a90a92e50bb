# SPDX-License-Identifier: GPL-3.0-or-later
# Keyboard use: the focus ring on a song, an artist card and a button in each
# theme, and the Keyboard Shortcuts window.
# Sourced by scripts/screenshots.sh (start, stop, shot, $window).
# Keys go to the focused window, which the screenshots' start leaves unset.
keys() {
  xdotool windowfocus --sync "$window" 2> /dev/null || true
  for k in "$@"; do xdotool key --window "$window" "$k"; sleep 0.2; done
  sleep 0.3
}
for theme in noir sunrise light; do
  start "$theme" true "$library"
  keys ctrl+3 Down Down
  shot "focus-song-$theme"
  keys shift+Tab
  shot "focus-button-$theme"
  keys ctrl+2 Right
  shot "focus-artist-$theme"
  stop
done
start noir true "$library"
keys ctrl+question
sleep 0.4
shot "shortcuts-noir"
stop
