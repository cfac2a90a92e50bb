// SPDX-License-Identifier: GPL-3.0-or-later
// The untagged-songs screen: what it lists and selects; batch saves on real files.
#include "AppTest.h"
#include "UntaggedSongs.h"
#include "tags/TagReader.h"

#include <QAbstractItemModelTester>
#include <QTemporaryDir>

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
        QStringList tags;
        const std::pair<const char *, const char *> given[] = {{"TITLE=", title}, {"ARTIST=", artist}, {"ALBUM=", album}};
        for (const auto &[key, value] : given) {
            if (value)
                tags.append(QLatin1String(key) + QString::fromUtf8(value));
        }
        if (!apptest::makeSong(m_dir.filePath(name), tags, 0.1))
            qFatal("could not make %s", qPrintable(name));
        return Track::create(QUrl::fromLocalFile(m_dir.filePath(name)));
    }

    static void loadAndWait(UntaggedSongs &screen, const QList<Track> &tracks)
    {
        screen.load(tracks);
        QTRY_VERIFY_WITH_TIMEOUT(!screen.isLoading(), 30000);
    }

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_dir.isValid()); }

    void listsOnlyUntaggedSongsAndSelectsByCount()
    {
        const QList<Track> tracks{makeSong("list-a.flac", "A", "B", "C"), makeSong("list-b.flac", "A", "B", nullptr),
                                  makeSong("list-c.flac", nullptr, "B", ""),
                                  makeSong("list-space.flac", " ", "B", "C"), // a space is a title
                                  Track::create(QUrl::fromLocalFile(m_dir.filePath("list-missing.flac")))};
        UntaggedSongs screen;
        QAbstractItemModelTester tester(&screen, QAbstractItemModelTester::FailureReportingMode::QtTest);
        loadAndWait(screen, tracks);
        QCOMPARE(screen.count(), 3); // the missing file's tags are unknown
        QCOMPARE(screen.data(screen.index(0), UntaggedSongs::MissingRole).toString(), QStringLiteral("Missing: album"));
        QCOMPARE(screen.data(screen.index(1), UntaggedSongs::MissingRole).toString(), QStringLiteral("Missing: title, album"));
        QCOMPARE(screen.data(screen.index(2), UntaggedSongs::MissingRole).toString(),
                 QStringLiteral("Missing: title, artist, album"));

        screen.toggleSelection(trackjson::uuidText(tracks.at(1).id));
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
        loadAndWait(screen, tracks);
        screen.toggleSelectAll();
        screen.editSelected();
        QSignalSpy finished(&screen, &UntaggedSongs::saveFinished);
        screen.saveBatch(QString(), QString(), QStringLiteral("Shared"));
        QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, 30000);
        QCOMPARE(screen.message()->text(), QStringLiteral("Saved to 3 files"));
        QVERIFY(!screen.showEditor());

        for (int i = 0; i < 3; ++i) {
            const QString path = tracks.at(i).path();
            QCOMPARE(readMetadata(path).title, opt(titles[i]));
            QCOMPARE(testsupport::run(QStringLiteral("metaflac"), {QStringLiteral("--show-tag=ARTIST"), path}).out,
                     QByteArray("ARTIST=Artist\n"));
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
