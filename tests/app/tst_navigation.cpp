// SPDX-License-Identifier: GPL-3.0-or-later
// Where each action takes the user, and what it leaves selected.
#include "Navigation.h"

#include <QTest>

using Screen = Navigation::Screen;

class TestNavigation : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void actionsSetScreenAndSelections_data()
    {
        QTest::addColumn<QString>("action");
        QTest::addColumn<Screen>("screen");
        QTest::addColumn<bool>("playlist"); // the one selected before stays
        QTest::addColumn<QString>("artist");
        QTest::addColumn<QString>("album");
        QTest::addColumn<bool>("popups"); // the theme picker and the search stay open
        const auto row = [](const char *action, Screen screen, bool playlist, const char *artist, const char *album,
                            bool popups = true) {
            QTest::newRow(action) << QString::fromLatin1(action) << screen << playlist << artist << album << popups;
        };
        row("goHomeFromWordMark", Screen::Home, false, "", "");
        row("showAllArtists", Screen::Artists, false, "", ""); // the album goes with its artist
        row("openArtist", Screen::Artists, false, "Nadia", "");
        row("openAlbum", Screen::Artists, false, "Nadia", "Blue");
        row("showAllSongs", Screen::Songs, false, "Old Artist", "Old Album");
        row("showUntaggedSongs", Screen::Untagged, false, "Old Artist", "Old Album");
        row("selectPlaylist:nope", Screen::Songs, false, "Old Artist", "Old Album");
        row("backToArtists", Screen::Songs, true, "", "");
        row("dismissPopups", Screen::Songs, true, "Old Artist", "Old Album", false);
    }

    void actionsSetScreenAndSelections()
    {
        QFETCH(QString, action);
        QFETCH(Screen, screen);
        QFETCH(bool, playlist);
        QFETCH(QString, artist);
        QFETCH(QString, album);
        QFETCH(bool, popups);
        const QString someId = QStringLiteral("0F2A4C3E-3B1D-4C5E-9A8B-7C6D5E4F3A2B");
        Navigation n;
        n.selectPlaylist(someId);
        QCOMPARE(n.screen(), Screen::Songs);
        n.setSelectedArtistName(QStringLiteral("Old Artist"));
        n.setSelectedArtistAlbum(QStringLiteral("Old Album"));
        n.setSearchText(QStringLiteral("query"));
        n.setSearchActive(true);
        n.setShowThemePicker(true); // after the search, which would close it
        if (action == u"openArtist")
            n.openArtist(QStringLiteral("Nadia"));
        else if (action == u"openAlbum")
            n.openAlbum(QStringLiteral("Nadia"), QStringLiteral("Blue"));
        else if (action == u"selectPlaylist:nope")
            n.selectPlaylist(QStringLiteral("nope"));
        else
            QVERIFY(QMetaObject::invokeMethod(&n, action.toLatin1().constData()));

        QCOMPARE(n.screen(), screen);
        QCOMPARE(n.selectedPlaylistID(), playlist ? someId : QString());
        QCOMPARE(n.selectedArtistName(), artist);
        QCOMPARE(n.selectedArtistAlbum(), album);
        QCOMPARE(n.showThemePicker(), popups);
        QCOMPARE(n.searchActive(), popups && !action.startsWith(u"open"));
        QCOMPARE(n.searchText().isEmpty(), !n.searchActive());
    }

};

QTEST_GUILESS_MAIN(TestNavigation)
#include "tst_navigation.moc"
