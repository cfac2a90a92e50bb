#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Saving tags into 500 FLAC files from the untagged-songs screen, in the real
# program under Xvfb: the longest time the GUI thread stopped answering while
# the files were written (target < 50 ms), and how long the batch took.
set -euo pipefail
build=$(cd "${1:-build}" && pwd)
app="$build/bin/tarnwell-probe"
count=${BENCH_FILES:-500}
for tool in Xvfb sox; do
  command -v "$tool" > /dev/null || { echo "bench_tag_batch: $tool is missing"; exit 0; }
done

# shellcheck source=/dev/null
source "$(dirname "${BASH_SOURCE[0]}")/session.sh"
bench_session batch

# Five seconds of noise a file, about 0.9 MB of FLAC, no tags.
music="$work/Music/Untagged"
mkdir -p "$music"
sox -n -r 44100 -c 2 -b 16 "$work/seed.flac" synth 5 pinknoise vol 0.3 2> /dev/null
for i in $(seq -w 1 "$count"); do cp "$work/seed.flac" "$music/Take $i.flac"; done
echo "files: $count of $(du -k "$work/seed.flac" | cut -f1) KiB"


out=$(timeout 600 "$app" tag-batch "$music" 2> /dev/null)
saved=$(awk '/^saved-files/ { print $2 }' <<< "$out")
ms=$(awk '/^save-ms/ { print $2 }' <<< "$out")
stall=$(awk '/^longest-gui-stall-ms/ { print $2 }' <<< "$out")
tagged=0
if command -v metaflac > /dev/null; then
  tagged=$(for f in "$music"/*.flac; do metaflac --show-tag=ALBUM "$f"; done | grep -c '^ALBUM=Batch Album$' || true)
fi
echo "files saved: ${saved:-?} (album read back from $tagged)"
echo "batch save: ${ms:-?} ms"
echo "longest GUI-thread stall while saving: ${stall:-?} ms (target < 50)"
