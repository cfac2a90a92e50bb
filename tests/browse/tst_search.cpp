// SPDX-License-Identifier: GPL-3.0-or-later
#include "BrowseTestUtil.h"
#include "browse/FoldedColumn.h"
#include "browse/TrackIndex.h"

#include <QRandomGenerator>
#include <QTest>

using browsetest::Library;

namespace {

TrackIndex indexOf(const Library &lib)
{
    QList<TrackSearchEntry> entries;
    const MetadataReader read = lib.reader();
    for (const Track &t : lib.tracks)
        entries.append(makeSearchEntry(t, read(t.path())));
    return TrackIndex(entries);
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
        row("empty index", "", "a", "");
        row("outer spaces and space separators trimmed, case ignored", beat, "\t BEAT\u00a0\u3000",
            "the beatmakers|The Beatmakers|1", "heartbeat");
        row("inner spaces match literally", beat, "the  beatmakers", "");
        row("spellings merge under the first, counted over the whole index",
            "a.mp3|NOVA;b.mp3|Nova;c.mp3|Other;d.mp3|nova", "nov", "nova|NOVA|3");
        row("artists in library order, not by name", "1.mp3|Zed Band;2.mp3|Anna Band;3.mp3|Mid Band", "band",
            "zed band|Zed Band|1;anna band|Anna Band|1;mid band|Mid Band|1");
        row("artists cut to three after counting", "1.mp3|Ax;2.mp3|Bx;3.mp3|Cx;4.mp3|Dx;5.mp3|ax;6.mp3|CX", "x",
            "ax|Ax|2;bx|Bx|1;cx|Cx|2");
        row("an artist whose file names don't match is listed under artists only",
            "song one.mp3|Lantern|Glow;song two.mp3|Lantern|Glow", "lant", "lantern|Lantern|2");
        row("no artist tag never gives an artist hit", "x.mp3||Nothing;y.mp3|   |Nothing;z.mp3", "noth", "", "",
            "::nothing|Nothing||x.mp3,y.mp3");
        row("same album by two artists gives two hits",
            "1.mp3|Artist A|Greatest Hits;2.mp3|Artist B|Greatest Hits;3.mp3|artist a|GREATEST HITS", "greatest", "", "",
            "artist a::greatest hits|Greatest Hits|Artist A|1.mp3,3.mp3;artist b::greatest hits|Greatest Hits|Artist B|2.mp3");
        row("album name finds the album, its songs only by file name",
            "one.mp3|Band|Midnight Sun;midnight.mp3|Band|Midnight Sun", "midnight", "", "midnight",
            "band::midnight sun|Midnight Sun|Band|one.mp3,midnight.mp3");
        row("albums cut to three, song lists over the whole index",
            "1.mp3|A|Live 1;2.mp3|A|Live 2;3.mp3|A|Live 3;4.mp3|A|Live 4;5.mp3|A|live 1", "live", "", "",
            "a::live 1|Live 1|A|1.mp3,5.mp3;a::live 2|Live 2|A|2.mp3;a::live 3|Live 3|A|3.mp3");
        row("ten song hits give the first four in library order",
            "tune 9.mp3;tune 8.mp3;tune 7.mp3;tune 6.mp3;tune 5.mp3;tune 4.mp3;tune 3.mp3;tune 2.mp3;tune 1.mp3;tune 0.mp3",
            "tune", "", "tune 9;tune 8;tune 7;tune 6");
        row("songs are not de-duplicated", "a/same.mp3;b/same.flac", "same", "", "same;same");
        row("title tags are not searched, extensions are not names", "Track 01.mp3", "mp3", "");
        row("no accent folding", "x.mp3|Lumé", "lume", "");
        row("precomposed file name, decomposed query", "Caf\u00e9 Noir.mp3", "CAFE\u0301", "", "Caf\u00e9 Noir");
        row("both spellings are one artist", "1.mp3|Lume\u0301;2.mp3|Lum\u00e9", "lum", "lum\u00e9|Lume\u0301|2");
        row("a base letter doesn't match a letter with a combining mark", "1.mp3|Q\u0303uartet;2.mp3|Quartet", "q",
            "quartet|Quartet|1");
        row("lower-casing beyond ASCII", "1.mp3|\u0391\u0398\u0397\u039d\u0391;\u00c9CLAT.flac", "\u03b8\u03b7",
            "\u03b1\u03b8\u03b7\u03bd\u03b1|\u0391\u0398\u0397\u039d\u0391|1");
    }

    void answers()
    {
        QFETCH(QStringList, library);
        QFETCH(QString, query);
        const SearchResults r = computeSearchResults(query, indexOf(Library::from(library)));
        QTEST(artistsOf(r), "artists");
        QTEST(tracksOf(r), "tracks");
        QTEST(albumsOf(r), "albums");
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
        QCOMPARE(allArtistNames(indexOf(lib)),
            (QStringList { "Alpha", "beta", QString::fromUtf8("\u00c9mile"), "gamma", "Zed" }));
        QCOMPARE(allArtistNames(TrackIndex()), QStringList());
    }

