// SPDX-License-Identifier: GPL-3.0-or-later
#include "BrowseTestUtil.h"
#include "browse/FoldedColumn.h"
#include "browse/TrackIndex.h"

#include <QTest>

using browsetest::Library;
using namespace Qt::StringLiterals;

namespace {

// Built at once (batch 0), or grown by appends of that many songs as they come in.
TrackIndex indexOf(const Library &lib, qsizetype batch = 0)
{
    QList<TrackSearchEntry> entries;
    const MetadataReader read = lib.reader();
    for (const Track &t : lib.tracks)
        entries.append(makeSearchEntry(t, read(t.path())));
    TrackIndex grown;
    for (qsizetype from = 0; batch > 0 && from < entries.size(); from += batch)
        grown = grown.appended(entries.mid(from, batch));
    return batch > 0 ? grown : TrackIndex(entries);
}

QStringList artistsOf(const SearchResults &r)
{
    QStringList out;
    for (const ArtistSearchResult &a : r.artists)
        out.append(QStringLiteral("%1|%2|%3").arg(a.id, a.name).arg(a.trackCount));
    return out;
}

QStringList tracksOf(const SearchResults &r)
{
    QStringList out;
    for (const TrackSearchEntry &e : r.tracks)
        out.append(e.name);
    return out;
}

QStringList albumsOf(const SearchResults &r)
{
    QStringList out;
    for (const AlbumSearchResult &a : r.albums)
        out.append(QStringList { a.id, a.displayName, a.artist, Library::files(a.tracks) }.join(u'|'));
    return out;
}

} // namespace

