#!/bin/sh
# SPDX-License-Identifier: GPL-3.0-or-later
# Runs a test with a home of its own in a temporary folder, removed afterwards.
# Sound goes nowhere; the web services are a closed loopback port unless set.
set -u
root=$(mktemp -d "${TMPDIR:-/tmp}/tarnwell-test.XXXXXX") || exit 1
trap 'chmod -R u+rwx "$root" 2>/dev/null; rm -rf "$root"' EXIT INT TERM
export HOME="$root/home" XDG_RUNTIME_DIR="$root/runtime" TARNWELL_TEST_ROOT="$root"
export XDG_DATA_HOME="$HOME/.local/share" XDG_CONFIG_HOME="$HOME/.config" XDG_CACHE_HOME="$HOME/.cache" \
  XDG_STATE_HOME="$HOME/.local/state"
mkdir -p "$XDG_DATA_HOME" "$XDG_CONFIG_HOME" "$XDG_CACHE_HOME" "$XDG_STATE_HOME" "$HOME/Music"
mkdir -m 700 "$XDG_RUNTIME_DIR"
echo 'XDG_MUSIC_DIR="$HOME/Music"' > "$XDG_CONFIG_HOME/user-dirs.dirs"
export QT_QPA_PLATFORM="${QT_QPA_PLATFORM:-offscreen}" TARNWELL_AUDIO_SINK="${TARNWELL_AUDIO_SINK:-fakesink sync=true}"
n="http://127.0.0.1:9"
export TARNWELL_MUSICBRAINZ_URL="${TARNWELL_MUSICBRAINZ_URL:-$n}" TARNWELL_COVERART_URL="${TARNWELL_COVERART_URL:-$n}" \
  TARNWELL_WIKIPEDIA_URL="${TARNWELL_WIKIPEDIA_URL:-$n}" TARNWELL_COMMONS_URL="${TARNWELL_COMMONS_URL:-$n}" \
  TARNWELL_ONBOARDING_IMAGE_URL="${TARNWELL_ONBOARDING_IMAGE_URL:-$n/onboarding.jpg}" \
  TARNWELL_UPDATE_FEED_URL="${TARNWELL_UPDATE_FEED_URL:-$n/appcast.xml}"
unset DBUS_SESSION_BUS_ADDRESS
"$@"
