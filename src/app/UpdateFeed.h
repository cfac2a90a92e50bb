// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <optional>

// The appcast feed of "Check for Updates...", read apart from the network so
// that it can be tested and fuzzed on its own.
namespace updatefeed {

struct Release
{
    QString version; // compared
    QString displayVersion; // shown (a short version string when the feed has one)
    QUrl downloadUrl;
};

// The newest release of a feed, absent when the feed has none it can read.
std::optional<Release> newestRelease(const QByteArray &feed);
// Negative, zero or positive as version a is older than, equal to or newer
// than b. Numbers compare as numbers ("0.10" > "0.9"); a pre-release
// ("1.0-beta") comes before its release.
int compareVersions(const QString &a, const QString &b);

} // namespace updatefeed
