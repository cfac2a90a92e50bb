#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Playback: load-to-first-buffer latency of a local FLAC (target: median under
# 50 ms) and the CPU time of playing a 60 s FLAC from start to end (target:
# under 2% of one core). The sink keeps real time without a sound card.
set -euo pipefail
build=${1:-build}
cli="$build/bin/tarnwell-cli"
latency="$build/bin/playback_latency"
seconds=${BENCH_PLAY_SECONDS:-60}
loads=${BENCH_LOADS:-30}
dir=${BENCH_AUDIO:-${TMPDIR:-/tmp}/tarnwell-bench-playback}
export TARNWELL_AUDIO_SINK=${TARNWELL_AUDIO_SINK:-fakesink sync=true}

mkdir -p "$dir"
flac="$dir/tone-$seconds.flac"
if [ ! -s "$flac" ]; then
  # A sweep rather than a pure tone, so the encoder has real work to undo.
  sox -n -r 44100 -b 16 -c 2 "$flac" synth "$seconds" sine 100-8000 vol 0.5
fi

echo "sink: $TARNWELL_AUDIO_SINK"
result=$(BENCH_SETTLE_MS=${BENCH_SETTLE_MS:-300} "$latency" "$flac" "$loads")
echo "load to first buffer, $(basename "$flac"): $result"
median=$(sed -n 's/.*median \([0-9.]*\) ms.*/\1/p' <<<"$result")
awk -v m="$median" 'BEGIN { printf "latency median %.1f ms (target < 50 ms): %s\n", m, (m < 50 ? "ok" : "OVER") }'

echo "playing $seconds s of FLAC through tarnwell-cli play ..."
/usr/bin/time -o "$dir/time.txt" -f '%U %S %e' "$cli" play "$flac" > /dev/null 2>&1
read -r user sys wall < "$dir/time.txt"
awk -v u="$user" -v s="$sys" -v w="$wall" 'BEGIN {
  cpu = u + s; share = 100 * cpu / (w > 0 ? w : 1)
  printf "cpu %.2f s (user %.2f, sys %.2f) over %.1f s wall: %.2f%% of one core (target < 2%%): %s\n",
         cpu, u, s, w, share, (share < 2 ? "ok" : "OVER")
}'
