#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Runs every benchmark script and prints its figures. Usage: bench/run.sh [BUILD]
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
build=$(cd "${1:-build}" && pwd)
for script in "$here"/bench_*.sh; do
  echo "== $(basename "$script")"
  bash "$script" "$build"
done
