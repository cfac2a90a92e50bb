#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# The song list of a 100,000-song library in the real program under Xvfb:
# the time from choosing "All Songs" until the list is on screen, and the
# frame times while it is flung a screen a frame ("fling") and sent to random
# places as by the scroll bar ("jump"). A frame should stay near one refresh,
# 16.7 ms at 60 Hz; Xvfb renders in software, slower than a real display.
set -euo pipefail
build=$(cd "${1:-build}" && pwd)
app="$build/bin/tarnwell-probe"
tree=${BENCH_SCROLL_TREE:-${TMPDIR:-/tmp}/tarnwell-bench-scroll}
count=${BENCH_SONGS:-100000}
for tool in Xvfb sox python3; do
  command -v "$tool" > /dev/null || { echo "bench_scroll: $tool is missing"; exit 0; }
done

# 1,000 folders of 100 copies of one short song; made once and kept.
if [ ! -f "$tree/.complete-$count" ]; then
  echo "making $count songs under $tree ..."
  rm -rf "$tree"
  mkdir -p "$tree"
  sox -n -r 8000 -c 1 -b 16 "$tree/.seed.flac" synth 0.05 sine 440 2> /dev/null
  python3 - "$tree" "$count" << 'PY'
import os, shutil, sys
root, count = sys.argv[1], int(sys.argv[2])
seed = os.path.join(root, ".seed.flac")
for i in range(count):
    folder = os.path.join(root, f"Folder {i // 100:04d}")
    if i % 100 == 0:
        os.makedirs(folder, exist_ok=True)
    shutil.copyfile(seed, os.path.join(folder, f"Song {i:06d}.flac"))
PY
  touch "$tree/.complete-$count"
fi

# shellcheck source=/dev/null
source "$(dirname "${BASH_SOURCE[0]}")/session.sh"
bench_session scroll

out=$(timeout 600 "$app" scroll "$tree" 2> /dev/null)
value() { awk -v k="$1" '$1 == k { print $2 }' <<< "$out"; }
echo "songs in the list: $(value songs)"
echo "\"All Songs\" to the list on screen: $(value show-all-songs-ms) ms"
for kind in fling jump; do
  echo "$kind, $(value $kind-frames) frames: median $(value $kind-median-frame-ms) ms," \
    "99th percentile $(value $kind-p99-frame-ms) ms, worst $(value $kind-worst-frame-ms) ms"
done
