// SPDX-License-Identifier: GPL-3.0-or-later
// The untagged-songs screen: which songs it lists, its selection, and the
// batch save checked on real files (and with metaflac).
#include "UntaggedSongs.h"
#include "support/TestSupport.h"
#include "tags/TagReader.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

namespace {

std::optional<QString> opt(const char *text)
{
    return text ? std::optional<QString>(QString::fromUtf8(text)) : std::nullopt;
}

} // namespace

class TestUntaggedSongs : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

    // A FLAC file with the given tags (null: no such tag), as a song of the library.
    Track makeSong(const QString &name, const char *title, const char *artist, const char *album)
    {
        const QString path = m_dir.filePath(name);
        QStringList args{QStringLiteral("--remove-all-tags")};
        const std::pair<const char *, const char *> tags[] = {{"TITLE", title}, {"ARTIST", artist}, {"ALBUM", album}};
        for (const auto &[key, value] : tags) {
            if (value)
                args.append(QStringLiteral("--set-tag=%1=%2").arg(QLatin1String(key), QString::fromUtf8(value)));
        }
        if (!testsupport::makeAudio(path, 0.1) || testsupport::run(QStringLiteral("metaflac"), args << path).exitCode)
            qFatal("could not make %s", qPrintable(path));
        return Track::create(QUrl::fromLocalFile(path));
    }

    static void loadAndWait(UntaggedSongs &screen, const QList<Track> &tracks)
    {
        screen.load(tracks);
        QTRY_VERIFY_WITH_TIMEOUT(!screen.isLoading(), 30000);
    }

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_dir.isValid()); }

    void missingFields_data()
    {
        QTest::addColumn<bool>("known");
        QTest::addColumn<std::optional<QString>>("title");
        QTest::addColumn<std::optional<QString>>("artist");
        QTest::addColumn<std::optional<QString>>("album");
        QTest::addColumn<bool>("untagged");
        QTest::addColumn<QString>("label");

        QTest::newRow("no album") << true << opt("Intro") << opt("X") << opt(nullptr) << true
                                  << "Missing: album";
        QTest::newRow("title and album") << true << opt(nullptr) << opt("X") << opt("") << true
                                         << "Missing: title, album";
        QTest::newRow("a space is a title") << true << opt(" ") << opt("X") << opt("Y") << false
                                            << "Missing: ";
        QTest::newRow("tags unknown") << false << opt(nullptr) << opt(nullptr) << opt(nullptr) << true
                                      << "Missing: title, artist, album";
    }

    void missingFields()
    {
        QFETCH(bool, known);
        QFETCH(std::optional<QString>, title);
        QFETCH(std::optional<QString>, artist);
        QFETCH(std::optional<QString>, album);
        QFETCH(bool, untagged);
        QFETCH(QString, label);
        const TrackMetadata meta{title, artist, album, opt("")};
        QCOMPARE(UntaggedSongs::isUntagged(meta), untagged);
        QCOMPARE(UntaggedSongs::missingFieldsLabel(known ? std::optional(meta) : std::nullopt), label);
    }

    void listsOnlyUntaggedSongsAndSelectsByCount()
    {
        const QList<Track> tracks{makeSong("list-a.flac", "A", "B", "C"), makeSong("list-b.flac", "A", "B", nullptr),
                                  makeSong("list-c.flac", nullptr, nullptr, nullptr),
                                  Track::create(QUrl::fromLocalFile(m_dir.filePath("list-missing.flac")))};
        UntaggedSongs screen;
        QAbstractItemModelTester tester(&screen, QAbstractItemModelTester::FailureReportingMode::QtTest);
        loadAndWait(screen, tracks);
        QCOMPARE(screen.count(), 3);
        QCOMPARE(screen.data(screen.index(0), UntaggedSongs::MissingRole).toString(), QStringLiteral("Missing: album"));
        QCOMPARE(screen.data(screen.index(2), UntaggedSongs::MissingRole).toString(),
                 QStringLiteral("Missing: title, artist, album"));

        screen.toggleSelection(trackjson::uuidText(tracks.at(1).id));
        QCOMPARE(screen.selectedCount(), 1);
        screen.toggleSelectAll(); // 1 of 3: selects all
        QCOMPARE(screen.selectedCount(), 3);
        screen.toggleSelectAll(); // 3 of 3: clears
        QCOMPARE(screen.selectedCount(), 0);

        // One song with known tags fills the editor; several start empty.
        screen.editOne(trackjson::uuidText(tracks.at(1).id));
        QCOMPARE(screen.initialValues().value(QStringLiteral("title")).toString(), QStringLiteral("A"));
        screen.toggleSelectAll();
        screen.editSelected();
        QCOMPARE(screen.editingCount(), 3);
        QCOMPARE(screen.initialValues().value(QStringLiteral("title")).toString(), QString());
    }

    void albumOnlyBatchKeepsOtherTags()
    {
        QList<Track> tracks;
        const char *titles[] = {"One", "Two", nullptr};
        for (int i = 0; i < 3; ++i)
            tracks.append(makeSong(QStringLiteral("batch-%1.flac").arg(i), titles[i], "Artist", nullptr));
        UntaggedSongs screen;
        QAbstractItemModelTester tester(&screen, QAbstractItemModelTester::FailureReportingMode::QtTest);
        loadAndWait(screen, tracks);
        screen.toggleSelectAll();
        screen.editSelected();
        QSignalSpy finished(&screen, &UntaggedSongs::saveFinished);
        screen.saveBatch(QString(), QString(), QStringLiteral("Shared"));
        QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, 30000);
        QCOMPARE(finished.first().first().toInt(), 3);
        QCOMPARE(screen.message()->text(), QStringLiteral("Saved to 3 files"));
        QVERIFY(!screen.showEditor());
        QCOMPARE(screen.selectedCount(), 0);

        for (int i = 0; i < 3; ++i) {
            const QString path = tracks.at(i).path();
            const TrackMetadata meta = readMetadata(path);
            QCOMPARE(meta.album, std::optional<QString>(QStringLiteral("Shared")));
            QCOMPARE(meta.artist, std::optional<QString>(QStringLiteral("Artist")));
            QCOMPARE(meta.title, opt(titles[i]));
            QCOMPARE(testsupport::run(QStringLiteral("metaflac"), {QStringLiteral("--show-tag=ALBUM"), path}).out,
                     QByteArray("ALBUM=Shared\n"));
            QCOMPARE(testsupport::run(QStringLiteral("flac"), {QStringLiteral("-t"), QStringLiteral("-s"), path}).exitCode,
                     0);
        }
        // The two complete songs left the list; the one without a title stays.
        QCOMPARE(screen.count(), 1);
        QCOMPARE(screen.data(screen.index(0), UntaggedSongs::MissingRole).toString(), QStringLiteral("Missing: title"));
    }

    void aFileThatCannotBeWrittenIsLeftOutOfTheCount()
    {
        QList<Track> tracks;
        for (int i = 0; i < 4; ++i)
            tracks.append(makeSong(QStringLiteral("ro-%1.flac").arg(i), nullptr, nullptr, nullptr));
        UntaggedSongs screen;
        loadAndWait(screen, tracks);
        // A read-only file, also when the tests run as root (who may write it).
        ::chmod(QFile::encodeName(tracks.at(2).path()).constData(), 0444);
        screen.toggleSelectAll();
        screen.editSelected();
        QSignalSpy finished(&screen, &UntaggedSongs::saveFinished);
        screen.saveBatch(QStringLiteral("T"), QStringLiteral("A"), QStringLiteral("B"));
        QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, 30000);
        QCOMPARE(screen.message()->text(), QStringLiteral("Saved to 3 files"));
        QCOMPARE(screen.count(), 1);
        QCOMPARE(readMetadata(tracks.at(2).path()).title, std::nullopt);
    }
};

QTEST_MAIN(TestUntaggedSongs)
#include "tst_untagged_songs.moc"
