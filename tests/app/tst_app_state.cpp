// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppState.h"
#include "Theme.h"
#include "support/TestSupport.h"

#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

Q_DECLARE_METATYPE(AppState::Screen)

namespace {

const QString someId = QStringLiteral("0F2A4C3E-3B1D-4C5E-9A8B-7C6D5E4F3A2B");

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

    // Every navigation field away from its default, so that each action's
    // changes (and what it leaves alone) show.
    static void scatter(AppState &s)
    {
        s.setShowingHome(false);
        s.setShowingArtists(false);
        s.setShowingUntagged(true);
        s.setSelectedPlaylistID(someId);
        s.setSelectedArtistName(QStringLiteral("Old Artist"));
        s.setSelectedArtistAlbum(QStringLiteral("Old Album"));
        s.setSearchText(QStringLiteral("query"));
        s.setSearchActive(true);
        s.setShowThemePicker(true); // after the search, which would close it
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

    void startsAtHomeWithDefaults()
    {
        const auto s = makeState();
        QVERIFY(s->showingHome());
        QCOMPARE(s->currentScreen(), AppState::Screen::Home);
        QVERIFY(!s->didCompleteOnboarding());
        QCOMPARE(s->selectedTheme(), QStringLiteral("noir"));
        QCOMPARE(s->currentTheme(), AppTheme::Noir);
        QVERIFY(s->recentArtists().isEmpty());
        QCOMPARE(s->trackCount(), 0);
        QVERIFY(s->successMessage().isEmpty());
    }

    void navigationActionsSetTheirFlags_data()
    {
        QTest::addColumn<QString>("action");
        QTest::addColumn<bool>("home");
        QTest::addColumn<bool>("artists");
        QTest::addColumn<bool>("untagged");
        QTest::addColumn<QString>("playlist");
        QTest::addColumn<QString>("artist");
        QTest::addColumn<QString>("album");
        QTest::addColumn<bool>("themePicker");
        QTest::addColumn<bool>("searchActive");
        QTest::addColumn<QString>("searchText");

        QTest::newRow("goHome") << "goHome" << true << false << false << "" << "" << "" << false << true << "query";
        QTest::newRow("goHomeFromWordMark")
            << "goHomeFromWordMark" << true << false << false << "" << "" << "" << true << true << "query";
        QTest::newRow("showAllArtists")
            << "showAllArtists" << false << true << false << "" << "" << "Old Album" << true << true << "query";
        QTest::newRow("openArtist") << "openArtist" << false << true << false << "" << "Nadia" << "" << true
                                    << false << "";
        QTest::newRow("openAlbum") << "openAlbum" << false << true << false << "" << "Nadia" << "Blue" << true
                                   << false << "";
        QTest::newRow("dismissSearch") << "dismissSearch" << false << false << true << someId << "Old Artist"
                                       << "Old Album" << true << false << "";
        QTest::newRow("dismissPopups") << "dismissPopups" << false << false << true << someId << "Old Artist"
                                       << "Old Album" << false << false << "";
    }

    void navigationActionsSetTheirFlags()
    {
        QFETCH(QString, action);
        QFETCH(bool, home);
        QFETCH(bool, artists);
        QFETCH(bool, untagged);
        QFETCH(QString, playlist);
        QFETCH(QString, artist);
        QFETCH(QString, album);
        QFETCH(bool, themePicker);
        QFETCH(bool, searchActive);
        QFETCH(QString, searchText);

        const auto s = makeState();
        scatter(*s);
        if (action == u"openArtist")
            s->openArtist(QStringLiteral("Nadia"));
        else if (action == u"openAlbum")
            s->openAlbum(QStringLiteral("Nadia"), QStringLiteral("Blue"));
        else
            QVERIFY(QMetaObject::invokeMethod(s.get(), action.toLatin1().constData()));

        QCOMPARE(s->showingHome(), home);
        QCOMPARE(s->showingArtists(), artists);
        QCOMPARE(s->showingUntagged(), untagged);
        QCOMPARE(s->selectedPlaylistID(), playlist);
        QCOMPARE(s->selectedArtistName(), artist);
        QCOMPARE(s->selectedArtistAlbum(), album);
        QCOMPARE(s->showThemePicker(), themePicker);
        QCOMPARE(s->searchActive(), searchActive);
        QCOMPARE(s->searchText(), searchText);
    }

    void screenFollowsPrecedence_data()
    {
        QTest::addColumn<bool>("home");
        QTest::addColumn<bool>("untagged");
        QTest::addColumn<bool>("artists");
        QTest::addColumn<AppState::Screen>("screen");
        QTest::newRow("home wins") << true << true << true << AppState::Screen::Home;
        QTest::newRow("untagged over artists") << false << true << true << AppState::Screen::Untagged;
        QTest::newRow("artists") << false << false << true << AppState::Screen::Artists;
        QTest::newRow("songs otherwise") << false << false << false << AppState::Screen::Songs;
    }

    void screenFollowsPrecedence()
    {
        QFETCH(bool, home);
        QFETCH(bool, untagged);
        QFETCH(bool, artists);
        QFETCH(AppState::Screen, screen);
        const auto s = makeState();
        s->setShowingArtists(artists);
        s->setShowingUntagged(untagged);
        s->setShowingHome(home);
        QCOMPARE(s->currentScreen(), screen);
    }

    void searchAndThemePopupCloseEachOther()
    {
        const auto s = makeState();
        s->toggleThemePicker();
        QVERIFY(s->showThemePicker());
        s->setSearchActive(true);
        QVERIFY(!s->showThemePicker());

        // The popup may open over an active search; a click in the content
        // then closes both.
        s->setSearchText(QStringLiteral("abc"));
        s->toggleThemePicker();
        QVERIFY(s->showThemePicker() && s->searchActive());
        s->dismissPopups();
        QVERIFY(!s->showThemePicker());
        QVERIFY(!s->searchActive());
        QCOMPARE(s->searchText(), QString());
    }

    void storesTheChosenTheme()
    {
        {
            const auto s = makeState();
            QSignalSpy changed(s.get(), &AppState::selectedThemeChanged);
            s->toggleThemePicker();
            s->selectTheme(int(AppTheme::Light));
            QCOMPARE(s->currentTheme(), AppTheme::Light);
            QVERIFY(!s->showThemePicker());
            QCOMPARE(changed.size(), 1);

            // Choosing it again stores the same value and still closes the popup.
            s->toggleThemePicker();
            s->selectTheme(int(AppTheme::Light));
            QVERIFY(!s->showThemePicker());
            QCOMPARE(changed.size(), 1);
        }
        QCOMPARE(QSettings().value(Preferences::themeKey).toString(), QStringLiteral("light"));
        QCOMPARE(makeState()->currentTheme(), AppTheme::Light);
    }

    void unknownStoredThemeReadsAsNoir()
    {
        QSettings().setValue(Preferences::themeKey, QStringLiteral("Sunrise"));
        const auto s = makeState();
        QCOMPARE(s->currentTheme(), AppTheme::Noir);
        // The raw value is kept, so no theme row of the popup matches it.
        QCOMPARE(s->selectedTheme(), QStringLiteral("Sunrise"));
        QVERIFY(!Theme::themeRawValues().contains(s->selectedTheme()));
    }

    void themeIsReadFromTheStoreEachTime()
    {
        const auto s = makeState();
        QSettings().setValue(Preferences::themeKey, QStringLiteral("sunrise"));
        QCOMPARE(s->currentTheme(), AppTheme::Sunrise);
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
            const auto s = makeState();
            for (const QString &artist : played)
                s->recordRecentArtist(artist);
            QCOMPARE(s->recentArtists(), recent);
        }
        // Stored, and read back by the next run.
        QCOMPARE(makeState()->recentArtists(), recent);
    }

