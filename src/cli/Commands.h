// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>

#include <cstdio>

// Each command takes the arguments after its name and returns the exit code.
// Output goes to stdout, errors to stderr; a bad argument prints usage and exits 2.
namespace cli {

int scan(const QStringList &args);
int artwork(const QStringList &args);

// Prints a line to stderr.
void error(const QString &message);
// Writes UTF-8 text to stdout, buffered.
void out(const QByteArray &utf8);

inline constexpr int usageError = 2;

} // namespace cli
