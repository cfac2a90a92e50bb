# SPDX-License-Identifier: GPL-3.0-or-later
# The search: closed, open with results in each section, album-only, and
# a query that finds nothing.
# Sourced by scripts/screenshots.sh (start, stop, shot, click, $library).
for theme in ${SHOT_THEMES:-noir sunrise light}; do
  start "$theme" true "$library"
  sleep 0.5 # the index is built
  shot "search-closed-$theme"
  click 758 38 # the magnifying glass
  sleep 0.5
  xdotool type --delay 60 "o"
  sleep 0.4
  xdotool mousemove --window "$window" 700 300
  sleep 0.3
  shot "search-results-$theme"
  xdotool key ctrl+a
  xdotool type --delay 60 "harbour"
  sleep 0.4
  shot "search-albums-$theme"
  click 615 110 # the album: the artist opens at it
  sleep 1.0
  shot "search-opened-album-$theme"
  click 758 38
  sleep 0.5
  xdotool type --delay 60 "qqq"
  sleep 0.4
  shot "search-none-$theme"
  stop
done
