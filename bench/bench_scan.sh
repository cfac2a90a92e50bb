#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Folder scan against find(1): a tree of 100,000 files in 2,000 folders, warm cache.
set -euo pipefail
build=${1:-build}
cli="$build/bin/tarnwell-cli"
tree=${BENCH_TREE:-${TMPDIR:-/tmp}/tarnwell-bench-scan}
files=${BENCH_FILES:-100000}
folders=${BENCH_FOLDERS:-2000}

if [ ! -f "$tree/.complete-$files-$folders" ]; then
  echo "building $files files in $folders folders under $tree ..."
  rm -rf "$tree"
  python3 - "$tree" "$files" "$folders" <<'PY'
import os, random, sys
root, files, folders = sys.argv[1], int(sys.argv[2]), int(sys.argv[3])
random.seed(7)
exts = ["mp3", "flac", "m4a", "wav", "aiff"]
words = "blue night river song love gold fire rain road heart light dream".split()
per = files // folders
for d in range(folders):
    folder = os.path.join(root, f"Artist {d // 10:03d}", f"Album {d:04d}")
    os.makedirs(folder, exist_ok=True)
    for i in range(per):
        name = f"{i + 1:02d} {random.choice(words).title()} {random.choice(words)}.{random.choice(exts)}"
        open(os.path.join(folder, name), "wb").close()
open(os.path.join(root, f".complete-{files}-{folders}"), "w").close()
PY
fi

# Warm the cache, then time the best of five runs of each.
find "$tree" -type f > /dev/null
"$cli" scan "$tree" > /dev/null
best() {
  local best_ms=999999
  for _ in 1 2 3 4 5; do
    local start end ms
    start=$(date +%s%N)
    "$@" > /dev/null
    end=$(date +%s%N)
    ms=$(( (end - start) / 1000000 ))
    [ "$ms" -lt "$best_ms" ] && best_ms=$ms
  done
  echo "$best_ms"
}
find_ms=$(best find "$tree" -type f)
scan_ms=$(best "$cli" scan "$tree")
count=$("$cli" scan "$tree" | wc -l)
echo "files found: $count"
echo "find -type f:      ${find_ms} ms"
echo "tarnwell-cli scan: ${scan_ms} ms"
awk -v a="$scan_ms" -v b="$find_ms" 'BEGIN { printf "ratio scan/find: %.2f (target <= 1.5)\n", a / (b > 0 ? b : 1) }'
