#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Runs the whole test suite (or any command given) on a busy machine: two
# CPU-bound processes per core run beside it for as long as it runs, the way a
# laptop compiling or indexing in the background would be. The tests must stay
# green under this load; speed is measured in bench/, not here.
#
# Usage: scripts/test-under-load.sh [COMMAND...]     (default: make test)
#        LOAD_PER_CORE=3 scripts/test-under-load.sh
set -euo pipefail
cd "$(dirname "$0")/.."

per_core=${LOAD_PER_CORE:-2}
cores=$(nproc)
burners=()
stop_load() {
  for pid in "${burners[@]}"; do kill "$pid" 2> /dev/null || true; done
  wait "${burners[@]}" 2> /dev/null || true
}
trap stop_load EXIT INT TERM

for _ in $(seq $((per_core * cores))); do
  # A plain shell loop: pure CPU, no memory, no I/O.
  bash -c 'while :; do :; done' &
  burners+=("$!")
done
echo "test-under-load: ${#burners[@]} busy processes on $cores cores"

if [ $# -eq 0 ]; then set -- make test; fi
start=$(date +%s)
status=0
"$@" || status=$?
echo "test-under-load: '$*' exited $status after $(($(date +%s) - start)) s under load"
exit $status
