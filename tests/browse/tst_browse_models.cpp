// SPDX-License-Identifier: GPL-3.0-or-later
#include "BrowseTestUtil.h"
#include "browse/ArtistDetail.h"
#include "browse/ArtistListModel.h"
#include "browse/SearchIndex.h"
#include "browse/SongListModel.h"
#include "browse/TagMemo.h"

#include <QAbstractItemModelTester>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTest>
#include <QThread>
#include <QThreadPool>

#include <limits>

using browsetest::Library;

namespace {

QStringList column(const QAbstractItemModel &model, const QByteArray &role)
{
    const int r = model.roleNames().key(role, -1);
    QStringList out;
    for (int row = 0; row < model.rowCount(); ++row)
        out.append(model.data(model.index(row, 0), r).toString());
    return out;
}

} // namespace

class TestBrowseModels : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QThreadPool::globalInstance()->setMaxThreadCount(std::max(4, QThread::idealThreadCount()));
    }

    // What a song list does when its songs change: a list that only gained
    // songs inserts rows where they are (the view keeps its place), the same
    // list does nothing, any other list resets.
    void songListGrowsOrResets_data()
    {
        QTest::addColumn<QList<int>>("before");
        QTest::addColumn<QList<int>>("after");
        QTest::addColumn<QString>("signals");

        QTest::newRow("grew at its end") << QList<int>{0, 1} << QList<int>{0, 1, 2, 3} << "insert 2-3";
        QTest::newRow("from nothing") << QList<int>{} << QList<int>{0, 1} << "insert 0-1";
        QTest::newRow("the same songs") << QList<int>{0, 1, 2} << QList<int>{0, 1, 2} << "";
        QTest::newRow("shorter") << QList<int>{0, 1, 2} << QList<int>{0, 1} << "reset";
        QTest::newRow("grew in front") << QList<int>{1, 2} << QList<int>{0, 1, 2} << "insert 0-0";
        QTest::newRow("grew between and after") << QList<int>{0, 2} << QList<int>{0, 1, 2, 3} << "insert 1-1,insert 3-3";
        QTest::newRow("reordered") << QList<int>{0, 1} << QList<int>{1, 0, 2} << "reset";
    }

    void songListGrowsOrResets()
    {
        QFETCH(QList<int>, before);
        QFETCH(QList<int>, after);
        QFETCH(QString, signals);
        const Library lib = Library::from({"a.mp3", "b.mp3", "c.mp3", "d.mp3"});
        const auto pick = [&lib](const QList<int> &rows) {
            QList<Track> out;
            for (int row : rows)
                out.append(lib.tracks.at(row));
            return out;
        };
        SongListModel model([](const QString &) { return FileTags{}; });
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        model.setTracks(pick(before));

        QStringList seen;
        connect(&model, &QAbstractItemModel::rowsInserted, this,
                [&](const QModelIndex &, int first, int last) { seen.append(QStringLiteral("insert %1-%2").arg(first).arg(last)); });
        connect(&model, &QAbstractItemModel::modelReset, this, [&] { seen.append(QStringLiteral("reset")); });
        QSignalSpy count(&model, &SongListModel::countChanged);
        model.setTracks(pick(after));
        QCOMPARE(seen.join(u','), signals);
        QCOMPARE(count.size(), before.size() == after.size() ? 0 : 1);
        QCOMPARE(Library::files(model.tracks()), Library::files(pick(after)));
    }

    // Artist and length come from the files, read off the GUI thread for the
    // rows a view asks for, once each until the files are said to have changed.
    void songRowsReadTheirFilesWhenShown()
    {
        const Library lib = Library::from({"a.mp3", "b.mp3", "c.mp3"});
        auto reads = std::make_shared<QAtomicInt>();
        auto artist = std::make_shared<QString>(QStringLiteral("Nova")); // changed only while no read runs
        SongListModel model([reads, artist](const QString &path) {
            reads->ref();
            FileTags tags;
            tags.metadata.artist = *artist;
            tags.duration = path.endsWith(u"b.mp3") ? std::numeric_limits<double>::infinity() : 61.5;
            return tags;
        });
        model.setTracks(lib.tracks);
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        const auto value = [&model](int row, int role) { return model.data(model.index(row), role); };
        QCOMPARE(value(0, SongListModel::ArtistRole).toString(), QString());
        QCOMPARE(value(2, SongListModel::DurationRole).toDouble(), 0.0);
        QCOMPARE(value(1, SongListModel::DurationRole).toDouble(), 0.0);
        QTRY_COMPARE(value(0, SongListModel::ArtistRole).toString(), QStringLiteral("Nova"));
        QTRY_COMPARE(value(2, SongListModel::DurationRole).toDouble(), 61.5);
        QTRY_COMPARE(value(1, SongListModel::ArtistRole).toString(), QStringLiteral("Nova"));
        QCOMPARE(value(1, SongListModel::DurationRole).toDouble(), 0.0); // a length that isn't a number is unknown
        QCOMPARE(reads->loadRelaxed(), 3);

        *artist = QStringLiteral("Echo");
        model.forgetFileInfo();
        QCOMPARE(value(0, SongListModel::ArtistRole).toString(), QString());
        QTRY_COMPARE(value(0, SongListModel::ArtistRole).toString(), QStringLiteral("Echo"));
        QCOMPARE(reads->loadRelaxed(), 4);
    }

    void artistGrid()
    {
        const Library lib = Library::from({ "1.mp3|Nova", "2.mp3|Echo", "3.mp3|NOVA", "4.mp3" });
        ArtistListModel model(lib.reader());
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy loaded(&model, &ArtistListModel::loaded);
        model.load(lib.tracks);
        QVERIFY(model.isLoading());
        QVERIFY(loaded.wait() && !model.isLoading());
        QCOMPARE(column(model, "name"), (QStringList { "Echo", "Nova" }));
        QCOMPARE(column(model, "trackCount"), (QStringList { "1", "2" }));
        QCOMPARE(Library::files(model.tracksOf(QStringLiteral("Nova"))), QStringLiteral("1.mp3,3.mp3"));

        // The library grew: rows are inserted and recounted, the grid is not reset.
        Library grown = lib;
        grown.add(QStringLiteral("5.mp3|Alpha"));
        grown.add(QStringLiteral("6.mp3|echo"));
        QSignalSpy reset(&model, &QAbstractItemModel::modelReset);
        QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        model.load(grown.tracks);
        QVERIFY(loaded.wait());
        QCOMPARE(column(model, "name"), (QStringList { "Alpha", "Echo", "Nova" }));
        QCOMPARE(column(model, "trackCount"), (QStringList { "1", "2", "2" }));
        QVERIFY(reset.isEmpty() && inserted.size() == 1 && changed.size() == 1);
        QCOMPARE(changed.first().at(0).toModelIndex().row(), 1);
    }

    // The index reads each file once (whether it holds a picture too); grouping
    // then answers from memory, until a file's tags are saved.
    void tagsAreReadOnceForIndexAndGrouping()
    {
        Library lib = Library::from({ "1.mp3|Nova|Blue", "2.mp3|Nova|Blue", "3.mp3|Echo" });
        auto reads = std::make_shared<QAtomicInt>();
        (*lib.tags)[lib.tracks.at(1).path()].hasPicture = true;
        TagMemo memo(lib.reader([reads](const QString &) { reads->ref(); }));
        SearchIndex index(memo.reader());
        QSignalSpy indexed(&index, &SearchIndex::songsIndexed);
        index.add(lib.tracks);
        QVERIFY(indexed.wait());
        // What the pictures of albums need to know comes through the memo too.
        QList<bool> pictures;
        for (const TrackSearchEntry &e : index.trackIndex().entries())
            pictures.append(e.hasPicture);
        QCOMPARE(pictures, (QList<bool> { false, true, false }));
        ArtistListModel artists(memo.reader());
        QSignalSpy loaded(&artists, &ArtistListModel::loaded);
        artists.load(lib.tracks);
        QVERIFY(loaded.wait());
        QCOMPARE(column(artists, "name"), (QStringList { "Echo", "Nova" }));
        QCOMPARE(reads->loadRelaxed(), 3);

        (*lib.tags)[lib.tracks.at(2).path()].artist = QStringLiteral("Nova");
        memo.forget(lib.tracks.at(2).path());
        artists.load(lib.tracks);
        QVERIFY(loaded.wait());
        QCOMPARE(column(artists, "name"), (QStringList { "Nova" }));
        QCOMPARE(reads->loadRelaxed(), 4);
    }

    // Albums by name, case apart; songs in file-name order. Choosing an album
    // filters the songs and plays its first; the choice outlives a reload.
    void artistDetail()
    {
        const Library lib
            = Library::from({ "c.mp3|X|Live", "a.mp3|X|Studio", "b.mp3|X", "d.mp3|X|live", "0.mp3|X|Live" });
        ArtistDetail detail(lib.reader());
        QAbstractItemModelTester albumsTester(detail.albums(), QAbstractItemModelTester::FailureReportingMode::QtTest);
        QAbstractItemModelTester tracksTester(detail.tracks(), QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy loaded(&detail, &ArtistDetail::loaded);
        detail.load(QStringLiteral("X"), lib.tracks);
        QVERIFY(detail.isLoading());
        QVERIFY(loaded.wait());
        QCOMPARE(column(*detail.albums(), "name"), (QStringList { "live", "Live", "Studio" }));
        QCOMPARE(column(*detail.albums(), "trackCount"), (QStringList { "1", "2", "1" }));
        QCOMPARE(column(*detail.tracks(), "album"), (QStringList { "Live", "Studio", "", "Live", "live" }));

        QCOMPARE(detail.selectAlbum(QStringLiteral("Live")).value_or(Track()).url.fileName(), QStringLiteral("0.mp3"));
        QCOMPARE(column(*detail.albums(), "isSelected"), (QStringList { "false", "true", "false" }));
        QCOMPARE(column(*detail.tracks(), "name"), (QStringList { "0", "c" }));
        QVERIFY(!detail.selectAlbum(QStringLiteral("Elsewhere")));
        QCOMPARE(detail.tracks()->count(), 0);
        detail.setSelectedAlbum(QStringLiteral("Studio"));
        detail.load(QStringLiteral("X"), lib.tracks);
        QVERIFY(loaded.wait());
        QCOMPARE(column(*detail.tracks(), "trackId"), QStringList { trackjson::uuidText(lib.tracks.at(1).id) });
    }

    // A load started while another runs wins, even when the first finishes late.
    void aNewLoadSupersedesARunningOne()
    {
        Library lib = Library::from({ "held.mp3|A|First", "free.mp3|B|Second" });
        auto gate = std::make_shared<QSemaphore>();
        const MetadataReader held = lib.reader([gate](const QString &path) {
            if (path.contains(QStringLiteral("held")))
                gate->acquire();
        });
        ArtistListModel grid(held);
        ArtistDetail detail(held);
        QAbstractItemModelTester tester(&grid, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy gridLoaded(&grid, &ArtistListModel::loaded);
        QSignalSpy detailLoaded(&detail, &ArtistDetail::loaded);
        grid.load({ lib.tracks.at(0) });
        grid.load({ lib.tracks.at(1) });
        detail.load(QStringLiteral("A"), { lib.tracks.at(0) });
        detail.load(QStringLiteral("B"), { lib.tracks.at(1) });
        QTRY_COMPARE(gridLoaded.size() + detailLoaded.size(), 2);
        gate->release(2);
        QThreadPool::globalInstance()->waitForDone();
        QCoreApplication::processEvents();
        QCOMPARE(gridLoaded.size() + detailLoaded.size(), 2);
        QCOMPARE(column(grid, "name"), QStringList { "B" });
        QVERIFY(!grid.isLoading());
        QCOMPARE(detail.artistName(), QStringLiteral("B"));
        QCOMPARE(column(*detail.albums(), "name"), QStringList { "Second" });
    }
};

QTEST_GUILESS_MAIN(TestBrowseModels)
#include "tst_browse_models.moc"
