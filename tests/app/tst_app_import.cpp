// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppState.h"
#include "support/TestSupport.h"
#include "tags/TagReader.h"

#include <QDir>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using testsupport::writeFile;

class TestAppImport : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString music() const { return m_dir.filePath(QStringLiteral("music")); }

    std::unique_ptr<AppState> makeState()
    {
        auto s = std::make_unique<AppState>(m_dir.filePath(QStringLiteral("playlists.json")));
        s->folderMonitor().setLatency(200);
        return s;
    }

    static void importAndWait(AppState &s, const QString &folder)
    {
        // The import may finish before importFolder() returns, when the folder
        // is listed that fast.
        QSignalSpy imported(s.library(), &Library::folderImported);
        s.library()->importFolder(QUrl::fromLocalFile(folder));
        QTRY_COMPARE_WITH_TIMEOUT(imported.size(), 1, 5000);
    }

    static QStringList fileNames(AppState &s)
    {
        QStringList names;
        for (const Track &t : s.library()->tracks())
            names.append(QFileInfo(t.path()).fileName());
        return names;
    }

    // A FLAC file with tags written by metaflac.
    bool makeTagged(const QString &path, const QString &artist, const QString &album)
    {
        if (!testsupport::makeAudio(path, 0.1))
            return false;
        QStringList args{QStringLiteral("--remove-all-tags")};
        if (!artist.isNull())
            args.append(QStringLiteral("--set-tag=ARTIST=") + artist);
        if (!album.isNull())
            args.append(QStringLiteral("--set-tag=ALBUM=") + album);
        args.append(path);
        return testsupport::run(QStringLiteral("metaflac"), args).exitCode == 0;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QCoreApplication::setOrganizationName(QStringLiteral("Tarnwell"));
        QCoreApplication::setApplicationName(QStringLiteral("Tarnwell"));
    }

    void init()
    {
        QSettings().clear();
        QDir(music()).removeRecursively();
        QDir().mkpath(music());
    }

    void importsAudioFilesInNameOrder()
    {
        writeFile(music(), QStringLiteral("b/2 two.mp3"));
        writeFile(music(), QStringLiteral("a/3 three.flac"));
        writeFile(music(), QStringLiteral("1 one.wav"));
        writeFile(music(), QStringLiteral("cover.jpg"));
        const auto s = makeState();
        QSignalSpy onboarding(s->preferences(), &Preferences::didCompleteOnboardingChanged);
        importAndWait(*s, music());
        QCOMPARE(fileNames(*s), (QStringList{"1 one.wav", "2 two.mp3", "3 three.flac"}));
        QVERIFY(s->preferences()->didCompleteOnboarding());
        QCOMPARE(onboarding.size(), 1);
        QVERIFY(QSettings().value(Preferences::onboardingKey).toBool());
        QCOMPARE(s->folderMonitor().watchedFolders(), QList<QUrl>{QUrl::fromLocalFile(music())});
        // No banner for an import.
        QVERIFY(s->banner()->text().isEmpty());
    }

    void importingTwiceAddsNothingAndAsksForNoPicture()
    {
        writeFile(music(), QStringLiteral("a.mp3"));
        const auto s = makeState();
        QSignalSpy planned(&s->artworkPrefetch(), &ArtworkPrefetch::planned);
        importAndWait(*s, music());
        QTRY_COMPARE(planned.size(), 1);
        const QList<Track> first = s->library()->tracks();

        QSignalSpy imported(s->library(), &Library::folderImported);
        s->library()->importFolder(QUrl::fromLocalFile(music()));
        QTRY_COMPARE(imported.size(), 1);
        QCOMPARE(imported.first().at(1).toInt(), 0);
        QCOMPARE(s->library()->tracks(), first);
        QVERIFY(!s->searchIndex()->isBuilding());
        QCOMPARE(planned.size(), 1);
        QVERIFY(s->banner()->text().isEmpty());
    }

    void parentFolderAddsOnlyWhatIsNew()
    {
        writeFile(music(), QStringLiteral("inner/b.mp3"));
        writeFile(music(), QStringLiteral("a.mp3"));
        writeFile(music(), QStringLiteral("c.mp3"));
        const auto s = makeState();
        importAndWait(*s, music() + QStringLiteral("/inner"));
        importAndWait(*s, music());
        QCOMPARE(fileNames(*s), (QStringList{"b.mp3", "a.mp3", "c.mp3"}));
    }

    void importsRunInTheOrderAsked()
    {
        writeFile(music(), QStringLiteral("one/z.mp3"));
        writeFile(music(), QStringLiteral("two/a.mp3"));
        const auto s = makeState();
        QSignalSpy imported(s->library(), &Library::folderImported);
        s->library()->importFolders({QUrl::fromLocalFile(music() + QStringLiteral("/one")),
                          QUrl::fromLocalFile(music() + QStringLiteral("/two"))});
        QTRY_COMPARE(imported.size(), 2);
        QCOMPARE(fileNames(*s), (QStringList{"z.mp3", "a.mp3"}));
        QVERIFY(!s->library()->isImporting());
    }

    void emptyFolderIsWatchedButOnboardingStays()
    {
        const auto s = makeState();
        importAndWait(*s, music());
        QCOMPARE(s->library()->trackCount(), 0);
        QVERIFY(!s->preferences()->didCompleteOnboarding());
        QCOMPARE(s->folderMonitor().watchedFolders().size(), 1);
    }

    void fileCopiedIntoAWatchedFolderIsAddedOnce()
    {
        writeFile(music(), QStringLiteral("a.mp3"));
        const auto s = makeState();
        QSignalSpy watching(&s->folderMonitor(), &FolderMonitor::watching);
        importAndWait(*s, music());
        QTRY_COMPARE(watching.size(), 1);

        writeFile(music(), QStringLiteral("sub/new.flac"), "x");
        QTRY_COMPARE_WITH_TIMEOUT(s->banner()->text(), QStringLiteral("1 new song added"), 5000);
        QCOMPARE(fileNames(*s), (QStringList{"a.mp3", "new.flac"}));

        // Three files in one batch.
        writeFile(music(), QStringLiteral("x.mp3"), "x");
        writeFile(music(), QStringLiteral("y.mp3"), "x");
        writeFile(music(), QStringLiteral("z.mp3"), "x");
        QTRY_COMPARE_WITH_TIMEOUT(s->banner()->text(), QStringLiteral("3 new songs added"), 5000);
        QCOMPARE(s->library()->trackCount(), 5);
    }

    void prefetchAsksOncePerArtistAndAlbum()
    {
        const QString probe = music() + QStringLiteral("/probe.flac");
        if (!makeTagged(probe, QStringLiteral("Probe"), QStringLiteral("P")))
            QSKIP("sox or metaflac missing");
        if (!readMetadata(probe).artist)
            QSKIP("this build reads no tags yet");
        QFile::remove(probe);

        struct Song { const char *name; const char *artist; const char *album; };
        const Song songs[] = {
            {"1.flac", "Nadia", "Blue"}, {"2.flac", "Nadia", "Blue"}, {"3.flac", "nadia", "Blue"},
            {"4.flac", "Other", "Blue"}, {"5.flac", nullptr, "Lonely"}, {"6.flac", " Nadia\t", "Blue"},
        };
        for (const Song &song : songs) {
            QVERIFY(makeTagged(music() + QLatin1Char('/') + QLatin1String(song.name),
                               song.artist ? QString::fromUtf8(song.artist) : QString(),
                               QString::fromUtf8(song.album)));
        }
        const auto s = makeState();
        QSignalSpy planned(&s->artworkPrefetch(), &ArtworkPrefetch::planned);
        importAndWait(*s, music());
        QTRY_COMPARE_WITH_TIMEOUT(planned.size(), 1, 10000);
        QStringList artists = planned.last().at(0).toStringList();
        artists.sort();
        QCOMPARE(artists, (QStringList{"Nadia", "Other", "nadia"}));
        QCOMPARE(planned.last().at(1).toInt(), 3);
    }
};

QTEST_GUILESS_MAIN(TestAppImport)
#include "tst_app_import.moc"
