// SPDX-License-Identifier: GPL-3.0-or-later
#include "Preferences.h"

Preferences::Preferences(QObject *parent)
    : QObject(parent)
    , m_recentArtists(storedRecentArtists())
{
}

bool Preferences::didCompleteOnboarding() const
{
    return m_settings.value(onboardingKey, false).toBool();
}

void Preferences::completeOnboarding()
{
    if (didCompleteOnboarding())
        return;
    m_settings.setValue(onboardingKey, true);
    m_settings.sync();
    Q_EMIT didCompleteOnboardingChanged();
}

QString Preferences::selectedTheme() const
{
    const QVariant v = m_settings.value(themeKey);
    return v.isValid() ? v.toString() : QStringLiteral("noir");
}

void Preferences::selectTheme(int themeIndex)
{
    const QList<AppTheme> themes = palette::allThemes();
    if (themeIndex < 0 || themeIndex >= themes.size())
        return;
    const QString raw = palette::rawValue(themes[themeIndex]);
    const bool changed = raw != selectedTheme();
    m_settings.setValue(themeKey, raw);
    m_settings.sync();
    if (changed)
        Q_EMIT selectedThemeChanged();
}

QStringList Preferences::storedRecentArtists() const
{
    const QVariant v = m_settings.value(recentArtistsKey);
    // QSettings stores a one-element list as a plain string; read it back as a list.
    if (v.typeId() == QMetaType::QString) {
        const QString one = v.toString();
        return one.isEmpty() ? QStringList() : QStringList{one};
    }
    return v.toStringList();
}

void Preferences::recordRecentArtist(const QString &artist)
{
    if (artist.isEmpty())
        return;
    QStringList updated = withRecentArtist(m_recentArtists, artist);
    m_settings.setValue(recentArtistsKey, updated);
    m_settings.sync();
    if (updated == m_recentArtists)
        return;
    m_recentArtists = std::move(updated);
    Q_EMIT recentArtistsChanged();
}

QStringList Preferences::withRecentArtist(QStringList artists, const QString &artist)
{
    artists.removeAll(artist);
    artists.prepend(artist);
    if (artists.size() > recentArtistLimit)
        artists.resize(recentArtistLimit);
    return artists;
}