    void dropOnPlaylistReportsTheOutcome()
    {
        const auto s = makeState();
        s->addDiscoveredFiles(urls({"a.mp3"}));
        const Track song = s->tracks().first();
        s->playlistStore().createPlaylist(QStringLiteral("Road"));
        const QUuid road = s->playlistStore().playlists().first().id;

        s->beginDrag(trackjson::uuidText(song.id));
        QCOMPARE(s->draggingTrackId(), trackjson::uuidText(song.id));
        s->dropOnPlaylist(trackjson::uuidText(song.id), trackjson::uuidText(road));
        QCOMPARE(s->successMessage(), QStringLiteral("Added to Road"));
        QCOMPARE(s->successMessageAnimation(), AppState::MessageAnimation::Spring);
        QVERIFY(s->draggingTrackId().isEmpty());

        s->dropOnPlaylist(song, road);
        QCOMPARE(s->successMessage(), QStringLiteral("Already in Road"));
        QCOMPARE(s->playlistStore().playlists().first().tracks.size(), 1);

        s->dropOnPlaylist(song, QUuid::createUuid());
        QCOMPARE(s->successMessage(), QStringLiteral("Already in playlist"));
    }

    void messagesClearAfterTheirTime()
    {
        const auto s = makeState();
        s->addDiscoveredFiles(urls({"a.mp3"}));
        QCOMPARE(s->successMessage(), QStringLiteral("1 new song added"));
        QTest::qWait(AppState::discoveredMessageMs - 300);
        QCOMPARE(s->successMessage(), QStringLiteral("1 new song added"));
        QTRY_VERIFY_WITH_TIMEOUT(s->successMessage().isEmpty(), 1000);
    }

