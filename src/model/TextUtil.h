// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCollator>
#include <QString>

#include <optional>

namespace text {

// Trims spaces, tabs and the other Unicode space separators at both ends,
// but never line breaks.
QString trimmedHorizontal(const QString &s);

// Trims spaces and tabs only (how tags are compared and grouped).
QString trimmedSpacesAndTabs(const QString &s);

// A tag trimmed of spaces and tabs, absent when nothing is left.
std::optional<QString> nonEmptyTrimmed(const std::optional<QString> &s);

// Case-sensitive collation for the user's locale, the way people expect names
// ordered. Without a configured locale (C/POSIX) English rules are used rather
// than a byte comparison.
QCollator localeCollator();
QCollator caseInsensitiveCollator();

// The file name without its extension: how songs are named on screen (bytes
// of the name that aren't UTF-8 shown as U+FFFD).
QString displayName(const QString &path);

} // namespace text
