#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Saving tags into 500 FLAC files from the untagged-songs screen, in the real
# program under Xvfb: the longest time the GUI thread stopped answering while
# the files were written (target < 50 ms), and how long the batch took.
set -euo pipefail
build=$(cd "${1:-build}" && pwd)
app="$build/bin/tarnwell"
count=${BENCH_FILES:-500}
for tool in Xvfb sox; do
  command -v "$tool" > /dev/null || { echo "bench_tag_batch: $tool is missing"; exit 0; }
done

work=$(mktemp -d "${TMPDIR:-/tmp}/tarnwell-bench-batch.XXXXXX")
xvfb_pid=""
cleanup() {
  [ -n "$xvfb_pid" ] && kill "$xvfb_pid" 2> /dev/null || true
  rm -rf "$work"
}
trap cleanup EXIT INT TERM

# Five seconds of noise a file, about 0.9 MB of FLAC, no tags.
music="$work/Music/Untagged"
mkdir -p "$music"
sox -n -r 44100 -c 2 -b 16 "$work/seed.flac" synth 5 pinknoise vol 0.3 2> /dev/null
for i in $(seq -w 1 "$count"); do cp "$work/seed.flac" "$music/Take $i.flac"; done
echo "files: $count of $(du -k "$work/seed.flac" | cut -f1) KiB"

# shellcheck source=/dev/null
source "$(dirname "${BASH_SOURCE[0]}")/../scripts/lib/xvfb.sh"
start_xvfb "$work"
export HOME="$work/home" XDG_CONFIG_HOME="$work/home/.config" XDG_DATA_HOME="$work/home/.local/share"
export XDG_RUNTIME_DIR="$work/runtime" TARNWELL_AUDIO_SINK="fakesink sync=true"
export TARNWELL_MUSICBRAINZ_URL=http://127.0.0.1:9 TARNWELL_COVERART_URL=http://127.0.0.1:9
export TARNWELL_WIKIPEDIA_URL=http://127.0.0.1:9 TARNWELL_COMMONS_URL=http://127.0.0.1:9
mkdir -p "$XDG_CONFIG_HOME/Tarnwell" "$XDG_DATA_HOME" "$XDG_RUNTIME_DIR"
chmod 700 "$XDG_RUNTIME_DIR"
printf '[General]\ndidCompleteOnboarding=true\n' > "$XDG_CONFIG_HOME/Tarnwell/Tarnwell.conf"
unset DBUS_SESSION_BUS_ADDRESS

out=$(TARNWELL_BENCH=tag-batch timeout 600 "$app" "$music" 2> /dev/null)
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