    // The trimmed tag of a song's first entry; none without a tag.
    void artistOfATrack()
    {
        Library lib = Library::from({ "1.mp3|First", "2.mp3", "3.mp3|  Third  " });
        QList<TrackSearchEntry> entries = indexOf(lib).entries();
        entries.append({ lib.tracks.at(0), QStringLiteral("1"), QStringLiteral("Later"), {} });
        const TrackIndex index(entries);
        QCOMPARE(artistForTrack(index, lib.tracks.at(0).id), std::optional<QString>(QStringLiteral("First")));
        QCOMPARE(artistForTrack(index, lib.tracks.at(1).id), std::nullopt);
        QCOMPARE(artistForTrack(index, lib.tracks.at(2).id), std::optional<QString>(QStringLiteral("Third")));
        QCOMPARE(artistForTrack(index, QUuid::createUuid()), std::nullopt);
    }

    // An index that grew by appends as songs came in answers every query as
    // one built from the same songs at once.
    void appendsAnswerAsOneBuild()
    {
        QRandomGenerator rng(20240611);
        // Few letters, so names collide; ':' and ' ' for album ids; accents and Greek in both cases.
        const QStringList alphabet { "a", "b", "A", "B", ":", " ", "é", "É", "σ", "Σ", "x" };
        const auto word = [&](int maxLength) {
            QString w;
            const int n = rng.bounded(maxLength + 1);
            for (int i = 0; i < n; ++i)
                w += alphabet.at(rng.bounded(int(alphabet.size())));
            return w;
        };
        for (int round = 0; round < 20; ++round) {
            QList<TrackSearchEntry> entries;
            const int songs = rng.bounded(60);
            for (int i = 0; i < songs; ++i) {
                const Track t = Track::create(QUrl::fromLocalFile(QStringLiteral("/m/%1.mp3").arg(i)));
                TrackMetadata m;
                if (rng.bounded(4) != 0)
                    m.artist = word(3);
                if (rng.bounded(3) != 0)
                    m.album = word(4);
                TrackSearchEntry e = makeSearchEntry(t, m);
                e.name = word(rng.bounded(3) == 0 ? 24 : 5);
                entries.append(e);
            }
            TrackIndex grown;
            for (qsizetype from = 0; from < entries.size();) {
                const qsizetype n = 1 + rng.bounded(12);
                grown = grown.appended(entries.mid(from, n));
                from += n;
            }
            const TrackIndex whole(entries);
            QCOMPARE(allArtistNames(grown), allArtistNames(whole));
            for (int k = 0; k < 60; ++k) {
                const QString query = word(3);
                const SearchResults a = computeSearchResults(query, grown);
                const SearchResults b = computeSearchResults(query, whole);
                QVERIFY2(artistsOf(a) == artistsOf(b) && tracksOf(a) == tracksOf(b) && albumsOf(a) == albumsOf(b),
                         qPrintable(QStringLiteral("round %1, query '%2'").arg(round).arg(query)));
            }
        }
    }

    // Wherever a match falls relative to the blocks the scan compares at once,
    // and however close to the end of the column, it is found in the right key,
    // nothing before it is, and a match across two keys is none.
    void foldedColumnAtEveryOffset()
    {
        for (int offset = 0; offset < 40; ++offset) {
            for (const QString &needle : {QStringLiteral("q"), QStringLiteral("qz"), QStringLiteral("qxz"), QStringLiteral("t\u00e9"),
                                          QStringLiteral("aqzzzzzzzzzzzzzzzzzb")}) {
                FoldedColumn column;
                column.append(QString(37, u'a'));
                column.append(QString(offset, u'y') + needle);
                column.append(QStringLiteral("tail"));
                FoldedColumn atEnd;
                atEnd.append(QString(offset, u'y'));
                atEnd.append(QString(offset, u'y') + needle);
                const QByteArray n = needle.toUtf8();
                const std::string_view v(n.constData(), size_t(n.size()));
                QCOMPARE(column.findNext(v), size_t(1));
                QCOMPARE(column.findNext(v, 2), size_t(3));
                QCOMPARE(atEnd.findNext(v), size_t(1));
                const std::string miss = std::string(v.substr(0, v.size() - 1)) + '!';
                QCOMPARE(atEnd.findNext(miss), size_t(2));
                FoldedColumn split; // a longer needle cut in two
                split.append(QString(offset, u'y') + needle.chopped(1));
                split.append(needle.right(1) + QStringLiteral("tail"));
                QCOMPARE(split.findNext(v), size_t(needle.size() > 1 ? 2 : 1));
            }
        }
    }
};

QTEST_GUILESS_MAIN(TestSearch)
#include "tst_search.moc"
