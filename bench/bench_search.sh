#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Search: query times over an index of 100,000 songs (Google Benchmark), then
# building the index of 10,000 real tagged files against reading their tags
# with `tarnwell-cli tags` (warm cache, best of three).
set -euo pipefail
build=${1:-build}
cli="$build/bin/tarnwell-cli"
tree=${BENCH_TREE:-${TMPDIR:-/tmp}/tarnwell-bench-search}
files=${BENCH_FILES:-10000}

if [ -x "$build/bin/bench_search" ]; then
  "$build/bin/bench_search" --benchmark_counters_tabular=true 2>/dev/null | grep -E '^(Benchmark|BM_|-)'
  echo "targets: median_us < 1000 and p99_us < 3000 for every query kind"
else
  echo "bench_search not built (Google Benchmark missing?)"
fi

probe=$("$cli" tags 2>&1 || true)
if grep -q "unknown command" <<< "$probe"; then
  echo "tags command not available yet"
  exit 0
fi
for tool in sox ffmpeg; do
  command -v "$tool" > /dev/null || { echo "$tool is missing: index rebuild not measured"; exit 0; }
done
# The system's Python has mutagen (python3-mutagen); another python3 may come first on PATH.
py=
for candidate in python3 /usr/bin/python3; do
  if "$candidate" -c 'import mutagen' 2> /dev/null; then py=$candidate; break; fi
done
[ -n "$py" ] || { echo "mutagen is missing: index rebuild not measured"; exit 0; }

if [ ! -f "$tree/.complete-$files" ]; then
  echo "making $files tagged files under $tree ..."
  rm -rf "$tree"
  mkdir -p "$tree"
  sox -q -n -r 44100 -c 2 "$tree/.base.flac" synth 0.3 sine 440 vol 0.1
  ffmpeg -loglevel error -y -i "$tree/.base.flac" -codec:a libmp3lame -b:a 64k "$tree/.base.mp3"
  "$py" - "$tree" "$files" <<'PY'
import os, random, shutil, sys
from mutagen.flac import FLAC
from mutagen.easyid3 import EasyID3
root, files = sys.argv[1], int(sys.argv[2])
random.seed(11)
words = ("silver lantern river night gold echo harbor velvet paper ghost summer winter glass "
         "wolves garden electric neon ocean static morning shadow canyon orchid thunder").split()
def phrase(lo, hi):
    return " ".join(random.choice(words).title() for _ in range(random.randint(lo, hi)))
made = 0
while made < files:
    artist = phrase(1, 3)
    for a in range(random.randint(1, 3)):
        album = phrase(1, 3)
        folder = os.path.join(root, artist, album)
        os.makedirs(folder, exist_ok=True)
        for s in range(random.randint(8, 14)):
            if made == files:
                break
            ext = "flac" if random.random() < 0.7 else "mp3"
            path = os.path.join(folder, f"{s + 1:02d} {phrase(1, 4)}.{ext}")
            shutil.copyfile(os.path.join(root, ".base." + ext), path)
            tags = FLAC(path) if ext == "flac" else EasyID3()
            tags["title"] = phrase(1, 4)
            tags["artist"] = artist
            tags["album"] = album
            tags["genre"] = "Rock"
            if ext == "flac":
                tags.save()
            else:
                tags.save(path)
            made += 1
PY
  rm -f "$tree/.base.flac" "$tree/.base.mp3"
  touch "$tree/.complete-$files"
fi

mapfile -t paths < <("$cli" scan "$tree")
echo "files: ${#paths[@]}"

best() {
  local best_ms=999999
  for _ in 1 2 3; do
    local start end ms
    start=$(date +%s%N)
    "$@" > /dev/null
    end=$(date +%s%N)
    ms=$(( (end - start) / 1000000 ))
    [ "$ms" -lt "$best_ms" ] && best_ms=$ms
  done
  echo "$best_ms"
}
"$cli" tags "${paths[@]}" > /dev/null # warm the cache
tags_ms=$(best "$cli" tags "${paths[@]}")
scan_ms=$(best "$cli" scan "$tree")
search_ms=$(best "$cli" search "$tree" "qqqzzz")
index_ms=$(( search_ms - scan_ms ))
echo "tarnwell-cli tags (all files):         ${tags_ms} ms"
echo "tarnwell-cli search (scan+index+query): ${search_ms} ms"
echo "tarnwell-cli scan:                      ${scan_ms} ms"
awk -v s="$search_ms" -v i="$index_ms" -v t="$tags_ms" 'BEGIN {
  t = t > 0 ? t : 1
  printf "ratio search/tags: %.2f, index alone/tags: %.2f (target <= 1.2)\n", s / t, i / t }'
