#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# The library at scale, the desktop program under Xvfb (tarnwell-probe memory):
#   - RSS/PSS of the program empty, and 10 s after importing 10,000 songs by 100
#     artists, 100,000 by 100 and 100,000 by 10,000 (targets: empty <= 130 MB,
#     10k <= 170 MB, 100k <= 300 MB; 10,000 artists <= 50 MB above 100)
#   - the times until the first songs are listed (100k: <= 1 s) and until all
#     are indexed (best of three runs), and the import's ratio (100k <= 10.5x
#     the 10k time and <= 11 s)
#   - the longest GUI-thread stall during and 10 s after each import (< 50 ms)
#   - CPU for one song copied into the imported folder (< 50 ms at 100k)
#   - files opened per import (strace, 10k: each once)
#   - `tarnwell-cli tags` on one small file, and over 2,000 files beside a plain
#     TagLib reader with audio properties (targets: <= 12 ms; <= 0.6x)
# The libraries are small FLAC files (bench/make_library.py), made once under
# BENCH_LIBRARIES (default /tmp/tarnwell-bench-libraries) and kept.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
build=$(cd "${1:-build}" && pwd)
probe="$build/bin/tarnwell-probe"
cli="$build/bin/tarnwell-cli"
taglib="$build/bin/taglib-tags"
root=${BENCH_LIBRARIES:-${TMPDIR:-/tmp}/tarnwell-bench-libraries}
for tool in Xvfb sox python3; do
  command -v "$tool" > /dev/null || { echo "bench_memory: $tool is missing"; exit 0; }
done

library() { # NAME SONGS ARTISTS
  local dir="$root/$1"
  if [ ! -f "$dir/.complete" ]; then
    echo "making $2 songs by $3 artists under $dir ..."
    rm -rf "$dir"
    mkdir -p "$dir"
    sox -n -r 8000 -c 1 -b 16 "$root/.seed.flac" synth 0.05 sine 440 2> /dev/null
    python3 "$here/make_library.py" "$root/.seed.flac" "$dir" "$2" "$3"
    touch "$dir/.complete"
  fi
}
mkdir -p "$root"
library 10k 10000 100
library 100k 100000 100
library 100k-artists 100000 10000

# shellcheck source=/dev/null
source "$here/session.sh"
bench_session memory

field() { awk -v k="$1" '$1 == k { print $2 }' <<< "$2"; }
run_probe() { timeout 600 "$probe" memory "$@" 2> /dev/null || true; }
# Each run starts as a first start after the welcome: no songs, no folders remembered.
fresh_home() {
  rm -rf "$XDG_DATA_HOME/Tarnwell" "$HOME/.cache/Tarnwell"
  printf '[General]\ndidCompleteOnboarding=true\n' > "$XDG_CONFIG_HOME/Tarnwell/Tarnwell.conf"
}

fresh_home
empty=$(run_probe)
echo "empty program: RSS $(field rss-mb "$empty") MB, PSS $(field pss-mb "$empty") MB (target RSS <= 130)"
# What the empty program's RSS is made of: heap and anonymous memory, and the
# mapped libraries (under Xvfb the software OpenGL renderer's LLVM is the largest).
"$probe" memory > /dev/null 2>&1 &
probe_pid=$!
sleep 8
if [ -r "/proc/$probe_pid/smaps" ]; then
  echo "  largest parts of its RSS:"
  awk '/^[0-9a-f]+-[0-9a-f]+ / { name = $6; if (name == "") name = "[anonymous]" }
       /^Rss:/ { rss[name] += $2 }
       END { for (n in rss) printf "%8.1f MB  %s\n", rss[n] / 1024, n }' "/proc/$probe_pid/smaps" | sort -rn | head -n 6
fi
wait "$probe_pid" || true