class TestSearch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void answers_data()
    {
        QTest::addColumn<QStringList>("library");
        QTest::addColumn<QString>("query");
        QTest::addColumn<QStringList>("artists");
        QTest::addColumn<QStringList>("tracks");
        QTest::addColumn<QStringList>("albums");
        // Lists are written "a;b;c"; artists "id|name|count", albums "id|name|artist|files".
        const auto row = [](const char *name, const char *library, const char *query, const char *artists,
                             const char *tracks = "", const char *albums = "") {
            const auto list = [](const char *text) { return QString::fromUtf8(text).split(u';', Qt::SkipEmptyParts); };
            QTest::newRow(name) << list(library) << QString::fromUtf8(query) << list(artists) << list(tracks)
                                << list(albums);
        };
        const char *beat = "heartbeat.mp3|Someone|Pulse;01 Intro.flac|The Beatmakers|Drums;quiet.mp3|Calm|Still";
        row("spaces only", beat, "   ", "");
        row("outer and Unicode spaces trimmed, case ignored", beat, "\t BEAT\u00a0\u3000",
            "the beatmakers|The Beatmakers|1", "heartbeat");
        row("inner spaces match literally", beat, "the  beatmakers", "");
        row("spellings merge under the first", "a.mp3|NOVA;b.mp3|Nova;c.mp3|Other;d.mp3|nova", "nov", "nova|NOVA|3");
        row("artists in library order", "1.mp3|Zed Band;2.mp3|Anna Band;3.mp3|Mid Band", "band",
            "zed band|Zed Band|1;anna band|Anna Band|1;mid band|Mid Band|1");
        row("artists cut to three after counting", "1.mp3|Ax;2.mp3|Bx;3.mp3|Cx;4.mp3|Dx;5.mp3|ax;6.mp3|CX", "x",
            "ax|Ax|2;bx|Bx|1;cx|Cx|2");
        row("no artist tag, no artist hit", "x.mp3||Nothing;y.mp3|   |Nothing;z.mp3", "noth", "", "",
            "::nothing|Nothing||x.mp3,y.mp3");
        row("an album by two artists is two hits",
            "1.mp3|Artist A|Greatest Hits;2.mp3|Artist B|Greatest Hits;3.mp3|artist a|GREATEST HITS", "greatest", "", "",
            "artist a::greatest hits|Greatest Hits|Artist A|1.mp3,3.mp3;artist b::greatest hits|Greatest Hits|Artist B|2.mp3");
        row("songs found by file name only", "one.mp3|Band|Midnight Sun;midnight.mp3|Band|Midnight Sun", "midnight",
            "", "midnight", "band::midnight sun|Midnight Sun|Band|one.mp3,midnight.mp3");
        row("albums cut to three", "1.mp3|A|Live 1;2.mp3|A|Live 2;3.mp3|A|Live 3;4.mp3|A|Live 4;5.mp3|A|live 1", "live",
            "", "", "a::live 1|Live 1|A|1.mp3,5.mp3;a::live 2|Live 2|A|2.mp3;a::live 3|Live 3|A|3.mp3");
        row("the first four songs in library order", "tune 9.mp3;tune 8.mp3;tune 7.mp3;tune 6.mp3;tune 0.mp3", "tune",
            "", "tune 9;tune 8;tune 7;tune 6");
        row("songs are not de-duplicated", "a/same.mp3;b/same.flac", "same", "", "same;same");
        row("no accent folding", "x.mp3|Lumé", "lume", "");
        row("decomposed query", "Caf\u00e9 Noir.mp3", "CAFE\u0301", "", "Caf\u00e9 Noir");
        row("both spellings are one artist", "1.mp3|Lume\u0301;2.mp3|Lum\u00e9", "lum", "lum\u00e9|Lume\u0301|2");
        row("a marked letter isn't its base", "1.mp3|Q\u0303uartet;2.mp3|Quartet", "q", "quartet|Quartet|1");
        row("lower-casing beyond ASCII", "1.mp3|\u0391\u0398\u0397\u039d\u0391;\u00c9CLAT.flac", "\u03b8\u03b7",
            "\u03b1\u03b8\u03b7\u03bd\u03b1|\u0391\u0398\u0397\u039d\u0391|1");
    }

    void answers()
    {
        QFETCH(QStringList, library);
        QFETCH(QString, query);
        for (const qsizetype batch : {0, 1, 2}) {
            const SearchResults r = computeSearchResults(query, indexOf(Library::from(library), batch));
            QTEST(artistsOf(r), "artists");
            QTEST(tracksOf(r), "tracks");
            QTEST(albumsOf(r), "albums");
        }
    }

    void entries_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("artistTag");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("artist");
        QTest::newRow("extension dropped, inner dots kept") << "/m/a.b.flac" << "X" << "a.b" << "X";
        QTest::newRow("horizontal whitespace trimmed") << "/m/s.mp3" << "\t\u00a0 The Band \u2003\t" << "s" << "The Band";
        QTest::newRow("line breaks kept") << "/m/s.mp3" << "\nBand\n" << "s" << "\nBand\n";
        QTest::newRow("blank tag is empty") << "/m/s.mp3" << " \t " << "s" << "";
    }

    void entries()
    {
        QFETCH(QString, file);
        QFETCH(QString, artistTag);
        TrackMetadata m;
        m.artist = artistTag;
        m.title = QStringLiteral("Overture");
        const TrackSearchEntry e = makeSearchEntry(Track::create(QUrl::fromLocalFile(file)), m);
        QTEST(e.name, "name");
        QTEST(e.artist, "artist");
        QCOMPARE(e.album, QString());
        QVERIFY(computeSearchResults(QStringLiteral("overture"), TrackIndex({ e })).isEmpty());
    }

    void allArtistNamesDedupesAndSorts()
    {
        const Library lib = Library::from({ "1.mp3|beta", "2.mp3|Alpha", "3.mp3|ALPHA", "4.mp3|  ", "5.mp3",
            "6.mp3|Zed", QString::fromUtf8("7.mp3|\u00c9mile"), "8.mp3|gamma", "9.mp3|alpha " });
        for (const qsizetype batch : {0, 1, 4})
            QCOMPARE(allArtistNames(indexOf(lib, batch)),
                (QStringList { "Alpha", "beta", QString::fromUtf8("\u00c9mile"), "gamma", "Zed" }));
        QCOMPARE(allArtistNames(TrackIndex()), QStringList());
    }

    // The trimmed tag of a song's first entry; none without a tag.
    void artistOfATrack()
    {
        Library lib = Library::from({ "1.mp3|First", "2.mp3", "3.mp3|  Third  " });
        QList<TrackSearchEntry> entries = indexOf(lib).entries().toList();
        entries.append({ lib.tracks.at(0), QStringLiteral("1"), QStringLiteral("Later"), {} });
        const TrackIndex index(entries);
        const QList<std::optional<QString>> expected { u"First"_s, std::nullopt, u"Third"_s };
        for (int i = 0; i < 3; ++i)
            QCOMPARE(artistForTrack(index, lib.tracks.at(i).id), expected[i]);
        QCOMPARE(artistForTrack(index, QUuid::createUuid()), std::nullopt);
    }

    // Indexes grown from one base share its entries yet never see each other's:
    // the base keeps its songs when a block it shares is filled, and two
    // indexes grown from it apart hold their own songs, across block edges.
    void grownIndexesKeepTheirOwnEntries()
    {
        const auto entriesNamed = [](const QString &prefix, int count) {
            QList<TrackSearchEntry> list;
            for (int i = 0; i < count; ++i) {
                const QString name = prefix + QString::number(i);
                list.append({ Track::create(QUrl::fromLocalFile(u"/m/"_s + name + u".mp3"_s)), name, prefix, {} });
            }
            return list;
        };
        const auto namesOf = [](const TrackIndex &index) {
            QStringList names;
            for (const TrackSearchEntry &e : index.entries())
                names.append(e.name);
            return names;
        };
        const qsizetype block = TrackEntries::blockSize;
        const TrackIndex base(entriesNamed(u"base"_s, int(block) - 1));
        const QStringList baseNames = namesOf(base);
        const TrackIndex one = base.appended(entriesNamed(u"one"_s, 3));
        const TrackIndex two = base.appended(entriesNamed(u"two"_s, int(block) + 2));
        const TrackIndex onward = one.appended(entriesNamed(u"onward"_s, 1));
        QCOMPARE(namesOf(base), baseNames);
        QCOMPARE(namesOf(one), baseNames + namesOf(TrackIndex(entriesNamed(u"one"_s, 3))));
        QCOMPARE(namesOf(two).mid(block - 1), namesOf(TrackIndex(entriesNamed(u"two"_s, int(block) + 2))));
        QCOMPARE(namesOf(onward).mid(block - 1),
                 namesOf(TrackIndex(entriesNamed(u"one"_s, 3) + entriesNamed(u"onward"_s, 1))));
        QCOMPARE(computeSearchResults(u"one"_s, two).tracks.size(), 0);
        QCOMPARE(computeSearchResults(u"two"_s, one).tracks.size(), 0);
    }

    // Wherever a match falls relative to the blocks the scan compares at once,
    // and however close to the end of the column, it is found in the right key,
    // nothing before it is, and a match across two keys is none.
    void foldedColumnAtEveryOffset()
    {
        for (int offset = 0; offset < 40; ++offset) {
            for (const QString &needle : {u"q"_s, u"qz"_s, u"qxz"_s, u"t\u00e9"_s, u"aqzzzzzzzzzzzzzzzzzb"_s}) {
                const QString pad(offset, u'y');
                FoldedColumn column, atEnd, split; // split: the needle cut in two
                for (const QString &key : {QString(37, u'a'), pad + needle, u"tail"_s})
                    column.append(key);
                atEnd.append(pad);
                atEnd.append(pad + needle);
                split.append(pad + needle.chopped(1));
                split.append(needle.right(1) + u"tail"_s);
                const std::string n = needle.toStdString();
                QCOMPARE(column.findNext(n), size_t(1));
                QCOMPARE(column.findNext(n, 2), size_t(3));
                QCOMPARE(atEnd.findNext(n), size_t(1));
                QCOMPARE(atEnd.findNext(n.substr(0, n.size() - 1) + '!'), size_t(2));
                QCOMPARE(split.findNext(n), size_t(needle.size() > 1 ? 2 : 1));
            }
        }
    }
};

QTEST_GUILESS_MAIN(TestSearch)
#include "tst_search.moc"
