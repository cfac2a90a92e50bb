#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Tag reading and writing against the yardsticks, warm cache, best of three:
#  - `tarnwell-cli tags` against a plain TagLib FileRef reader (bench/taglib_tags.cpp)
#    over a mixed library of 10,000 files (FLAC, MP3, M4A, WAV, AIFF; one in
#    twenty with a 600 KiB picture), for the FLAC files alone and for all;
#  - `tarnwell-cli write` over 1,000 FLAC files against cp of the same files
#    (and cp followed by a flush of each copy to disk, which a safe rewrite
#    also pays).
set -euo pipefail
build=${1:-build}
cli="$build/bin/tarnwell-cli"
taglib="$build/bin/taglib-tags"
root=${BENCH_TAGS_DIR:-${TMPDIR:-/tmp}/tarnwell-bench-tags}
files=${BENCH_TAG_FILES:-10000}
writes=${BENCH_WRITE_FILES:-1000}
[ -x "$taglib" ] || { echo "bench_tags: $taglib is missing (build the bench folder)"; exit 1; }

library="$root/library"
if [ ! -f "$library/.complete-$files" ]; then
  echo "making $files files under $library ..."
  rm -rf "$root"
  mkdir -p "$root/templates" "$library"
  t="$root/templates"
  python3 - "$t/cover.ppm" <<'PY'
import random, sys
random.seed(3)
w = h = 420  # random pixels: the PNG stays above 600 KiB
with open(sys.argv[1], "wb") as f:
    f.write(b"P6 %d %d 255\n" % (w, h))
    f.write(bytes(random.getrandbits(8) for _ in range(w * h * 3)))
PY
  ffmpeg -nostdin -v error -y -i "$t/cover.ppm" "$t/cover.png"
  sine=(-nostdin -v error -y -f lavfi -i "sine=frequency=440:duration=2")
  tags=(-metadata "title=A Song Title" -metadata "artist=Some Artist" -metadata "album=An Album" -metadata genre=Rock)
  ffmpeg "${sine[@]}" "${tags[@]}" -ac 2 "$t/plain.flac"
  ffmpeg "${sine[@]}" "${tags[@]}" "$t/plain.mp3"
  ffmpeg "${sine[@]}" "${tags[@]}" -c:a aac "$t/plain.m4a"
  ffmpeg "${sine[@]}" "${tags[@]}" "$t/plain.wav"
  ffmpeg "${sine[@]}" "${tags[@]}" -write_id3v2 1 "$t/plain.aiff"
  cp "$t/plain.flac" "$t/picture.flac"
  metaflac --import-picture-from="$t/cover.png" "$t/picture.flac"
  for ext in mp3 m4a; do
    ffmpeg -nostdin -v error -y -i "$t/plain.$ext" -i "$t/cover.png" -map 0 -map 1 -c copy \
      -disposition:v attached_pic "$t/picture.$ext"
  done
  exts=(flac mp3 m4a wav aiff)
  for ((i = 0; i < files; i++)); do
    ext=${exts[i % 5]}
    kind=plain
    if (( i % 20 < 5 )) && [ -f "$t/picture.$ext" ]; then kind=picture; fi
    dir="$library/$(( i / 100 ))"
    mkdir -p "$dir"
    cp "$t/$kind.$ext" "$dir/$i.$ext"
  done
  touch "$library/.complete-$files"
fi

find "$library" -type f -name '*.*' ! -name '.*' | sort > "$root/all.txt"
grep '\.flac$' "$root/all.txt" > "$root/flac.txt"
cat "$root/all.txt" | xargs cat > /dev/null # warm the cache

best_ms() {
  local best=999999999
  for _ in 1 2 3; do
    local start end
    start=$(date +%s%N)
    "$@" > /dev/null
    end=$(date +%s%N)
    (( (end - start) / 1000000 < best )) && best=$(( (end - start) / 1000000 ))
  done
  echo "$best"
}
ratio() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.2f", (b > 0 ? a / b : 0) }'; }

for set in flac all; do
  mapfile -t list < "$root/$set.txt"
  ours=$(best_ms "$cli" tags "${list[@]}")
  theirs=$(best_ms "$taglib" "${list[@]}")
  echo "tags, $set (${#list[@]} files): tarnwell-cli ${ours} ms, TagLib FileRef ${theirs} ms," \
       "throughput ratio $(ratio "$theirs" "$ours") (target >= $([ $set = flac ] && echo 1.5 || echo 1.0))"
done

# Writing: every file rewritten whole, as a save does, in one process (the way
# the batch editor saves many files) against one cp of the same files. The
# files hold 10 s of noise (FLAC can't shrink it), one in four a 600 KiB picture.
w="$root/write"
if [ ! -f "$w/.complete-$writes" ]; then
  rm -rf "$w"
  mkdir -p "$w/templates"
  ffmpeg -nostdin -v error -y -f lavfi -i "anoisesrc=color=pink:duration=10:sample_rate=44100" -ac 2 \
    -metadata title=Noise -metadata artist=Someone -metadata genre=Ambient "$w/templates/plain.flac"
  cp "$w/templates/plain.flac" "$w/templates/picture.flac"
  metaflac --import-picture-from="$root/templates/cover.png" "$w/templates/picture.flac"
  mkdir -p "$w/src"
  for ((i = 0; i < writes; i++)); do
    kind=plain; (( i % 4 == 0 )) && kind=picture
    cp "$w/templates/$kind.flac" "$w/src/$i.flac"
  done
  touch "$w/.complete-$writes"
fi
rm -rf "$w/copies"
mkdir -p "$w/copies"
sync
mb=$(du -sm "$w/src" | cut -f1)
run_writes() { "$cli" write "$w"/src/*.flac --title "Title $RANDOM$RANDOM"; }
run_cp() { cp "$w"/src/*.flac "$w/copies/"; }
run_cp_sync() { cp "$w"/src/*.flac "$w/copies/" && sync "$w"/copies/*.flac; }
write_ms=$(best_ms run_writes)
cp_ms=$(best_ms run_cp)
cp_sync_ms=$(best_ms run_cp_sync)
echo "write, $writes FLAC files ($mb MB): tarnwell-cli write ${write_ms} ms, cp ${cp_ms} ms, cp + sync ${cp_sync_ms} ms"
echo "ratio write/cp: $(ratio "$write_ms" "$cp_ms") (target <= 1.5), write/(cp + sync): $(ratio "$write_ms" "$cp_sync_ms")"
