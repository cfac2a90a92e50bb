#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Renders the program's window to PNG files under BUILD/screenshots: the real
# program under Xvfb with a generated sample library. The states to render are
# in scripts/shots/*.sh, one file per group of screens.
# Usage: scripts/screenshots.sh [BUILD]
set -euo pipefail

build=$(cd "${1:-build}" && pwd)
app="$build/bin/tarnwell"
out="$build/screenshots"
for tool in Xvfb xdotool import sox; do
  command -v "$tool" > /dev/null || { echo "screenshots: $tool is missing (make deps)" >&2; exit 1; }
done
[ -x "$app" ] || { echo "screenshots: build the program first ($app)" >&2; exit 1; }
mkdir -p "$out"

work=$(mktemp -d "${TMPDIR:-/tmp}/tarnwell-shots.XXXXXX")
xvfb_pid=""
app_pid=""
feed_pid=""
cleanup() {
  [ -n "$app_pid" ] && kill "$app_pid" 2> /dev/null || true
  [ -n "$feed_pid" ] && kill "$feed_pid" 2> /dev/null || true
  [ -n "$xvfb_pid" ] && kill "$xvfb_pid" 2> /dev/null || true
  rm -rf "$work"
}
trap cleanup EXIT INT TERM

# shellcheck source=/dev/null
source "$(dirname "${BASH_SOURCE[0]}")/lib/xvfb.sh"
start_xvfb "$work"

# The sample library: a few artists and albums of short tones.
library="$work/Music"
make_song() { # artist album track title
  local dir="$library/$1/$2"
  mkdir -p "$dir"
  local file="$dir/$(printf '%02d' "$3") $4.flac"
  sox -n -r 44100 -c 2 -b 16 "$file" synth 1 sine $((200 + 40 * $3)) 2> /dev/null
  if command -v metaflac > /dev/null; then
    metaflac --set-tag="ARTIST=$1" --set-tag="ALBUM=$2" --set-tag="TITLE=$4" "$file"
  fi
}
i=0
for title in "Morning Light" "Glass River" "Paper Boats" "Slow Tide"; do
  i=$((i + 1)); make_song "Nadia Lund" "Harbour Songs" "$i" "$title"
done
i=0
for title in "Northern Line" "Static Bloom" "Low Orbit"; do
  i=$((i + 1)); make_song "The Quiet Hours" "Low Orbit" "$i" "$title"
done
i=0
for title in "Copper Sky" "Fieldwork" "Kites" "Undertow" "Last Ferry"; do
  i=$((i + 1)); make_song "Marisol Vey" "Fieldwork" "$i" "$title"
done
i=0
for title in "Inland" "Salt"; do
  i=$((i + 1)); make_song "Orlo" "Inland EP" "$i" "$title"
done
# Album pictures as users have them: embedded in the songs of one album, a
# folder image beside another; the others have none.
cover() { # file colour colour: a square with two bands of colour
  convert -size 600x600 gradient:"$2"-"$3" -fill '#ffffff30' -draw "circle 300,300 300,120" "$1"
}
cover "$work/harbour.jpg" '#2f6f8f' '#e8c07a'
for song in "$library/Nadia Lund/Harbour Songs"/*.flac; do
  metaflac --import-picture-from="$work/harbour.jpg" "$song"
done
cover "$library/Marisol Vey/Fieldwork/folder.jpg" '#7a3b2e' '#d9a441'

# An update feed on the loopback interface, announcing a newer version.
mkdir -p "$work/feed"
cat > "$work/feed/appcast.xml" << 'XML'
<?xml version="1.0" encoding="utf-8"?>
<rss version="2.0" xmlns:tw="https://tarnwell.org/appcast">
  <channel><title>Tarnwell</title>
    <item><title>Tarnwell 0.2.0</title>
      <enclosure url="https://tarnwell.org/download/tarnwell-0.2.0.tar.xz" tw:version="0.2.0" type="application/x-xz"/>
    </item>
  </channel>
</rss>
XML
# A landscape for the first-run welcome: sky, two ridges of hills and a lake.
convert -size 1600x1000 gradient:'#f6c27a'-'#5b7fa8' \
  -fill '#3f5a6e' -draw "polygon 0,620 220,470 430,560 700,400 980,540 1250,430 1600,580 1600,1000 0,1000" \
  -fill '#26394a' -draw "polygon 0,760 300,640 560,720 860,610 1180,700 1600,640 1600,1000 0,1000" \
  -fill '#7d97b5' -draw "rectangle 0,860 1600,1000" -blur 0x2 "$work/feed/landscape.jpg"
port=$(python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])')
python3 -m http.server --bind 127.0.0.1 --directory "$work/feed" "$port" > /dev/null 2>&1 &
feed_pid=$!

export HOME="$work/home"
export XDG_CONFIG_HOME="$HOME/.config" XDG_DATA_HOME="$HOME/.local/share" XDG_CACHE_HOME="$HOME/.cache"
export XDG_RUNTIME_DIR="$work/runtime"
mkdir -p "$XDG_CONFIG_HOME/Tarnwell" "$XDG_DATA_HOME" "$XDG_RUNTIME_DIR"
chmod 700 "$XDG_RUNTIME_DIR"
export TARNWELL_AUDIO_SINK="fakesink sync=true"
export TARNWELL_UPDATE_FEED_URL="http://127.0.0.1:$port/appcast.xml"
# No photograph behind the welcome unless a shot asks for it.
export TARNWELL_ONBOARDING_IMAGE_URL="http://127.0.0.1:9/landscape.jpg"
export QT_LOGGING_RULES="tarnwell.app.debug=true"
unset DBUS_SESSION_BUS_ADDRESS

window=""
# start THEME ONBOARDED [FOLDER]: runs the program and waits for its window
# (and for the import of FOLDER).
# KEEP_SETTINGS=1 keeps what the previous run stored (a second start).
start() {
  [ -n "${KEEP_SETTINGS:-}" ] \
    || printf '[General]\ndidCompleteOnboarding=%s\nselectedTheme=%s\n' "$2" "$1" > "$XDG_CONFIG_HOME/Tarnwell/Tarnwell.conf"
  : > "$work/log"
  if [ -n "${3:-}" ]; then "$app" "$3" 2> "$work/log" & else "$app" 2> "$work/log" & fi
  app_pid=$!
  wait_for_window || { echo "screenshots: no window" >&2; cat "$work/log" >&2; exit 1; }
  if [ -n "${3:-}${KEEP_SETTINGS:-}" ]; then
    for _ in $(seq 100); do grep -q 'imported' "$work/log" && break; sleep 0.1; done
  fi
  xdotool mousemove --window "$window" 1 690
  sleep 1.2 # the welcome screen fades out in 0.7 s
}
stop() {
  kill "$app_pid" 2> /dev/null || true
  wait "$app_pid" 2> /dev/null || true
  app_pid=""
}
shot() {
  import -window "$window" "$out/$1.png"
  echo "  $out/$1.png"
}
click() { # x y, in window coordinates
  xdotool mousemove --window "$window" "$1" "$2" click 1
  sleep 0.4
}

echo "screenshots:"
# Each file under shots/ renders the states of a group of screens, in name
# order, with the functions above.
# SHOTS=songs renders only the groups whose file name contains "songs".
for part in "$(dirname "${BASH_SOURCE[0]}")"/shots/*.sh; do
  [[ "$(basename "$part")" == *"${SHOTS:-}"* ]] || continue
  # shellcheck source=/dev/null
  source "$part"
done
