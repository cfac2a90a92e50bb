# SPDX-License-Identifier: GPL-3.0-or-later
# The setting for benchmarks that run the program itself: a temporary folder,
# a private X server, a home of its own where the welcome is already passed,
# sound to nowhere and the web services on a closed loopback port.
# Usage: source this file, then `bench_session NAME`: sets work (removed on
# exit) and xvfb_pid, exports DISPLAY, HOME and the XDG folders.

bench_session() {
  work=$(mktemp -d "${TMPDIR:-/tmp}/tarnwell-bench-$1.XXXXXX")
  xvfb_pid=""
  trap '[ -n "$xvfb_pid" ] && kill "$xvfb_pid" 2> /dev/null; rm -rf "$work"' EXIT
  trap 'exit 1' INT TERM
  # shellcheck source=/dev/null
  source "$(dirname "${BASH_SOURCE[0]}")/../scripts/lib/xvfb.sh"
  start_xvfb "$work"
  export HOME="$work/home" XDG_CONFIG_HOME="$work/home/.config" XDG_DATA_HOME="$work/home/.local/share"
  export XDG_RUNTIME_DIR="$work/runtime" TARNWELL_AUDIO_SINK="fakesink sync=true"
  local nowhere=http://127.0.0.1:9
  export TARNWELL_MUSICBRAINZ_URL=$nowhere TARNWELL_COVERART_URL=$nowhere
  export TARNWELL_WIKIPEDIA_URL=$nowhere TARNWELL_COMMONS_URL=$nowhere
  export TARNWELL_ONBOARDING_IMAGE_URL=$nowhere/onboarding.jpg
  mkdir -p "$XDG_CONFIG_HOME/Tarnwell" "$XDG_DATA_HOME" "$XDG_RUNTIME_DIR"
  chmod 700 "$XDG_RUNTIME_DIR"
  printf '[General]\ndidCompleteOnboarding=true\n' > "$XDG_CONFIG_HOME/Tarnwell/Tarnwell.conf"
  unset DBUS_SESSION_BUS_ADDRESS
}
