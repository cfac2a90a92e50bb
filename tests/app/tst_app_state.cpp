// SPDX-License-Identifier: GPL-3.0-or-later
// The main state's rooms that need no audio: preferences, the banner, the
// sidebar's playlists and songs reported by the watched folders.
#include "AppState.h"
#include "support/TestSupport.h"

#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace {

QList<QUrl> urls(const QStringList &names)
{
    QList<QUrl> out;
    for (const QString &n : names)
        out.append(QUrl::fromLocalFile(QStringLiteral("/music/") + n));
    return out;
}

} // namespace

class TestAppState : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString playlistFile() const { return m_dir.filePath(QStringLiteral("playlists.json")); }

private Q_SLOTS:
    void initTestCase()
    {
        QCoreApplication::setOrganizationName(QStringLiteral("Tarnwell"));
        QCoreApplication::setApplicationName(QStringLiteral("Tarnwell"));
        QVERIFY(m_dir.isValid());
    }

    void init()
    {
        QSettings().clear();
        QFile::remove(playlistFile());
    }

    void storesTheChosenTheme()
    {
        {
            AppState s(playlistFile());
            QSignalSpy changed(s.preferences(), &Preferences::selectedThemeChanged);
            for (int round = 0; round < 2; ++round) {
                // Choosing it again stores the same value and still closes the popup.
                s.navigation()->toggleThemePicker();
                s.selectTheme(int(AppTheme::Light));
                QCOMPARE(s.preferences()->currentTheme(), AppTheme::Light);
                QVERIFY(!s.navigation()->showThemePicker());
                QCOMPARE(changed.size(), 1);
            }
        }
        QCOMPARE(Preferences().selectedTheme(), QStringLiteral("light"));
        // An unknown stored value reads as noir but is kept, so no row of the popup matches it.
        QSettings().setValue(Preferences::themeKey, QStringLiteral("Sunrise"));
        QCOMPARE(Preferences().currentTheme(), AppTheme::Noir);
        QCOMPARE(Preferences().selectedTheme(), QStringLiteral("Sunrise"));
    }

    void keepsTenRecentArtistsNewestFirst_data()
    {
        QTest::addColumn<QStringList>("played");
        QTest::addColumn<QStringList>("recent");
        QTest::newRow("repeat moves to front") << QStringList{"A", "B", "A"} << QStringList{"A", "B"};
        QTest::newRow("empty artist changes nothing") << QStringList{"A", ""} << QStringList{"A"};
        QTest::newRow("eleven keep ten") << QStringList{"1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11"}
                                         << QStringList{"11", "10", "9", "8", "7", "6", "5", "4", "3", "2"};
        QTest::newRow("commas, quotes, spaces") << QStringList{"Crosby, Stills", "\"Weird\" Al", " padded "}
                                                << QStringList{" padded ", "\"Weird\" Al", "Crosby, Stills"};
    }

    void keepsTenRecentArtistsNewestFirst()
    {
        QFETCH(QStringList, played);
        QFETCH(QStringList, recent);
        {
            Preferences preferences;
            for (const QString &artist : played)
                preferences.recordRecentArtist(artist);
            QCOMPARE(preferences.recentArtists(), recent);
        }
        // Stored, and read back by the next run.
        QCOMPARE(Preferences().recentArtists(), recent);
    }

    void anEarlierTimerCutsALaterMessageShort()
    {
        Banner banner;
        banner.show(QStringLiteral("first"), Banner::Animation::Spring, 200);
        banner.show(QStringLiteral("second"), Banner::Animation::Default, 600000);
        // Cleared by the first text's timer, long before its own.
        QTRY_VERIFY_WITH_TIMEOUT(banner.text().isEmpty(), 30000);
        // It leaves as the last text entered.
        QCOMPARE(banner.animation(), Banner::Animation::Default);
    }

    void dropOnPlaylistReportsTheOutcome()
    {
        AppState s(playlistFile());
        s.library()->addDiscoveredFiles(urls({"a.mp3"}));
        const QString song = trackjson::uuidText(s.library()->tracks().first().id);
        Playlists &playlists = *s.playlists();
        playlists.setShowingCreate(true);
        playlists.create(QStringLiteral("  Road "));
        QVERIFY(!playlists.showingCreate());
        const QVariantMap road = playlists.entries().first().toMap();
        QCOMPARE(road.value(QStringLiteral("name")), QStringLiteral("Road"));
        const QString roadId = road.value(QStringLiteral("id")).toString();

        playlists.beginDrag(song);
        QCOMPARE(playlists.draggingTrackId(), song);
        playlists.drop(song, roadId);
        QCOMPARE(s.banner()->text(), QStringLiteral("Added to Road"));
        QCOMPARE(s.banner()->animation(), Banner::Animation::Spring);
        QVERIFY(playlists.draggingTrackId().isEmpty());
        QCOMPARE(playlists.entries().first().toMap().value(QStringLiteral("count")), 1);
        playlists.drop(song, roadId);
        QCOMPARE(s.banner()->text(), QStringLiteral("Already in Road"));
        playlists.drop(song, trackjson::uuidText(QUuid::createUuid()));
        QCOMPARE(s.banner()->text(), QStringLiteral("Already in playlist"));

        // A song nobody knows only ends the drag.
        playlists.beginDrag(song);
        playlists.drop(QStringLiteral("nope"), roadId);
        QVERIFY(playlists.draggingTrackId().isEmpty());
        QCOMPARE(playlists.entries().first().toMap().value(QStringLiteral("count")), 1);

        // A drag that is never dropped is forgotten.
        playlists.beginDrag(song);
        QTRY_VERIFY_WITH_TIMEOUT(playlists.draggingTrackId().isEmpty(), 30000);
    }

    void discoveredFilesBecomeSongs_data()
    {
        QTest::addColumn<QStringList>("library");
        QTest::addColumn<QStringList>("discovered");
        QTest::addColumn<QStringList>("added");
        QTest::addColumn<QString>("message");
        QTest::newRow("one") << QStringList{"a.mp3"} << QStringList{"b.mp3"} << QStringList{"b.mp3"}
                             << "1 new song added";
        QTest::newRow("three, in the order reported")
            << QStringList{} << QStringList{"c.mp3", "a.mp3", "b.flac", "a.mp3"} << QStringList{"c.mp3", "a.mp3", "b.flac"}
            << "3 new songs added";
        QTest::newRow("only known files") << QStringList{"a.mp3", "b.mp3"} << QStringList{"b.mp3", "a.mp3"}
                                          << QStringList{} << "";
        QTest::newRow("known and new") << QStringList{"a.mp3"} << QStringList{"a.mp3", "z.mp3"} << QStringList{"z.mp3"}
                                       << "1 new song added";
    }

    void discoveredFilesBecomeSongs()
    {
        QFETCH(QStringList, library);
        QFETCH(QStringList, discovered);
        QFETCH(QStringList, added);
        QFETCH(QString, message);

        AppState s(playlistFile());
        Library &lib = *s.library();
        lib.addDiscoveredFiles(urls(library));
        s.banner()->clear();
        QSignalSpy appended(&lib, &Library::tracksAppended);
        lib.addDiscoveredFiles(urls(discovered));
        QCOMPARE(s.banner()->text(), message);
        QCOMPARE(appended.size(), added.isEmpty() ? 0 : 1);
        // New songs come last.
        QList<QUrl> all;
        for (const Track &t : lib.tracks())
            all.append(t.url);
        QCOMPARE(all, urls(library + added));
    }
};

QTEST_GUILESS_MAIN(TestAppState)
#include "tst_app_state.moc"
