# SPDX-License-Identifier: GPL-3.0-or-later
# What the scripts that drive the real program share: their own session bus and
# X server, the program's start and stop, polling, MPRIS and a small library.
# Usage, first thing in a script: source session.sh "$@" (its arguments: the
# program); it runs the script again on a private session bus.
for tool in Xvfb xdotool sox metaflac playerctl dbus-run-session; do
  command -v "$tool" > /dev/null || { echo "FAIL: $tool is missing (scripts/install-deps.sh installs it)"; exit 1; }
done
[ -n "${TARNWELL_E2E_BUS:-}" ] || TARNWELL_E2E_BUS=1 exec dbus-run-session -- bash "$0" "$@"

app=$1
work=$(mktemp -d "${TARNWELL_TEST_ROOT:-${TMPDIR:-/tmp}}/e2e.XXXXXX")
app_pid="" xvfb_pid=""
trap '[ -n "$app_pid" ] && kill "$app_pid" 2> /dev/null; [ -n "$xvfb_pid" ] && kill "$xvfb_pid" 2> /dev/null; true' EXIT INT TERM
# shellcheck source=/dev/null
source "$(dirname "${BASH_SOURCE[0]}")/../../scripts/lib/xvfb.sh"
start_xvfb "$work"
export QT_QPA_PLATFORM=xcb QT_LOGGING_RULES="tarnwell.app.debug=true"
playlists="$XDG_DATA_HOME/Tarnwell/playlists.json"
library="$HOME/Music/Library"
: > "$work/log"

fail() {
  echo "FAIL: $*"
  declare -F shot > /dev/null && { shot failure || true; }
  echo "--- program log"
  cat "$work/log"
  exit 1
}
ok() { echo "ok: $*"; }
# Polls for up to 30 s until a command succeeds.
wait_until() { for _ in $(seq 300); do "$@" && return 0; sleep 0.1; done; return 1; }
wait_for_log() { wait_until grep -q -- "$1" "$work/log"; }
mpris() { playerctl -p tarnwell "$@" 2> /dev/null || true; }
# Polls until a command prints the expected text; prints what it saw last.
expect() { # want command...
  local want=$1 got=""
  shift
  for _ in $(seq 300); do
    got=$("$@" 2> /dev/null || true)
    [ "$got" = "$want" ] && return 0
    sleep 0.1
  done
  echo "$got"
  return 1
}
launch() { # [arguments]
  : > "$work/log"
  "$app" "$@" 2> "$work/log" &
  app_pid=$!
  wait_for_window || fail "no window"
  xdotool windowfocus --sync "$window" 2> /dev/null || true
  wait_until sh -c 'playerctl -l 2> /dev/null | grep -q tarnwell' || fail "not on the bus as an MPRIS player"
}
quit() { kill "$app_pid" 2> /dev/null || true; wait "$app_pid" 2> /dev/null || true; app_pid=""; }

song() { # folder file [artist album title]: thirty seconds, so nothing ends on its own
  mkdir -p "$library/$1"
  sox -n -r 22050 -c 1 -b 16 "$library/$1/$2.flac" synth 30 sine 440 2> /dev/null
  [ $# -eq 2 ] || metaflac --set-tag="ARTIST=$3" --set-tag="ALBUM=$4" --set-tag="TITLE=$5" "$library/$1/$2.flac"
}
# The names the song list shows, in its order.
list_names() { mapfile -t names < <("$(dirname "$app")/tarnwell-cli" scan "$library" | LC_ALL=C sed 's|.*/||; s|\.[^.]*$||'); }
in_playlist() { # name: the file names of its songs
  python3 -c 'import json, sys, urllib.parse
for p in json.load(open(sys.argv[1])):
    if p["name"] == sys.argv[2]:
        print(" ".join(urllib.parse.unquote(t["url"]).rsplit("/", 1)[-1] for t in p["tracks"]))' "$playlists" "$1"
}
