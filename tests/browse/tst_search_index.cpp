// SPDX-License-Identifier: GPL-3.0-or-later
#include "BrowseTestUtil.h"
#include "browse/SearchIndex.h"

#include <QFileInfo>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTest>
#include <QThread>
#include <QThreadPool>

using browsetest::Library;

namespace {

QStringList namesIn(const TrackIndex &index)
{
    QStringList names;
    for (const TrackSearchEntry &e : index.entries())
        names.append(e.name);
    return names;
}

} // namespace

class TestSearchIndex : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() // a test holds one build's reads while another runs
    {
        QThreadPool::globalInstance()->setMaxThreadCount(std::max(4, QThread::idealThreadCount()));
    }

    // Tags are read on the pool's threads, interleaved, yet the index keeps
    // the library's order across batches.
    void buildsOffTheGuiThreadInLibraryOrder()
    {
        Library lib;
        for (int i = 0; i < 3000; ++i)
            lib.add(QStringLiteral("%1.mp3|%2Artist %3").arg(i).arg(i == 1 ? " " : "").arg(i % 7));
        const Qt::HANDLE gui = QThread::currentThreadId();
        std::atomic_int readsOnGui = 0;
        SearchIndex index(lib.reader([&](const QString &) {
            readsOnGui += QThread::currentThreadId() == gui;
            QThread::yieldCurrentThread();
        }));
        QSignalSpy building(&index, &SearchIndex::isBuildingChanged);
        index.add(lib.tracks.mid(0, 1000));
        QVERIFY(index.isBuilding() && index.count() == 0);
        index.add(lib.tracks.mid(1000));
        QTRY_COMPARE(building.size(), 2);
        QCOMPARE(readsOnGui.load(), 0);
        QList<Track> order;
        for (const TrackSearchEntry &e : index.trackIndex().entries())
            order.append(e.track);
        QCOMPARE(order, lib.tracks);
        QCOMPARE(index.allArtistNames().first(), QStringLiteral("Artist 0"));
        QCOMPARE(index.artistForTrack(lib.tracks.at(1).id), std::optional<QString>(QStringLiteral("Artist 1")));
        QCOMPARE(index.results(QStringLiteral("artist 3")).artists.value(0).trackCount, 429);
    }

    // Songs added while a build runs wait for the next one; no song is read twice.
    void newSongsAreFoundOnceTheirBuildHasFinished()
    {
        Library lib = Library::from({ "old song.mp3", "new song.mp3", "newer song.mp3" });
        auto gate = std::make_shared<QSemaphore>();
        auto reads = std::make_shared<QStringList>();
        SearchIndex index(lib.reader([gate, reads](const QString &path) {
            if (path.contains(QStringLiteral("/new ")))
                gate->acquire();
            reads->append(QFileInfo(path).fileName()); // one read at a time: the others wait above or are done
        }));
        QSignalSpy indexed(&index, &SearchIndex::songsIndexed);
        index.add({ lib.tracks.at(0) });
        QVERIFY(indexed.wait());

        index.add({ lib.tracks.at(1) }); // held back
        index.add({ lib.tracks.at(2) }); // waits for the build above
        QTRY_COMPARE(reads->size(), 1);
        QCOMPARE(index.results(QStringLiteral("song")).tracks.size(), 1);
        QVERIFY(index.isBuilding());
        gate->release();
        QTRY_VERIFY(!index.isBuilding());
        QCOMPARE(namesIn(index.trackIndex()), (QStringList { "old song", "new song", "newer song" }));
        QCOMPARE(*reads, (QStringList { "old song.mp3", "new song.mp3", "newer song.mp3" }));
        QCOMPARE(indexed.size(), 3);
        QCOMPARE(indexed.at(2), (QVariantList { 2, 1 }));
    }

    // A forgotten folder's songs leave the index without a tag read again,
    // whether they were indexed, being indexed or still waiting.
    void retainDropsSongsThatLeftTheLibrary_data()
    {
        QTest::addColumn<int>("indexedFirst"); // songs indexed before the removal
        QTest::addColumn<bool>("whileBuilding"); // the rest held in a build meanwhile
        QTest::addColumn<int>("reads");
        // A dropped song that waited is never read.
        QTest::newRow("all indexed") << 4 << false << 4;
        QTest::newRow("one being indexed, one waiting") << 2 << true << 3;
        QTest::newRow("none indexed yet") << 0 << true << 2;
    }
    void retainDropsSongsThatLeftTheLibrary()
    {
        QFETCH(int, indexedFirst);
        QFETCH(bool, whileBuilding);
        QFETCH(int, reads);
        Library lib = Library::from({ "keep 1.mp3|A", "drop 1.mp3|B", "keep 2.mp3|A", "drop 2.mp3|B" });
        auto gate = std::make_shared<QSemaphore>();
        auto readCount = std::make_shared<std::atomic_int>(0);
        SearchIndex index(lib.reader([gate, readCount, whileBuilding](const QString &) {
            if (whileBuilding)
                gate->acquire();
            ++*readCount;
        }));
        QSignalSpy removed(&index, &SearchIndex::songsRemoved);
        if (indexedFirst > 0) {
            gate->release(indexedFirst);
            index.add(lib.tracks.mid(0, indexedFirst));
            QTRY_VERIFY(!index.isBuilding());
        }
        if (indexedFirst < lib.tracks.size()) {
            index.add({ lib.tracks.at(indexedFirst) });
            index.add(lib.tracks.mid(indexedFirst + 1));
        }
        const QList<Track> kept { lib.tracks.at(0), lib.tracks.at(2) };
        index.retain(kept);
        gate->release(lib.tracks.size());
        QTRY_VERIFY(!index.isBuilding());
        QCOMPARE(namesIn(index.trackIndex()), (QStringList { "keep 1", "keep 2" }));
        QCOMPARE(index.allArtistNames(), QStringList { "A" });
        QVERIFY(index.results(QStringLiteral("drop")).isEmpty());
        QCOMPARE(removed.isEmpty(), indexedFirst == 0);
        QCOMPARE(readCount->load(), reads);
        // Songs added afterwards are indexed as usual.
        gate->release();
        index.add({ lib.tracks.at(3) });
        QTRY_VERIFY(!index.isBuilding());
        QCOMPARE(namesIn(index.trackIndex()), (QStringList { "keep 1", "keep 2", "drop 2" }));
    }
};

QTEST_GUILESS_MAIN(TestSearchIndex)
#include "tst_search_index.moc"
