// SPDX-License-Identifier: GPL-3.0-or-later
// The least a program linking Qt Core costs to start and print one line: the
// floor under `tarnwell-cli`'s fixed cost (bench_memory.sh).
#include <QString>

#include <cstdio>

int main(int, char **argv)
{
    std::puts(qPrintable(QString::fromLocal8Bit(argv[0])));
}
