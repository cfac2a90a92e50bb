// SPDX-License-Identifier: GPL-3.0-or-later
// Where each action of the sidebar, the top bar, the home screen and the search
// takes the user, and what it leaves selected.
#include "Navigation.h"

#include <QSignalSpy>
#include <QTest>

namespace {

const QString someId = QStringLiteral("0F2A4C3E-3B1D-4C5E-9A8B-7C6D5E4F3A2B");
using Screen = Navigation::Screen;

} // namespace

class TestNavigation : public QObject
{
    Q_OBJECT

    // Every field away from its default, so that each action's changes (and
    // what it leaves alone) show.
    static void scatter(Navigation &n)
    {
        n.selectPlaylist(someId);
        n.setSelectedArtistName(QStringLiteral("Old Artist"));
        n.setSelectedArtistAlbum(QStringLiteral("Old Album"));
        n.setSearchText(QStringLiteral("query"));
        n.setSearchActive(true);
        n.setShowThemePicker(true); // after the search, which would close it
    }

private Q_SLOTS:
    void actionsSetScreenAndSelections_data()
    {
        QTest::addColumn<QString>("action");
        QTest::addColumn<Screen>("screen");
        QTest::addColumn<QString>("playlist");
        QTest::addColumn<QString>("artist");
        QTest::addColumn<QString>("album");
        QTest::addColumn<bool>("themePicker");
        QTest::addColumn<bool>("searchActive");

        QTest::newRow("goHomeFromWordMark") << "goHomeFromWordMark" << Screen::Home << "" << "" << "" << true << true;
        // The album goes with its artist.
        QTest::newRow("showAllArtists") << "showAllArtists" << Screen::Artists << "" << "" << "" << true << true;
        QTest::newRow("openArtist") << "openArtist" << Screen::Artists << "" << "Nadia" << "" << true << false;
        QTest::newRow("openAlbum") << "openAlbum" << Screen::Artists << "" << "Nadia" << "Blue" << true << false;
        QTest::newRow("showAllSongs") << "showAllSongs" << Screen::Songs << "" << "Old Artist" << "Old Album" << true
                                      << true;
        QTest::newRow("showUntaggedSongs") << "showUntaggedSongs" << Screen::Untagged << "" << "Old Artist"
                                           << "Old Album" << true << true;
        QTest::newRow("selectPlaylist") << "selectPlaylist" << Screen::Songs << someId << "Old Artist" << "Old Album"
                                        << true << true;
        QTest::newRow("a malformed playlist") << "selectPlaylist:nope" << Screen::Songs << "" << "Old Artist"
                                              << "Old Album" << true << true;
        QTest::newRow("backToArtists") << "backToArtists" << Screen::Songs << someId << "" << "" << true << true;
        QTest::newRow("dismissPopups") << "dismissPopups" << Screen::Songs << someId << "Old Artist"
                                       << "Old Album" << false << false;
    }

    void actionsSetScreenAndSelections()
    {
        QFETCH(QString, action);
        QFETCH(Screen, screen);
        QFETCH(QString, playlist);
        QFETCH(QString, artist);
        QFETCH(QString, album);
        QFETCH(bool, themePicker);
        QFETCH(bool, searchActive);

        Navigation n;
        scatter(n);
        if (action == u"openArtist")
            n.openArtist(QStringLiteral("Nadia"));
        else if (action == u"openAlbum")
            n.openAlbum(QStringLiteral("Nadia"), QStringLiteral("Blue"));
        else if (action == u"selectPlaylist")
            n.selectPlaylist(someId);
        else if (action == u"selectPlaylist:nope")
            n.selectPlaylist(QStringLiteral("nope"));
        else
            QVERIFY(QMetaObject::invokeMethod(&n, action.toLatin1().constData()));

        QCOMPARE(n.screen(), screen);
        QCOMPARE(n.selectedPlaylistID(), playlist);
        QCOMPARE(n.selectedArtistName(), artist);
        QCOMPARE(n.selectedArtistAlbum(), album);
        QCOMPARE(n.showThemePicker(), themePicker);
        QCOMPARE(n.searchActive(), searchActive);
        QCOMPARE(n.searchText().isEmpty(), !searchActive);
    }

    // The screen changes before the artist, so the artists grid starts
    // loading before the artist is looked up in it; the playlist changes
    // before the screen, so a song list opens on its songs.
    void selectionsAndScreenChangeInOrder()
    {
        Navigation n;
        QStringList order;
        connect(&n, &Navigation::screenChanged, this, [&] { order.append(QStringLiteral("screen")); });
        connect(&n, &Navigation::selectedArtistNameChanged, this, [&] { order.append(QStringLiteral("artist")); });
        connect(&n, &Navigation::selectedPlaylistIDChanged, this, [&] { order.append(QStringLiteral("playlist")); });
        n.openArtist(QStringLiteral("Nadia"));
        n.selectPlaylist(someId);
        QCOMPARE(order, (QStringList{"screen", "artist", "playlist", "screen"}));
    }

    void searchAndThemePopupCloseEachOther()
    {
        Navigation n;
        n.toggleThemePicker();
        n.setSearchActive(true);
        QVERIFY(!n.showThemePicker());
    }
};

QTEST_GUILESS_MAIN(TestNavigation)
#include "tst_navigation.moc"
