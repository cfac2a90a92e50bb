// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Palette.h"

#include <QObject>
#include <QSettings>
#include <QString>
#include <QUrl>
#include <QStringList>
#include <QtQml/qqmlregistration.h>

// The values kept between runs, in QSettings (organisation and application
// "Tarnwell"): whether the welcome is done, the theme, the artists played
// lately and the folders of the library. Onboarding and theme are read from the store at every
// call, so the stored value always decides; the recent artists are read once.
class Preferences : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("owned by the main state")
    Q_PROPERTY(bool didCompleteOnboarding READ didCompleteOnboarding NOTIFY didCompleteOnboardingChanged)
    Q_PROPERTY(QString selectedTheme READ selectedTheme NOTIFY selectedThemeChanged)
    Q_PROPERTY(int currentTheme READ currentThemeIndex NOTIFY selectedThemeChanged)
    Q_PROPERTY(QStringList recentArtists READ recentArtists NOTIFY recentArtistsChanged)
    // The imported folders as file URLs, in the order first imported.
    Q_PROPERTY(QList<QUrl> libraryFolders READ libraryFolders NOTIFY libraryFoldersChanged)

public:
    static inline const QString onboardingKey = QStringLiteral("didCompleteOnboarding");
    static inline const QString themeKey = QStringLiteral("selectedTheme");
    static inline const QString recentArtistsKey = QStringLiteral("recentArtists");
    static inline const QString libraryFoldersKey = QStringLiteral("libraryFolders");

    // At most this many recent artists are kept.
    static constexpr int recentArtistLimit = 10;

    explicit Preferences(QObject *parent = nullptr);

    bool didCompleteOnboarding() const;
    // The first import that brought songs.
    void completeOnboarding();

    // The raw stored string; "noir" when nothing is stored. Not validated: an
    // unknown value is kept as it is and reads as noir through palette::fromRawValue.
    QString selectedTheme() const;
    AppTheme currentTheme() const { return palette::fromRawValue(selectedTheme()); }
    int currentThemeIndex() const { return int(currentTheme()); }
    // A row of the theme popup; an index out of range changes nothing.
    void selectTheme(int themeIndex);

    QStringList recentArtists() const { return m_recentArtists; }
    // A song by this artist started: it moves to the front, and only the newest
    // ten remain. An empty name changes nothing.
    void recordRecentArtist(const QString &artist);

    // The recent-artist list after a song by `artist` started, compared exactly.
    static QStringList withRecentArtist(QStringList artists, const QString &artist);

    QList<QUrl> libraryFolders() const;
    // A folder imported: kept at the end unless it is kept already.
    void addLibraryFolder(const QUrl &folder);
    void removeLibraryFolder(const QUrl &folder);

Q_SIGNALS:
    void libraryFoldersChanged();
    void didCompleteOnboardingChanged();
    void selectedThemeChanged();
    void recentArtistsChanged();

private:
    // Empty when nothing (or something that is not a list of strings) is stored.
    QStringList storedRecentArtists() const;
    QStringList storedList(const QString &key) const;
    void storeLibraryFolders(const QList<QUrl> &folders);

    mutable QSettings m_settings;
    QStringList m_recentArtists;
};