    void anEarlierTimerCutsALaterMessageShort()
    {
        const auto s = makeState();
        QElapsedTimer clock;
        clock.start();
        s->showMessage(QStringLiteral("first"), AppState::MessageAnimation::Default, 3000);
        QTest::qWait(1000);
        s->showMessage(QStringLiteral("second"), AppState::MessageAnimation::Default, 3000);
        QTRY_VERIFY_WITH_TIMEOUT(s->successMessage().isEmpty(), 2500);
        // Cleared by the first text's timer, a second before its own.
        QVERIFY2(clock.elapsed() < 3800, qPrintable(QString::number(clock.elapsed())));
    }

    void abandonedDragIsForgotten()
    {
        const auto s = makeState();
        s->addDiscoveredFiles(urls({"a.mp3"}));
        s->beginDrag(trackjson::uuidText(s->tracks().first().id));
        QVERIFY(!s->draggingTrackId().isEmpty());
        QTest::qWait(AppState::dragResetMs - 500);
        QVERIFY(!s->draggingTrackId().isEmpty());
        QTRY_VERIFY_WITH_TIMEOUT(s->draggingTrackId().isEmpty(), 1500);
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
        s->addDiscoveredFiles(urls(library));
        s->showMessage(QString(), AppState::MessageAnimation::Default, 0);
        const int before = s->trackCount();
        QSignalSpy appended(s.get(), &AppState::tracksAppended);

        s->addDiscoveredFiles(urls(discovered));
        QCOMPARE(s->trackCount(), before + added);
        QCOMPARE(s->successMessage(), message);
        QCOMPARE(appended.size(), added > 0 ? 1 : 0);
        QVERIFY(s->folderMonitor().discoveredURLs().isEmpty());
        QSet<QUrl> all;
        for (const Track &t : s->tracks())
            all.insert(t.url);
        if (added > 0)
            QCOMPARE(s->folderMonitor().knownURLs(), all);
        // New songs come last, in the order they were reported.
        QList<QUrl> tail;
        for (qsizetype i = before; i < s->trackCount(); ++i)
            tail.append(s->tracks().at(i).url);
        const QList<QUrl> known = urls(library);
        QCOMPARE(tail, import::freshFiles(urls(discovered), QSet<QUrl>(known.begin(), known.end())));
    }

    void tagEditorOpensWithTheSongAndCloses()
    {
        const auto s = makeState();
        s->addDiscoveredFiles(urls({"Song Name.flac"}));
        const QString id = trackjson::uuidText(s->tracks().first().id);
        QSignalSpy changed(s.get(), &AppState::tagEditorChanged);
        s->openTagEditor(id);
        QTRY_VERIFY(s->tagEditorOpen());
        QCOMPARE(s->tagEditorTrackId(), id);
        QCOMPARE(s->tagEditorFileName(), QStringLiteral("Song Name"));
        s->closeTagEditor();
        QVERIFY(!s->tagEditorOpen());
        QVERIFY(s->tagEditorMeta().isEmpty());

        // An editor closed before its tags arrive stays closed.
        s->openTagEditor(id);
        s->closeTagEditor();
        QTest::qWait(100);
        QVERIFY(!s->tagEditorOpen());
    }

    void createPanelCloses()
    {
        const auto s = makeState();
        s->setShowingCreate(true);
        s->createPlaylistFromPanel(QStringLiteral("  Chill "));
        QVERIFY(!s->showingCreate());
        QCOMPARE(s->playlistStore().playlists().size(), 1);
        QCOMPARE(s->playlistStore().playlists().first().name, QStringLiteral("Chill"));
        QVERIFY(s->selectedPlaylistID().isEmpty());
        s->setShowingCreate(true);
        s->cancelCreatePlaylist();
        QVERIFY(!s->showingCreate());
        QCOMPARE(s->playlistStore().playlists().size(), 1);
    }
};

QTEST_GUILESS_MAIN(TestAppState)
#include "tst_app_state.moc"