declare -A import rss
for name in 10k 100k 100k-artists; do
  fresh_home
  out=$(run_probe "$root/$name")
  # The times until listed and until imported are the shortest of three runs
  # (the disk and the machine's other work weigh on any one run); the rest is
  # the first run's.
  listed=$(field listed-ms "$out") import[$name]=$(field import-ms "$out")
  for _ in 2 3; do
    fresh_home
    again=$(run_probe "$root/$name")
    listed=$(awk -v a="$listed" -v b="$(field listed-ms "$again")" 'BEGIN { print (b != "" && b < a) ? b : a }')
    import[$name]=$(awk -v a="${import[$name]}" -v b="$(field import-ms "$again")" 'BEGIN { print (b != "" && b < a) ? b : a }')
  done
  rss[$name]=$(field rss-mb "$out")
  echo "$name ($(field songs "$out") songs): listed after $listed ms, import ${import[$name]} ms (best of 3)," \
    "RSS $(field rss-mb "$out") MB, PSS $(field pss-mb "$out") MB 10 s after," \
    "longest GUI stall $(field longest-gui-stall-ms "$out") ms," \
    "one added file $(field one-file-cpu-ms "$out") ms CPU"
done
awk -v a="${import[100k]}" -v b="${import[10k]}" 'BEGIN { if (b > 0) printf "import 100k / 10k: %.1fx (target <= 10.5x)\n", a / b }'
awk -v a="${rss[100k-artists]}" -v b="${rss[100k]}" \
  'BEGIN { if (b > 0) printf "RSS of 10,000 artists over 100 (100k songs): %+.1f MB (target <= 50)\n", a - b }'

if command -v strace > /dev/null; then
  fresh_home
  trace="$work/opens"
  strace -f -qq -e trace=openat -o "$trace" timeout 600 "$probe" memory "$root/10k" > /dev/null 2>&1 || true
  grep -o '"[^"]*\.flac"' "$trace" | grep -v probe-added | sort | uniq -c | awk '
    { files++; opens += $1; if ($1 > most) most = $1 }
    END { printf "files opened during the 10k import: %d files, %d opens, at most %d per file\n", files, opens, most }'
fi

one=$(find "$root/10k" -name "*.flac" -print -quit)
quoted() { printf '%q ' "$@"; echo; }
# Whole commands started without a shell, in turns; the shortest of each.
mapfile -t one_file < <({ quoted "$cli" tags "$one"; quoted "$build/bin/qt-floor"
  quoted "$taglib" "$one"; } | python3 "$here/best_wall.py" 10)
echo "tarnwell-cli tags on one file: ${one_file[0]} ms (best of 10, target <= 12);" \
  "a program that only loads Qt Core and prints a line: ${one_file[1]} ms," \
  "TagLib alone on the file: ${one_file[2]} ms"
echo "tarnwell-cli loads $(ldd "$cli" | wc -l) shared libraries;" \
  "GStreamer/FFmpeg/Qt GUI among them: $(ldd "$cli" | grep -cE 'libgst|libav|libQt6Gui' || true)"

if [ -x "$taglib" ]; then
  mapfile -t files < <(find "$root/10k" -name '*.flac' | sort | head -n 2000)
  mapfile -t many < <({ quoted "$cli" tags "${files[@]}"; quoted "$taglib" "${files[@]}"; } \
    | python3 "$here/best_wall.py" 5)
  awk -v a="${many[0]}" -v b="${many[1]}" 'BEGIN { printf "tags of 2,000 files: %.0f ms, TagLib with audio properties %.0f ms: %.2fx (target <= 0.6x)\n", a, b, (b > 0 ? a / b : 0) }'
fi

# Where the heap goes: the program empty and after the 10k import, under
# heaptrack; the largest allocators at the peak, and the heap's total.
if [ "${BENCH_HEAPTRACK:-1}" = 1 ] && command -v heaptrack > /dev/null; then
  for library in "" "$root/10k"; do
    fresh_home
    timeout 600 heaptrack -o "$work/heap" "$probe" memory $library > /dev/null 2>&1 || true
    data=$(ls "$work"/heap*.zst "$work"/heap*.gz 2> /dev/null | head -n 1)
    [ -n "$data" ] || continue
    echo "heap of the program ${library:+after importing $(basename "$library")}${library:-empty}:"
    heaptrack_print -f "$data" -p 1 -a 0 -T 0 -n 6 -s 0 2> /dev/null \
      | awk '/^PEAK MEMORY CONSUMERS/ { on = 1; next } on && /^[0-9.]+[KMG]?B? peak memory consumed over/ { print "  " $0; getline; print "    " $0 } /^peak heap memory consumption/ { print "  " $0 }'
    rm -f "$data"
  done
fi
