#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Playback:
# - load-to-first-buffer latency of a local FLAC (target: median under 50 ms);
# - the gap at the joins between songs of four lossless formats, in samples,
#   from a recording of what the sink received (target 0: nothing missing or
#   added); without gapless each join also waits for a load like the above;
# - CPU time of playing two 30 s songs tagged -6 dB, joined and levelled,
#   against the same with neither (the player before both existed); target:
#   at most 10 % more, and under 2 % of one core.
# The sink keeps real time without a sound card.
set -euo pipefail
build=${1:-build}
cli="$build/bin/tarnwell-cli"
latency="$build/bin/playback_latency"
seconds=${BENCH_PLAY_SECONDS:-60}
loads=${BENCH_LOADS:-30}
dir=${BENCH_AUDIO:-${TMPDIR:-/tmp}/tarnwell-bench-playback}
export TARNWELL_AUDIO_SINK=${TARNWELL_AUDIO_SINK:-fakesink sync=true}
raw="capsfilter caps=audio/x-raw,format=S16LE,layout=interleaved,rate=44100,channels=2"

mkdir -p "$dir"
# A sweep rather than a pure tone, so the encoder has real work to undo.
sweep() { [ -s "$1" ] || sox -n -r 44100 -b 16 -c 2 "$1" synth "$2" sine "$3" vol 0.5; }
flac="$dir/tone-$seconds.flac"
sweep "$flac" "$seconds" 100-8000

echo "sink: $TARNWELL_AUDIO_SINK"
result=$(BENCH_SETTLE_MS=${BENCH_SETTLE_MS:-300} "$latency" "$flac" "$loads")
echo "load to first buffer, $(basename "$flac"): $result"
median=$(sed -n 's/.*median \([0-9.]*\) ms.*/\1/p' <<<"$result")
awk -v m="$median" 'BEGIN { printf "latency median %.1f ms (target < 50 ms): %s\n", m, (m < 50 ? "ok" : "OVER") }'

# The joins: what the sink received against ffmpeg's decoding of each file.
songs=()
for kind in flac wav aiff m4a; do
  song="$dir/join-$kind.$kind"
  if [ ! -s "$song" ]; then
    sox -n -r 44100 -b 16 -c 2 "$dir/join.wav" synth 3 sine "$((200 + ${#songs[@]} * 150))" vol 0.5
    ffmpeg -nostdin -v error -y -i "$dir/join.wav" $([ "$kind" = m4a ] && echo -c:a alac) "$song"
  fi
  ffmpeg -nostdin -v error -i "$song" -f s16le - > "$song.raw"
  songs+=("$song")
done
TARNWELL_AUDIO_SINK="$raw ! filesink location=$dir/joins.raw" "$cli" play "${songs[@]}" > /dev/null 2>&1
python3 - "$dir/joins.raw" "${songs[@]/%/.raw}" <<'EOF'
import sys
recording = open(sys.argv[1], 'rb').read()
parts = [open(p, 'rb').read() for p in sys.argv[2:]]
frame = 4
end = len(parts[0]) if recording.startswith(parts[0]) else None
worst = 0
for i, part in enumerate(parts[1:], 1):
    found = recording.find(part[:8192], 0 if end is None else max(0, end - 44100 * frame))
    if end is None or found < 0:
        print(f"join {i}: song {i + 1} not found whole in the recording")
        worst = None
        break
    gap = (found - end) // frame
    worst = max(worst, abs(gap))
    print(f"join {i}: " + (f"{gap} samples added" if gap > 0 else f"{-gap} samples missing" if gap < 0
                            else "no sample missing or added"))
    end = found + len(part) if recording[found:found + len(part)] == part else None
extra = None if end is None else (len(recording) - end) // frame
print(f"join gap, worst of {len(parts) - 1} joins: {worst} samples (target 0): "
      f"{'ok' if worst == 0 and extra == 0 else 'OVER'}")
EOF
awk -v m="$median" 'BEGIN { printf "without joining, each join waits for a load: about %.1f ms, %d samples\n", m, m * 44.1 }'

# CPU while playing, joined and levelled against neither.
half=$((seconds / 2))
for n in 1 2; do
  song="$dir/levelled-$n-$half.flac"
  if [ ! -s "$song" ]; then
    sweep "$song" "$half" "$((n * 100))-8000"
    metaflac --set-tag="REPLAYGAIN_TRACK_GAIN=-6.02 dB" --set-tag=REPLAYGAIN_TRACK_PEAK=0.5 "$song"
  fi
done
cpu_of() {
  /usr/bin/time -o "$dir/time.txt" -f '%U %S %e' "$cli" play "$@" "$dir/levelled-1-$half.flac" \
    "$dir/levelled-2-$half.flac" > /dev/null 2>&1
  awk '{ printf "%.3f %.1f", $1 + $2, $3 }' "$dir/time.txt"
}
echo "playing 2 x $half s of FLAC through tarnwell-cli play, twice ..."
read -r plain plain_wall <<<"$(cpu_of --no-gapless --no-levelling)"
read -r full full_wall <<<"$(cpu_of)"
awk -v p="$plain" -v pw="$plain_wall" -v f="$full" -v fw="$full_wall" 'BEGIN {
  printf "cpu without joins or levelling: %.2f s over %.1f s wall (%.2f%% of one core)\n", p, pw, 100 * p / pw
  share = 100 * f / fw; ratio = p > 0 ? f / p : 0
  printf "cpu joined and levelled: %.2f s over %.1f s wall (%.2f%% of one core, target < 2%%): %s\n",
         f, fw, share, (share < 2 ? "ok" : "OVER")
  printf "cpu ratio, joined and levelled to neither: %.2f (target <= 1.10): %s\n", ratio,
         (ratio <= 1.10 ? "ok" : "OVER")
}'
