// SPDX-License-Identifier: GPL-3.0-or-later
// The main state's rooms that need no audio: preferences, the banner, the
// sidebar's playlists, the tag editor and the library's watched folders, and
// how AppState wires them together.
#include "AppState.h"
#include "LibraryImport.h"
#include "Theme.h"
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

    std::unique_ptr<AppState> makeState()
    {
        return std::make_unique<AppState>(m_dir.filePath(QStringLiteral("playlists.json")));
    }

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
        QFile::remove(m_dir.filePath(QStringLiteral("playlists.json")));
    }

    void startsWithDefaults()
    {
        const auto s = makeState();
        QCOMPARE(s->navigation()->screen(), Navigation::Screen::Home);
        QVERIFY(!s->preferences()->didCompleteOnboarding());
        QCOMPARE(s->preferences()->selectedTheme(), QStringLiteral("noir"));
        QCOMPARE(s->preferences()->currentTheme(), AppTheme::Noir);
        QVERIFY(s->preferences()->recentArtists().isEmpty());
        QCOMPARE(s->library()->trackCount(), 0);
        QVERIFY(s->banner()->text().isEmpty());
        QCOMPARE(s->queue()->title(), QStringLiteral("All Songs"));
    }

    void storesTheChosenTheme()
    {
        {
            const auto s = makeState();
            QSignalSpy changed(s->preferences(), &Preferences::selectedThemeChanged);
            for (int round = 0; round < 2; ++round) {
                // Choosing it again stores the same value and still closes the popup.
                s->navigation()->toggleThemePicker();
                s->selectTheme(int(AppTheme::Light));
                QCOMPARE(s->preferences()->currentTheme(), AppTheme::Light);
                QVERIFY(!s->navigation()->showThemePicker());
                QCOMPARE(changed.size(), 1);
            }
        }
        QCOMPARE(QSettings().value(Preferences::themeKey).toString(), QStringLiteral("light"));
        QCOMPARE(Preferences().currentTheme(), AppTheme::Light);
    }

    void themeIsReadFromTheStoreEachTime()
    {
        const Preferences preferences;
        QSettings().setValue(Preferences::themeKey, QStringLiteral("sunrise"));
        QCOMPARE(preferences.currentTheme(), AppTheme::Sunrise);
        // An unknown value reads as noir but is kept, so no row of the popup matches it.
        QSettings().setValue(Preferences::themeKey, QStringLiteral("Sunrise"));
        QCOMPARE(preferences.currentTheme(), AppTheme::Noir);
        QCOMPARE(preferences.selectedTheme(), QStringLiteral("Sunrise"));
        QVERIFY(!Theme::themeRawValues().contains(preferences.selectedTheme()));
    }

    void keepsTenRecentArtistsNewestFirst_data()
    {
        QTest::addColumn<QStringList>("played");
        QTest::addColumn<QStringList>("recent");
        QTest::newRow("repeat moves to front") << QStringList{"A", "B", "A"} << QStringList{"A", "B"};
        QTest::newRow("exact comparison") << QStringList{"A", "a"} << QStringList{"a", "A"};
        QTest::newRow("empty artist changes nothing") << QStringList{"A", ""} << QStringList{"A"};
        QStringList eleven;
        for (int i = 1; i <= 11; ++i)
            eleven.append(QStringLiteral("Artist %1").arg(i));
        QStringList newestTen;
        for (int i = 11; i >= 2; --i)
            newestTen.append(QStringLiteral("Artist %1").arg(i));
        QTest::newRow("eleven keep ten") << eleven << newestTen;
        QTest::newRow("one with a comma") << QStringList{"Crosby, Stills"} << QStringList{"Crosby, Stills"};
        QTest::newRow("quotes, accents, spaces")
            << QStringList{"\"Weird\" Al", "Sigur Rós", " padded "}
            << QStringList{" padded ", "Sigur Rós", "\"Weird\" Al"};
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
        QElapsedTimer clock;
        clock.start();
        banner.show(QStringLiteral("first"), Banner::Animation::Spring, 3000);
        QTest::qWait(1000);
        banner.show(QStringLiteral("second"), Banner::Animation::Default, 3000);
        QTRY_VERIFY_WITH_TIMEOUT(banner.text().isEmpty(), 2500);
        // Cleared by the first text's timer, a second before its own.
        QVERIFY2(clock.elapsed() < 3800, qPrintable(QString::number(clock.elapsed())));
        // It leaves as the last text entered.
        QCOMPARE(banner.animation(), Banner::Animation::Default);
    }

    void dropOnPlaylistReportsTheOutcome()
    {
        PlaylistStore store(m_dir.filePath(QStringLiteral("playlists.json")));
        Banner banner;
        const Track song = Track::create(urls({"a.mp3"}).first());
        const QString songId = trackjson::uuidText(song.id);
        Playlists playlists(store, banner, [&](const QString &id) {
            return id == songId ? std::optional<Track>(song) : std::nullopt;
        });
        QSignalSpy entries(&playlists, &Playlists::entriesChanged);
        playlists.setShowingCreate(true);
        playlists.create(QStringLiteral("  Road "));
        QVERIFY(!playlists.showingCreate());
        QCOMPARE(entries.size(), 1);
        const QVariantMap road = playlists.entries().first().toMap();
        QCOMPARE(road.value(QStringLiteral("name")), QStringLiteral("Road"));

        playlists.beginDrag(songId);
        QCOMPARE(playlists.draggingTrackId(), songId);
        playlists.drop(songId, road.value(QStringLiteral("id")).toString());
        QCOMPARE(banner.text(), QStringLiteral("Added to Road"));
        QCOMPARE(banner.animation(), Banner::Animation::Spring);
        QVERIFY(playlists.draggingTrackId().isEmpty());
        QCOMPARE(playlists.entries().first().toMap().value(QStringLiteral("count")), 1);

        playlists.drop(song, store.playlists().first().id);
        QCOMPARE(banner.text(), QStringLiteral("Already in Road"));
        playlists.drop(song, QUuid::createUuid());
        QCOMPARE(banner.text(), QStringLiteral("Already in playlist"));

        // A song nobody knows only ends the drag.
        playlists.beginDrag(songId);
        playlists.drop(QStringLiteral("nope"), road.value(QStringLiteral("id")).toString());
        QVERIFY(playlists.draggingTrackId().isEmpty());
        QCOMPARE(store.playlists().first().tracks.size(), 1);

        playlists.setShowingCreate(true);
        playlists.cancelCreate();
        QVERIFY(!playlists.showingCreate());
        QCOMPARE(store.playlists().size(), 1);
    }

    void abandonedDragIsForgotten()
    {
        const auto s = makeState();
        s->library()->addDiscoveredFiles(urls({"a.mp3"}));
        s->playlists()->beginDrag(trackjson::uuidText(s->library()->tracks().first().id));
        QVERIFY(!s->playlists()->draggingTrackId().isEmpty());
        QTest::qWait(Playlists::dragResetMs - 500);
        QVERIFY(!s->playlists()->draggingTrackId().isEmpty());
        QTRY_VERIFY_WITH_TIMEOUT(s->playlists()->draggingTrackId().isEmpty(), 1500);
    }

    void discoveredFilesBecomeSongs_data()
    {
        QTest::addColumn<QStringList>("library");
        QTest::addColumn<QStringList>("discovered");
        QTest::addColumn<int>("added");
        QTest::addColumn<QString>("message");
        QTest::newRow("one") << QStringList{"a.mp3"} << QStringList{"b.mp3"} << 1 << "1 new song added";
        QTest::newRow("three at once") << QStringList{} << QStringList{"c.mp3", "a.mp3", "b.flac"} << 3
                                       << "3 new songs added";
        QTest::newRow("only known files") << QStringList{"a.mp3", "b.mp3"} << QStringList{"b.mp3", "a.mp3"} << 0
                                          << "";
        QTest::newRow("known and new") << QStringList{"a.mp3"} << QStringList{"a.mp3", "z.mp3"} << 1
                                       << "1 new song added";
        QTest::newRow("nothing") << QStringList{"a.mp3"} << QStringList{} << 0 << "";
    }

    void discoveredFilesBecomeSongs()
    {
        QFETCH(QStringList, library);
        QFETCH(QStringList, discovered);
        QFETCH(int, added);
        QFETCH(QString, message);

        const auto s = makeState();
        Library &lib = *s->library();
        lib.addDiscoveredFiles(urls(library));
        s->banner()->clear();
        const int before = lib.trackCount();
        QSignalSpy appended(&lib, &Library::tracksAppended);

        lib.addDiscoveredFiles(urls(discovered));
        QCOMPARE(lib.trackCount(), before + added);
        QCOMPARE(s->banner()->text(), message);
        QCOMPARE(appended.size(), added > 0 ? 1 : 0);
        QVERIFY(s->folderMonitor().discoveredURLs().isEmpty());
        QSet<QUrl> all;
        for (const Track &t : lib.tracks())
            all.insert(t.url);
        if (added > 0)
            QCOMPARE(s->folderMonitor().knownURLs(), all);
        // New songs come last, in the order they were reported.
        QList<QUrl> tail;
        for (qsizetype i = before; i < lib.trackCount(); ++i)
            tail.append(lib.tracks().at(i).url);
        const QList<QUrl> known = urls(library);
        QCOMPARE(tail, import::freshFiles(urls(discovered), QSet<QUrl>(known.begin(), known.end())));
    }

    void theDiscoveredMessageGoesAfterItsTime()
    {
        const auto s = makeState();
        s->library()->addDiscoveredFiles(urls({"a.mp3"}));
        QTest::qWait(AppState::discoveredMessageMs - 300);
        QCOMPARE(s->banner()->text(), QStringLiteral("1 new song added"));
        QTRY_VERIFY_WITH_TIMEOUT(s->banner()->text().isEmpty(), 1000);
    }

    void tagEditorOpensWithTheSongAndCloses()
    {
        const auto s = makeState();
        s->library()->addDiscoveredFiles(urls({"Song Name.flac"}));
        const QString id = trackjson::uuidText(s->library()->tracks().first().id);
        TagEditorSession &editor = *s->tagEditor();
        editor.open(id);
        QTRY_VERIFY(editor.isOpen());
        QCOMPARE(editor.trackId(), id);
        QCOMPARE(editor.fileName(), QStringLiteral("Song Name"));
        editor.close();
        QVERIFY(!editor.isOpen());
        QVERIFY(editor.meta().isEmpty());

        // An editor closed before its tags arrive stays closed.
        editor.open(id);
        editor.close();
        QTest::qWait(100);
        QVERIFY(!editor.isOpen());
    }
};

QTEST_GUILESS_MAIN(TestAppState)
#include "tst_app_state.moc"
