# SPDX-License-Identifier: GPL-3.0-or-later
# A private X server for scripts that drive the program's window.
# Usage: source this file, then `start_xvfb WORK`: starts Xvfb (1280x800),
# sets xvfb_pid and exports DISPLAY. The caller kills $xvfb_pid when done.

start_xvfb() {
  local display_file="$1/display"
  # Xvfb picks a free display number and writes it to fd 3.
  exec 3> "$display_file"
  Xvfb -displayfd 3 -noreset -screen 0 1280x800x24 -nolisten tcp > /dev/null 2>&1 &
  xvfb_pid=$!
  exec 3>&-
  for _ in $(seq 50); do [ -s "$display_file" ] && break; sleep 0.1; done
  [ -s "$display_file" ] || { echo "Xvfb did not start" >&2; return 1; }
  DISPLAY=":$(cat "$display_file")"
  export DISPLAY
}

# Waits up to 10 s for the program's window and sets `window` to its id;
# fails when none shows.
wait_for_window() {
  window=""
  for _ in $(seq 100); do
    window=$(xdotool search --onlyvisible --name '^Tarnwell$' 2> /dev/null | head -1 || true)
    [ -n "$window" ] && return 0
    sleep 0.1
  done
  return 1
}
