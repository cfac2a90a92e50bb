// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSettings>
#include <QString>
#include <QStringList>

// The three values kept between runs, in QSettings (organisation and
// application "Tarnwell"). Reads and writes go straight to the store; nothing
// is cached here.
class Preferences
{
public:
    static inline const QString onboardingKey = QStringLiteral("didCompleteOnboarding");
    static inline const QString themeKey = QStringLiteral("selectedTheme");
    static inline const QString recentArtistsKey = QStringLiteral("recentArtists");

    // At most this many recent artists are kept.
    static constexpr int recentArtistLimit = 10;

    bool didCompleteOnboarding() const;
    void setDidCompleteOnboarding(bool done);

    // The raw stored string; "noir" when nothing is stored. Not validated: an
    // unknown value is kept as it is and reads as noir through palette::fromRawValue.
    QString selectedTheme() const;
    void setSelectedTheme(const QString &raw);

    // Empty when nothing (or something that is not a list of strings) is stored.
    QStringList recentArtists() const;
    void setRecentArtists(const QStringList &artists);

    // The recent-artist list after a song by `artist` started: the name moves to
    // the front (compared exactly), and only the newest ten remain.
    static QStringList withRecentArtist(QStringList artists, const QString &artist);

private:
    mutable QSettings m_settings;
};
