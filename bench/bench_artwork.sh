#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# The first import of 200 artists in the program under Xvfb, with the picture
# services on a loopback port:
#   - the lookups that went online (each artist and album asked once: they
#     must equal the distinct artists plus the albums that need a picture)
#   - the time from clicking the first song until the program has its picture
#     (the now-playing picture, from the program's log)
# Lookups go out one a second, so the run takes about five minutes.
# (The program's own log says when it has the picture: MPRIS may show it only
# with the next change of state.)
set -euo pipefail
build=$(cd "${1:-build}" && pwd)
app="$build/bin/tarnwell"
here=$(cd "$(dirname "$0")" && pwd)
for tool in Xvfb xdotool sox metaflac convert playerctl dbus-run-session python3; do
  command -v "$tool" > /dev/null || { echo "bench_artwork: $tool is missing"; exit 0; }
done
# A private session bus for MPRIS.
if [ -z "${TARNWELL_BENCH_BUS:-}" ]; then
  TARNWELL_BENCH_BUS=1 exec dbus-run-session -- bash "$0" "$@"
fi
bus=$DBUS_SESSION_BUS_ADDRESS

# shellcheck source=/dev/null
source "$here/session.sh"
bench_session artwork
export DBUS_SESSION_BUS_ADDRESS=$bus
server_pid=""
app_pid=""
trap '[ -n "$app_pid" ] && kill "$app_pid" 2> /dev/null; [ -n "$server_pid" ] && kill "$server_pid" 2> /dev/null;
      [ -n "$xvfb_pid" ] && kill "$xvfb_pid" 2> /dev/null; rm -rf "$work"' EXIT

# 200 artists of one song each; every other one has an album tag, so 100
# albums need a picture. File names sort the first artist's song first.
artists=200
library="$work/library"
mkdir -p "$library"
sox -n -r 8000 -c 1 -b 16 "$work/seed.flac" synth 30 sine 440 2> /dev/null
albums=0
for i in $(seq 0 $((artists - 1))); do
  song=$(printf '%s/%03d Song.flac' "$library" "$i")
  cp "$work/seed.flac" "$song"
  tags=(--set-tag="ARTIST=$(printf 'Artist %03d' "$i")" --set-tag="TITLE=Song $i")
  if [ $((i % 2)) -eq 0 ]; then
    tags+=(--set-tag="ALBUM=$(printf 'Album %03d' "$i")")
    albums=$((albums + 1))
  fi
  metaflac "${tags[@]}" "$song"
done

convert -size 600x600 gradient:teal-navy "$work/picture.png"
python3 "$here/artwork_services.py" "$work/port" "$work/requests" "$work/picture.png" &
server_pid=$!
for _ in $(seq 50); do [ -s "$work/port" ] && break; sleep 0.1; done
base="http://127.0.0.1:$(cat "$work/port")"
export TARNWELL_MUSICBRAINZ_URL=$base/mb TARNWELL_COVERART_URL=$base/caa
export TARNWELL_WIKIPEDIA_URL=$base/wiki TARNWELL_COMMONS_URL=$base/commons
export QT_QPA_PLATFORM=xcb QT_LOGGING_RULES="tarnwell.artwork.debug=true"

start_ms=$(date +%s%3N)
"$app" "$library" > /dev/null 2> "$work/log" &
app_pid=$!
wait_for_window || { echo "bench_artwork: no window"; exit 1; }
for _ in $(seq 100); do playerctl -l 2> /dev/null | grep -q tarnwell && break; sleep 0.1; done
sleep 2 # the home screen's cards ask for their artists meanwhile
xdotool mousemove --window "$window" 70 134 click 1 # "All Songs"
sleep 0.5
click_ms=$(date +%s%3N)
xdotool mousemove --window "$window" 500 175 click 1 # the first song
# Paused at once, so that no later song asks for its picture too.
for _ in $(seq 100); do
  [ "$(playerctl -p tarnwell status 2> /dev/null)" = Playing ] && playerctl -p tarnwell pause && break
  sleep 0.1
done
for _ in $(seq 6000); do
  grep -q "the playing song's picture is now QSize([1-9]" "$work/log" && break
  sleep 0.1
done
picture_ms=$(date +%s%3N)
grep -q "the playing song's picture is now" "$work/log" || { echo "bench_artwork: the picture never came"; exit 1; }

# Every lookup is asked, and a few quiet seconds show no second round.
expected=$((artists + albums))
lookups() { awk '$2 == "wiki" || $2 == "mb"' "$work/requests" | wc -l; }
for _ in $(seq 1200); do [ "$(lookups)" -ge "$expected" ] && break; sleep 0.5; done
sleep 5
asked=$(lookups)
echo "artists: $artists, albums needing a picture: $albums"
echo "lookups that went online: $asked (expected $expected: $([ "$asked" -eq "$expected" ] && echo ok || echo DIFFERENT))"
echo "requests in all: $(wc -l < "$work/requests")"
echo "start to the first song clicked: $((click_ms - start_ms)) ms"
echo "click to the playing song's picture: $((picture_ms - click_ms)) ms"
