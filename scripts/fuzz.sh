#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Builds the libFuzzer targets with clang (ASan+UBSan) and runs each for
# SECONDS (default 60) on the seed corpus plus what earlier runs found.
# Usage: scripts/fuzz.sh [SECONDS]
# A crash leaves its input in build-fuzz/crashes/TARGET/; keep it as a
# regression case: tests/fuzz/regressions/TARGET/NAME.hex (xxd -p of the input).
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
build=build-fuzz

if [ ! -f "$build/build.ninja" ]; then
  cmake --preset fuzz > /dev/null
fi
cmake --build "$build" -j "${FUZZ_JOBS:-2}" --target fuzz_all
read -r -a targets <<< "$(tr ';' ' ' < "$build/fuzz/targets.txt")"
python3 tests/fuzz/seeds.py "$build/seeds"
# Text formats keep their seeds as files.
for dir in tests/fuzz/seeds/*/; do
  mkdir -p "$build/seeds/$(basename "$dir")"
  cp "$dir"* "$build/seeds/$(basename "$dir")/"
done
for dir in tests/fuzz/regressions/*/; do
  [ -d "$dir" ] || continue
  target=$(basename "$dir")
  mkdir -p "$build/seeds/$target"
  for hex in "$dir"*.hex; do
    [ -f "$hex" ] && xxd -r -p "$hex" > "$build/seeds/$target/$(basename "$hex" .hex)"
  done
done

status=0
for target in "${targets[@]}"; do
  mkdir -p "$build/corpus/$target" "$build/crashes/$target"
  echo "== fuzz_$target for ${seconds}s"
  if ! "$build/fuzz/fuzz_$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
      -max_len=65536 -print_final_stats=1 -artifact_prefix="$build/crashes/$target/" \
      "$build/corpus/$target" "$build/seeds/$target" 2> "$build/fuzz_$target.log"; then
    echo "fuzz_$target found a failure: see $build/fuzz_$target.log and $build/crashes/$target/"
    tail -n 30 "$build/fuzz_$target.log"
    status=1
  else
    grep -E 'stat::number_of_executed_runs|cov:' "$build/fuzz_$target.log" | tail -n 2
  fi
done
exit $status
