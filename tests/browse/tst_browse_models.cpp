// SPDX-License-Identifier: GPL-3.0-or-later
#include "BrowseTestUtil.h"
#include "browse/ArtistDetail.h"
#include "browse/ArtistListModel.h"

#include <QAbstractItemModelTester>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTest>
#include <QThread>
#include <QThreadPool>

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

    void artistGrid()
    {
        const Library lib = Library::from({ "1.mp3|Nova", "2.mp3|Echo", "3.mp3|NOVA", "4.mp3" });
        ArtistListModel model(lib.reader());
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy loaded(&model, &ArtistListModel::loaded);
        QSignalSpy loading(&model, &ArtistListModel::isLoadingChanged);

        model.load(lib.tracks);
        QVERIFY(model.isLoading());
        QVERIFY(loaded.wait());
        QVERIFY(!model.isLoading());
        QCOMPARE(loading.count(), 2);
        QCOMPARE(model.count(), 2);
        QCOMPARE(column(model, "name"), (QStringList { "Echo", "Nova" }));
        QCOMPARE(column(model, "trackCount"), (QStringList { "1", "2" }));
        QCOMPARE(model.indexOf(QStringLiteral("Nova")), 1);
        QCOMPARE(model.indexOf(QStringLiteral("NOVA")), -1);
        QCOMPARE(Library::files(model.tracksOf(QStringLiteral("Nova"))), QStringLiteral("1.mp3,3.mp3"));
        QVERIFY(model.tracksOf(QStringLiteral("nobody")).isEmpty());

        model.load({});
        QVERIFY(loaded.wait());
        QCOMPARE(model.count(), 0);
    }

    void aNewLoadSupersedesARunningOne()
    {
        Library lib = Library::from({ "held.mp3|Old Name", "free.mp3|New Name" });
        auto gate = std::make_shared<QSemaphore>();
        const MetadataReader inner = lib.reader();
        ArtistListModel model([inner, gate](const QString &path) {
            if (path.contains(QStringLiteral("held")))
                gate->acquire();
            return inner(path);
        });
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy loaded(&model, &ArtistListModel::loaded);

        model.load({ lib.tracks.at(0) });
        model.load({ lib.tracks.at(1) });
        QVERIFY(loaded.wait());
        QCOMPARE(column(model, "name"), QStringList { "New Name" });

        // The first load finishes late; what it found is not shown.
        gate->release();
        QVERIFY(!loaded.wait(300));
        QCOMPARE(column(model, "name"), QStringList { "New Name" });
        QVERIFY(!model.isLoading());
    }

    void artistDetail()
    {
        const Library lib
            = Library::from({ "c.mp3|X|Live", "a.mp3|X|Studio", "b.mp3|X", "d.mp3|X|live", "0.mp3|X|Live" });
        ArtistDetail detail(lib.reader());
        QAbstractItemModelTester albumsTester(
            detail.albums(), QAbstractItemModelTester::FailureReportingMode::QtTest);
        QAbstractItemModelTester tracksTester(
            detail.tracks(), QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy loaded(&detail, &ArtistDetail::loaded);
        QSignalSpy selection(&detail, &ArtistDetail::selectedAlbumChanged);

        detail.load(QStringLiteral("X"), lib.tracks);
        QCOMPARE(detail.artistName(), QStringLiteral("X"));
        QVERIFY(detail.isLoading());
        QVERIFY(loaded.wait());
        QVERIFY(!detail.isLoading());
        QCOMPARE(column(*detail.albums(), "name"), (QStringList { "live", "Live", "Studio" }));
        QCOMPARE(column(*detail.albums(), "trackCount"), (QStringList { "1", "2", "1" }));
        QCOMPARE(column(*detail.albums(), "isSelected"), (QStringList { "false", "false", "false" }));
        QCOMPARE(column(*detail.tracks(), "name"), (QStringList { "0", "a", "b", "c", "d" }));
        QCOMPARE(column(*detail.tracks(), "album"), (QStringList { "Live", "Studio", "", "Live", "live" }));

        // Choosing an album filters the songs and plays its first in file-name order.
        const std::optional<Track> play = detail.selectAlbum(QStringLiteral("Live"));
        QVERIFY(play);
        QCOMPARE(play->url.fileName(), QStringLiteral("0.mp3"));
        QCOMPARE(detail.selectedAlbum(), QStringLiteral("Live"));
        QCOMPARE(selection.count(), 1);
        QCOMPARE(column(*detail.albums(), "isSelected"), (QStringList { "false", "true", "false" }));
        QCOMPARE(column(*detail.tracks(), "name"), (QStringList { "0", "c" }));

        // An album the artist doesn't have lists nothing and plays nothing.
        QVERIFY(!detail.selectAlbum(QStringLiteral("Elsewhere")));
        QCOMPARE(detail.tracks()->count(), 0);
        QCOMPARE(column(*detail.albums(), "isSelected"), (QStringList { "false", "false", "false" }));

        detail.showAll();
        QCOMPARE(detail.selectedAlbum(), QString());
        QCOMPARE(detail.tracks()->count(), 5);

        // The album filter outlives a reload (it belongs to the main state).
        detail.setSelectedAlbum(QStringLiteral("Studio"));
        detail.load(QStringLiteral("X"), lib.tracks);
        QVERIFY(loaded.wait());
        QCOMPARE(column(*detail.tracks(), "name"), QStringList { "a" });
        QCOMPARE(
            column(*detail.tracks(), "trackId"), QStringList { trackjson::uuidText(lib.tracks.at(1).id) });
    }

    void detailOfAnotherArtistSupersedes()
    {
        Library lib = Library::from({ "held.mp3|A|First", "free.mp3|B|Second" });
        auto gate = std::make_shared<QSemaphore>();
        const MetadataReader inner = lib.reader();
        ArtistDetail detail([inner, gate](const QString &path) {
            if (path.contains(QStringLiteral("held")))
                gate->acquire();
            return inner(path);
        });
        QSignalSpy loaded(&detail, &ArtistDetail::loaded);
        detail.load(QStringLiteral("A"), { lib.tracks.at(0) });
        detail.load(QStringLiteral("B"), { lib.tracks.at(1) });
        QVERIFY(loaded.wait());
        gate->release();
        QVERIFY(!loaded.wait(300));
        QCOMPARE(detail.artistName(), QStringLiteral("B"));
        QCOMPARE(column(*detail.albums(), "name"), QStringList { "Second" });
    }
};

QTEST_GUILESS_MAIN(TestBrowseModels)
#include "tst_browse_models.moc"
