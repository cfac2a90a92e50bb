#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# tarnwell-cli play end to end: plays files in order and ends; plays samples as
# they are without levelling; refuses what it can't play; answers a desktop's
# media keys over MPRIS (playerctl on the bus dbus-run-session gives it).
# Usage: cli_play.sh TARNWELL-CLI
set -uo pipefail
cli=$1
dir=$(mktemp -d "${TMPDIR:-/tmp}/cli-play.XXXXXX")
player_pid=
trap '[ -n "$player_pid" ] && kill "$player_pid" 2>/dev/null; rm -rf "$dir"' EXIT
failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }
tone() { ffmpeg -nostdin -v error -y -f lavfi -i "sine=frequency=440:duration=$2" -ac 2 "$1"; }
for f in one.wav two.flac; do tone "$dir/$f" 1.5; done
for f in "long A.wav" "long B.wav"; do tone "$dir/$f" 30; done
printf 'not audio\n' > "$dir/notes.mp3"

out=$("$cli" play "$dir/one.wav" "$dir/two.flac" 2>/dev/null) || fail "play of two files exited with $?"
[ "$(grep '^playing' <<<"$out")" = "$(printf 'playing %s\nplaying %s' "$dir/one.wav" "$dir/two.flac")" ] ||
  fail "songs played: $out"
grep -Eq '^0:0[01] / 0:01 playing$' <<<"$out" || fail "no position line: $out"

# --no-levelling plays a song tagged -6 dB as it is, joined without a gap.
cp "$dir/two.flac" "$dir/quiet.flac"
metaflac --set-tag="REPLAYGAIN_TRACK_GAIN=-6.02 dB" --set-tag=REPLAYGAIN_TRACK_PEAK=0.5 "$dir/quiet.flac"
ffmpeg -nostdin -v error -i "$dir/two.flac" -f s16le - > "$dir/two.raw"
TARNWELL_AUDIO_SINK="capsfilter caps=audio/x-raw,format=S16LE,layout=interleaved,rate=44100,channels=2 ! filesink location=$dir/rec.raw" \
  "$cli" play --no-levelling "$dir/two.flac" "$dir/quiet.flac" > /dev/null 2>&1
cat "$dir/two.raw" "$dir/two.raw" | cmp -s - "$dir/rec.raw" || fail "--no-levelling changed the samples"

# What can't be played exits with 1, a usage error with 2.
exits() { local want=$1; shift; "$cli" play "$@" >/dev/null 2>&1; local got=$?; [ "$got" -eq "$want" ] || fail "play $* exited with $got, not $want"; }
exits 1 "$dir/notes.mp3"
exits 1 "$dir/missing.wav"
exits 2
exits 2 --loud "$dir/one.wav"

"$cli" play "$dir/long A.wav" "$dir/long B.wav" > "$dir/out.txt" 2>"$dir/err.txt" &
player_pid=$!
pc() { playerctl --player=tarnwell "$@" 2>/dev/null; }
# wait_for EXPECTED COMMAND...: polls until it answers that (or 30 s pass).
wait_for() {
  local want=$1 got=; shift
  for _ in $(seq 300); do got=$("$@"); [ "$got" = "$want" ] && return 0; sleep 0.1; done
  fail "$* gave '$got', expected '$want'"
}
last_state() { tail -n 1 "$dir/out.txt" | awk '{ print $NF }'; }
wait_for "Playing long A 30000000" pc metadata --format '{{status}} {{title}} {{mpris:length}}'
pc play-pause
wait_for paused last_state
pc next
wait_for "long B" pc metadata title
kill -INT "$player_pid"
wait_for stopped last_state
wait "$player_pid" || fail "stopping with Ctrl+C exited with $?"
player_pid=
wait_for "" pc status

[ "$failures" -eq 0 ] || { echo "$failures check(s) failed"; exit 1; }
echo "all checks passed"
