#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# The program is killed half-way through saving an album into many FLAC files:
# every file must then be the old one or the new one, whole (same audio, album
# absent or new), and the next save leaves no temporary file over.
# Usage: kill_during_batch.sh PATH/TO/tarnwell-probe   (run through tests/support/isolated.sh)
set -euo pipefail
app=$1

music="$HOME/Music/Takes"
mkdir -p "$music"
sox -n -r 44100 -c 2 -b 16 "$TARNWELL_TEST_ROOT/seed.flac" synth 20 pinknoise vol 0.5 2> /dev/null
audio=$(flac -d -s -c --force-raw-format --endian=little --sign=signed "$TARNWELL_TEST_ROOT/seed.flac" | md5sum | cut -d' ' -f1)
count=200
for i in $(seq -w 1 $count); do cp "$TARNWELL_TEST_ROOT/seed.flac" "$music/Take $i.flac"; done

out="$TARNWELL_TEST_ROOT/out"
"$app" tag-batch "$music" > "$out" 2> "$TARNWELL_TEST_ROOT/log" &
pid=$!
killed_at=""
for _ in $(seq 600); do
  saved=$(awk '/^saved / { n = $2 } END { print n + 0 }' "$out")
  if [ "$saved" -ge 20 ]; then
    kill -KILL "$pid"
    killed_at=$saved
    break
  fi
  kill -0 "$pid" 2> /dev/null || break
  sleep 0.01
done
wait "$pid" 2> /dev/null || true
[ -n "$killed_at" ] || { echo "FAIL: the batch never got going"; cat "$out" "$TARNWELL_TEST_ROOT/log"; exit 1; }

old=0 new=0
for f in "$music"/*.flac; do
  sum=$(flac -d -s -c --force-raw-format --endian=little --sign=signed "$f" | md5sum | cut -d' ' -f1)
  [ "$sum" = "$audio" ] || { echo "FAIL: the audio of $f changed or does not decode"; exit 1; }
  case "$(metaflac --show-tag=ALBUM "$f")" in
    "") old=$((old + 1)) ;;
    "ALBUM=Batch Album") new=$((new + 1)) ;;
    *) echo "FAIL: $f has the album \"$(metaflac --show-tag=ALBUM "$f")\""; exit 1 ;;
  esac
done
# A save killed between writing its new file and the rename leaves that file;
# the next save in the folder takes it away.
"$(dirname "$app")/tarnwell-cli" write "$music/Take 001.flac" --title "After" > /dev/null
left=$(find "$music" -mindepth 1 ! -name 'Take *.flac' | wc -l)
[ "$left" -eq 0 ] || { echo "FAIL: $left stray files in the folder:"; find "$music" ! -name 'Take *.flac'; exit 1; }
[ $((old + new)) -eq $count ] || { echo "FAIL: $((old + new)) of $count files are left"; exit 1; }
echo "PASS: killed after $killed_at saves: $new new files, $old old ones, all whole, nothing left over"
