// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QStringList>

#include "model/Track.h"

#include <cstdio>

// Each command takes the arguments after its name and returns the exit code.
// Output goes to stdout, errors to stderr; a bad argument prints usage and exits 2.
namespace cli {

int scan(const QStringList &args);
int tags(const QStringList &args);
int write(const QStringList &args);
int play(const QStringList &args);
int search(const QStringList &args);
int artists(const QStringList &args);

// The songs below a folder as the library would hold them, in library order.
QList<Track> libraryOf(const QString &folder);
int artwork(const QStringList &args);

// Prints a line to stderr.
void error(const QString &message);
// Writes UTF-8 text to stdout, buffered.
void out(const QByteArray &utf8);

inline constexpr int usageError = 2;

} // namespace cli
