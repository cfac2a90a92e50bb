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
    return storedList(recentArtistsKey);
}

QStringList Preferences::storedList(const QString &key) const
{
    const QVariant v = m_settings.value(key);
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

QList<QUrl> Preferences::libraryFolders() const
{
    QList<QUrl> folders;
    for (const QString &text : storedList(libraryFoldersKey)) {
        const QUrl url(text);
        // Anything but a local folder (a hand-edited value) is passed over.
        if (url.isLocalFile() && !folders.contains(url))
            folders.append(url);
    }
    return folders;
}

void Preferences::addLibraryFolder(const QUrl &folder)
{
    QList<QUrl> folders = libraryFolders();
    if (!folder.isLocalFile() || folders.contains(folder))
        return;
    folders.append(folder);
    storeLibraryFolders(folders);
}

void Preferences::removeLibraryFolder(const QUrl &folder)
{
    QList<QUrl> folders = libraryFolders();
    if (folders.removeAll(folder) == 0)
        return;
    storeLibraryFolders(folders);
}

void Preferences::storeLibraryFolders(const QList<QUrl> &folders)
{
    QStringList texts;
    for (const QUrl &url : folders)
        texts.append(url.toString(QUrl::FullyEncoded));
    m_settings.setValue(libraryFoldersKey, texts);
    m_settings.sync();
    Q_EMIT libraryFoldersChanged();
}
