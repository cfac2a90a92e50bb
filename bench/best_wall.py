#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Wall time of whole commands, taken in turns: best_wall.py RUNS < COMMANDS

COMMANDS holds one command a line, split as a shell splits words (quote with
printf %q); read from stdin, as a long list of files can't be one argument.
Every command runs once unmeasured, then RUNS times in turns (A B A B ...), so
that each sees the machine alike; prints each command's shortest run in ms,
one a line. Started without a shell, output thrown away: the figure is the
command's own start, work and exit."""
import shlex
import subprocess
import sys
import time

runs = int(sys.argv[1])
commands = [shlex.split(line) for line in sys.stdin if line.strip()]
best = [float("inf")] * len(commands)
for turn in range(runs + 1):
    for i, command in enumerate(commands):
        start = time.perf_counter()
        subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL, check=False)
        took = time.perf_counter() - start
        if turn > 0:
            best[i] = min(best[i], took)
for ms in best:
    print(f"{ms * 1000:.1f}")
