// SPDX-License-Identifier: GPL-3.0-or-later
#include "Preferences.h"

bool Preferences::didCompleteOnboarding() const
{
    return m_settings.value(onboardingKey, false).toBool();
}

void Preferences::setDidCompleteOnboarding(bool done)
{
    m_settings.setValue(onboardingKey, done);
    m_settings.sync();
}

QString Preferences::selectedTheme() const
{
    const QVariant v = m_settings.value(themeKey);
    return v.isValid() ? v.toString() : QStringLiteral("noir");
}

void Preferences::setSelectedTheme(const QString &raw)
{
    m_settings.setValue(themeKey, raw);
    m_settings.sync();
}

QStringList Preferences::recentArtists() const
{
    const QVariant v = m_settings.value(recentArtistsKey);
    // QSettings stores a one-element list as a plain string; read it back as a list.
    if (v.typeId() == QMetaType::QString) {
        const QString one = v.toString();
        return one.isEmpty() ? QStringList() : QStringList{one};
    }
    return v.toStringList();
}

void Preferences::setRecentArtists(const QStringList &artists)
{
    m_settings.setValue(recentArtistsKey, artists);
    m_settings.sync();
}

QStringList Preferences::withRecentArtist(QStringList artists, const QString &artist)
{
    artists.removeAll(artist);
    artists.prepend(artist);
    if (artists.size() > recentArtistLimit)
        artists.resize(recentArtistLimit);
    return artists;
}
