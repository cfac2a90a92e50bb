// SPDX-License-Identifier: GPL-3.0-or-later
#include "BrowseTestUtil.h"
#include "browse/Grouping.h"

#include <QTest>

using browsetest::Library;

namespace {

template <typename Group> QStringList describe(const QList<Group> &groups)
{
    QStringList out;
    for (const Group &g : groups)
        out.append(g.name + u'=' + Library::files(g.tracks));
    return out;
}

QStringList describe(const QList<TrackInfo> &infos)
{
    QStringList out;
    for (const TrackInfo &i : infos)
        out.append(i.track.url.fileName() + u'=' + i.album.value_or(QStringLiteral("-")));
    return out;
}

} // namespace

class TestGrouping : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void artists_data()
    {
        QTest::addColumn<QStringList>("library");
        QTest::addColumn<QStringList>("artists");

        QTest::newRow("spellings differing in case are one artist, spelled as the earliest song")
            << QStringList { "1.mp3|THE QUIET HOURS", "2.mp3|Other", "3.mp3|The Quiet Hours" }
            << QStringList { "Other=2.mp3", "THE QUIET HOURS=1.mp3,3.mp3" };
        QTest::newRow("blank or missing artist tags make no group") << QStringList { "1.mp3|   ", "2.mp3",
            "3.mp3|\t", QString::fromUtf8("4.mp3|\u00a0"), "5.mp3|Real" }
                                                                    << QStringList { "Real=5.mp3" };
        QTest::newRow("tags trimmed of spaces and tabs before grouping")
            << QStringList { "1.mp3| Band", "2.mp3|Band\t", QString::fromUtf8("3.mp3|\u2003band\u00a0") }
            << QStringList { "Band=1.mp3,2.mp3,3.mp3" };
        QTest::newRow("line breaks are part of the name")
            << QStringList { "1.mp3|Band\n", "2.mp3|Band" } << QStringList { "Band=2.mp3", "Band\n=1.mp3" };
        QTest::newRow("sorted in the locale order, not by code point")
            << QStringList { "1.mp3|zed", "2.mp3|Zulu", "3.mp3|alpha", QString::fromUtf8("4.mp3|\u00c9lan"),
                   "5.mp3|Bravo", "6.mp3|elan" }
            << QStringList { "alpha=3.mp3", "Bravo=5.mp3", "elan=6.mp3", QString::fromUtf8("\u00c9lan=4.mp3"),
                   "zed=1.mp3", "Zulu=2.mp3" };
        QTest::newRow("composed and decomposed spellings are one artist")
            << QStringList { QString::fromUtf8("1.mp3|Lume\u0301"), QString::fromUtf8("2.mp3|LUM\u00c9") }
            << QStringList { QString::fromUtf8("Lume\u0301=1.mp3,2.mp3") };
    }

    void artists()
    {
        QFETCH(QStringList, library);
        const Library lib = Library::from(library);
        auto future = loadArtists(lib.tracks, lib.reader());
        QTEST(describe(future.result()), "artists");
    }

    void loadingCanBeCalledOff()
    {
        const Library lib = Library::from({ "1.mp3|A", "2.mp3|B" });
        auto cancelled = std::make_shared<std::atomic_bool>(true);
        QCOMPARE(describe(loadArtists(lib.tracks, lib.reader(), cancelled).result()), QStringList());
        QCOMPARE(describe(loadArtistDetail(lib.tracks, lib.reader(), cancelled).result()),
            (QStringList { "1.mp3=-", "2.mp3=-" }));
    }

    void detailSortsByFileName_data()
    {
        QTest::addColumn<QStringList>("library");
        QTest::addColumn<QStringList>("infos");
        QTest::newRow("file name without extension, locale order, folders ignored")
            << QStringList { "z/b.mp3|X|One", "a/C.flac|X|  Two ", "m/a.wav|X|\t" }
            << QStringList { "a.wav=-", "b.mp3=One", "C.flac=Two" };
        QTest::newRow("digits compare as text") << QStringList { "2 Two.mp3|X", "10 Ten.mp3|X",
            "1 One.mp3|X" } << QStringList { "1 One.mp3=-", "10 Ten.mp3=-", "2 Two.mp3=-" };
        QTest::newRow("equal names keep the artist's order") << QStringList { "x/same.mp3|X|First",
            "y/same.flac|X|Second" } << QStringList { "same.mp3=First", "same.flac=Second" };
    }

    void detailSortsByFileName()
    {
        QFETCH(QStringList, library);
        const Library lib = Library::from(library);
        QTEST(describe(loadArtistDetail(lib.tracks, lib.reader()).result()), "infos");
    }

    void albums_data()
    {
        QTest::addColumn<QStringList>("library");
        QTest::addColumn<QStringList>("albums");
        QTest::newRow("album names are case-sensitive; songs without album are in no group")
            << QStringList { "1.mp3|X|Live", "2.mp3|X|live", "3.mp3|X|Live", "4.mp3|X" }
            << QStringList { "live=2.mp3", "Live=1.mp3,3.mp3" };
        QTest::newRow("sorted by name, songs in list order") << QStringList { "1.mp3|X|Zeta", "2.mp3|X|Alpha",
            "3.mp3|X|Zeta", "4.mp3|X|beta" } << QStringList { "Alpha=2.mp3", "beta=4.mp3", "Zeta=1.mp3,3.mp3" };
        QTest::newRow("composed and decomposed spellings are one album")
            << QStringList { QString::fromUtf8("1.mp3|X|Caf\u00e9"), QString::fromUtf8("2.mp3|X|Cafe\u0301") }
            << QStringList { QString::fromUtf8("Caf\u00e9=1.mp3,2.mp3") };
    }

    void albums()
    {
        QFETCH(QStringList, library);
        const Library lib = Library::from(library);
        QTEST(describe(albumGroups(loadArtistDetail(lib.tracks, lib.reader()).result())), "albums");
    }
};

QTEST_GUILESS_MAIN(TestGrouping)
#include "tst_grouping.moc"
