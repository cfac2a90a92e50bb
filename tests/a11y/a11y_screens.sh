#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Every screen of the program as a screen reader sees it: the real program
# under Xvfb with the accessibility bus, each screen reached with its key, and
# its AT-SPI tree walked by a11y_tree.py (no reachable item without a role or
# a name; a few names that must be there).
# Usage: a11y_screens.sh PATH/TO/tarnwell   (run through tests/support/isolated.sh)
set -euo pipefail
app=$1
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)

for tool in Xvfb xdotool sox metaflac dbus-run-session; do
  command -v "$tool" > /dev/null || { echo "FAIL: $tool is missing"; exit 1; }
done
# A private session bus, which starts the accessibility bus when asked.
[ -n "${TARNWELL_A11Y_BUS:-}" ] || TARNWELL_A11Y_BUS=1 exec dbus-run-session -- bash "$0" "$@"

work=$(mktemp -d "${TARNWELL_TEST_ROOT:-${TMPDIR:-/tmp}}/a11y.XXXXXX")
app_pid=""
# shellcheck source=/dev/null
source "$here/../../scripts/lib/xvfb.sh"
start_xvfb "$work"
trap 'kill $app_pid $xvfb_pid 2> /dev/null; true' EXIT INT TERM
export QT_QPA_PLATFORM=xcb
export QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1
export QT_LOGGING_RULES="tarnwell.app.debug=true"
failed=0

library="$HOME/Music/Library"
mkdir -p "$library/Ada/First" "$library/Loose"
for n in 1 2; do
  sox -n -r 22050 -c 1 -b 16 "$library/Ada/First/0$n Song.flac" synth 30 sine 440 2> /dev/null
  metaflac --set-tag=ARTIST=Ada --set-tag=ALBUM=First --set-tag="TITLE=Song $n" "$library/Ada/First/0$n Song.flac"
done
sox -n -r 22050 -c 1 -b 16 "$library/Loose/Demo.flac" synth 30 sine 440 2> /dev/null

start() { # [FOLDER]
  : > "$work/log"
  "$app" "$@" 2> "$work/log" &
  app_pid=$!
  wait_for_window || { echo "FAIL: no window"; cat "$work/log"; exit 1; }
  xdotool windowfocus --sync "$window" 2> /dev/null || true
}
wait_for_log() { # pattern
  for _ in $(seq 100); do grep -q -- "$1" "$work/log" && return 0; sleep 0.1; done
  echo "FAIL: the log never said \"$1\""; cat "$work/log"; exit 1
}
key() { xdotool key --window "$window" "$@"; sleep 0.3; }
check() { /usr/bin/python3 "$here/a11y_tree.py" "$@" || failed=1; }

# The first run: the welcome alone.
start
check welcome "push button:Import Music Folder"
kill "$app_pid"; wait "$app_pid" 2> /dev/null || true

start "$library"
wait_for_log "imported .*: 3 audio files"
check home "push button:Import Music" "Search" "All Songs"
key ctrl+3
key Return
wait_for_log 'now playing: "01 Song"'
key space
check "all songs, paused" "push button:Play" "push button:Next song" "push button:Shuffle, off" \
  "slider:Song position" "list item:01 Song, Ada"
key ctrl+2
check artists "push button:Ada"
key Return
check "an artist" "push button:First" "push button:All Artists"
key ctrl+4
check untagged "list item:Demo, Missing: title, artist, album"
key Return
check "tag editor" "push button:Save" "push button:Close"
key Escape
key ctrl+f
xdotool type --delay 40 "song"
check search "text:Search" "push button:01 Song, Ada"
key Escape
key ctrl+n
check "new playlist" "push button:Create"
key Escape
key ctrl+question
check "keyboard shortcuts" "heading:Keyboard Shortcuts"
[ "$failed" -eq 0 ] || { echo "--- program log"; cat "$work/log"; exit 1; }
echo PASS
