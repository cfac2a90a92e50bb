# SPDX-License-Identifier: GPL-3.0-or-later
# Home, the artists grid and an artist's albums and songs.
# Sourced by scripts/screenshots.sh (start, stop, shot, click, $library).
for theme in ${SHOT_THEMES:-noir sunrise light}; do
  start "$theme" true "$library"
  sleep 0.5 # the search index names the artists
  shot "home-$theme"
  click 70 130 # "All Songs"
  click 500 175 # the first song plays: its artist becomes recent
  click 792 38 # home
  sleep 0.4
  shot "home-recent-$theme"
  click 70 98 # "All Artists"
  sleep 0.8
  shot "artists-$theme"
  click 350 260 # the first artist
  sleep 0.8
  shot "artist-$theme"
  click 330 300 # its first album: it plays
  sleep 0.8
  xdotool mousemove --window "$window" 330 300
  sleep 0.3
  shot "artist-album-$theme"
  stop
done
