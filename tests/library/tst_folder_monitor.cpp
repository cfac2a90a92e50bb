// SPDX-License-Identifier: GPL-3.0-or-later
#include "library/FolderMonitor.h"
#include "model/LocalPath.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

using testsupport::writeFile;

namespace {

// Every wait is for a signal; this only ends a test that hangs.
constexpr int patience = 60000;

QSet<QUrl> urlSet(const QStringList &paths)
{
    QSet<QUrl> set;
    for (const QString &p : paths)
        set.insert(localpath::fileUrl(p));
    return set;
}

QStringList paths(const QList<QUrl> &urls)
{
    QStringList out;
    for (const QUrl &u : urls)
        out.append(localpath::pathOf(u));
    return out;
}

} // namespace

class TestFolderMonitor : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString root() const { return m_dir.path(); }

    // Watches the folder, knowing what is in it now, and waits until the watch is set.
    void startWatching(FolderMonitor &monitor)
    {
        QSignalSpy watching(&monitor, &FolderMonitor::watching);
        monitor.watch(QUrl::fromLocalFile(root()), urlSet(scanFolder(root())));
        QVERIFY(watching.wait(patience));
    }

private Q_SLOTS:
    void init()
    {
        // rm, not QDir: some names here are not UTF-8.
        testsupport::run(QStringLiteral("rm"), { QStringLiteral("-rf"), root() });
        QDir().mkpath(root());
    }

    void cleanupTestCase() { testsupport::run(QStringLiteral("rm"), { QStringLiteral("-rf"), root() }); }

    void reportsFilesCopiedIntoNestedFolders()
    {
        writeFile(root(), QStringLiteral("old.mp3"));
        writeFile(root(), QStringLiteral("a/b/old.flac"));
        FolderMonitor monitor;
        startWatching(monitor);
        QSignalSpy discovered(&monitor, &FolderMonitor::discoveredURLsChanged);

        const QString z = writeFile(root(), QStringLiteral("a/b/z.flac"), "x");
        const QString y = writeFile(root(), QStringLiteral("a/y.mp3"), "x");
        const QString latin1 = writeFile(root(), localpath::fromBytes("a/b/caf\xe9.flac"), "x");
        writeFile(root(), QStringLiteral("a/b/cover.jpg"), "x");
        QVERIFY(discovered.wait(patience));
        QCOMPARE(paths(monitor.discoveredURLs()), (QStringList{latin1, y, z}));
        QCOMPARE(monitor.discoveredURLs().first().toEncoded(), "file://" + root().toUtf8() + "/a/b/caf%E9.flac");
    }

    // A forgotten folder reports nothing, while the folder still watched does;
    // whether its name is UTF-8 or not.
    void aForgottenFolderReportsNothing_data()
    {
        QTest::addColumn<QByteArray>("forgotten");
        QTest::newRow("utf-8") << QByteArray("gone");
        QTest::newRow("latin-1") << QByteArray("g\xe9" "ne");
    }
    void aForgottenFolderReportsNothing()
    {
        QFETCH(QByteArray, forgotten);
        const QString gone = root() + u'/' + localpath::fromBytes(forgotten);
        writeFile(gone, QStringLiteral("deep/old.mp3"));
        writeFile(root(), QStringLiteral("kept/old.mp3"));
        const QSet<QUrl> known = urlSet(scanFolder(root()));
        FolderMonitor monitor;
        QSignalSpy watching(&monitor, &FolderMonitor::watching);
        monitor.watch(localpath::fileUrl(gone), known);
        monitor.watch(localpath::fileUrl(root() + QStringLiteral("/kept")), known);
        QTRY_COMPARE_WITH_TIMEOUT(watching.size(), 2, patience);
        QCOMPARE(monitor.watchedFolderCount(), 3);

        monitor.unwatch(localpath::fileUrl(gone));
        QCOMPARE(monitor.watchedFolderCount(), 1);
        QSignalSpy discovered(&monitor, &FolderMonitor::discoveredURLsChanged);
        writeFile(gone, QStringLiteral("deep/new.mp3"), "x");
        const QString kept = writeFile(root(), QStringLiteral("kept/new.mp3"), "x");
        QVERIFY(discovered.wait(patience));
        QCOMPARE(paths(monitor.discoveredURLs()), QStringList{kept});
        monitor.rescan();
        QVERIFY(discovered.wait(patience));
        QCOMPARE(paths(monitor.discoveredURLs()), QStringList{kept});
    }

    void watchesFoldersCreatedLater()
    {
        FolderMonitor monitor;
        startWatching(monitor);
        QSignalSpy rescanned(&monitor, &FolderMonitor::rescanned);
        QSignalSpy discovered(&monitor, &FolderMonitor::discoveredURLsChanged);

        // The deeper one's name is Latin-1, not UTF-8.
        const QByteArray deeper = QFile::encodeName(root()) + "/new/d\xe9" "eper";
        QVERIFY(::mkdir(deeper.first(deeper.lastIndexOf('/')).constData(), 0755) == 0);
        QVERIFY(::mkdir(deeper.constData(), 0755) == 0);
        QVERIFY(rescanned.wait(patience)); // the new folders join the watch here
        QCOMPARE(discovered.size(), 0);

        const QString song = writeFile(root(), localpath::fromBytes("new/d\xe9" "eper/song.m4a"), "x");
        QVERIFY(discovered.wait(patience));
        QCOMPARE(paths(monitor.discoveredURLs()), QStringList{song});
    }

    void aBurstIsReportedOnceAfterTheLatency()
    {
        FolderMonitor monitor;
        startWatching(monitor);
        QSignalSpy discovered(&monitor, &FolderMonitor::discoveredURLsChanged);

        QElapsedTimer clock;
        clock.start();
        for (int i = 0; i < 50; ++i)
            writeFile(root(), QStringLiteral("burst/%1.mp3").arg(i, 2, 10, QLatin1Char('0')), "x");
        QVERIFY(discovered.wait(patience));
        const qint64 elapsed = clock.elapsed();
        QVERIFY2(elapsed >= 1400, qPrintable(QString::number(elapsed)));
        QCOMPARE(monitor.discoveredURLs().size(), 50);
        QVERIFY(monitor.discoveredURLs().first().toLocalFile().endsWith(QStringLiteral("/00.mp3")));
        // Had the burst been split, its second report would come before this file's.
        const QString late = writeFile(root(), QStringLiteral("late.mp3"), "x");
        QVERIFY(discovered.wait(patience));
        QCOMPARE(discovered.size(), 2);
        // Only the folder that changed is scanned again.
        QCOMPARE(paths(monitor.discoveredURLs()), QStringList{late});
    }

    void deletionsAndKnownFilesReportNothing()
    {
        const QString a = writeFile(root(), QStringLiteral("a.mp3"));
        writeFile(root(), QStringLiteral("b.mp3"));
        FolderMonitor monitor;
        startWatching(monitor);
        QSignalSpy rescanned(&monitor, &FolderMonitor::rescanned);
        QSignalSpy discovered(&monitor, &FolderMonitor::discoveredURLsChanged);

        QVERIFY(QFile::remove(a));
        QVERIFY(rescanned.wait(patience));
        writeFile(root(), QStringLiteral("notes.txt"), "x");
        QVERIFY(rescanned.wait(patience));
        QCOMPARE(discovered.size(), 0);
        QVERIFY(monitor.discoveredURLs().isEmpty());
    }

    void untilTheLibraryCatchesUpFilesAreAnnouncedAgain()
    {
        FolderMonitor monitor;
        startWatching(monitor);
        QSignalSpy discovered(&monitor, &FolderMonitor::discoveredURLsChanged);
        const QString a = writeFile(root(), QStringLiteral("a.mp3"));
        QVERIFY(discovered.wait(patience));
        const QString b = writeFile(root(), QStringLiteral("b.mp3"));
        QVERIFY(discovered.wait(patience));
        QCOMPARE(paths(monitor.discoveredURLs()), (QStringList{a, b}));

        monitor.setKnownURLs(urlSet({a, b}));
        monitor.clearDiscoveredURLs();
        const QString c = writeFile(root(), QStringLiteral("c.mp3"));
        QVERIFY(discovered.wait(patience));
        QCOMPARE(paths(monitor.discoveredURLs()), QStringList{c});
    }

    void watchingTwiceReplacesKnownFilesOnly()
    {
        FolderMonitor monitor;
        const QUrl folder = QUrl::fromLocalFile(root());
        const QSet<QUrl> first{QUrl::fromLocalFile(QStringLiteral("/x.mp3"))};
        const QSet<QUrl> second{QUrl::fromLocalFile(QStringLiteral("/y.mp3"))};
        monitor.watch(folder, first);
        monitor.watch(folder, second);
        QCOMPARE(monitor.watchedFolders(), QList<QUrl>{folder});
        QCOMPARE(monitor.knownURLs(), second);
    }

    // A change is looked for in the folder that changed, once, however many
    // watched folders hold it.
    void nestedWatchedFoldersListAFileOnce()
    {
        FolderMonitor monitor;
        QSignalSpy watching(&monitor, &FolderMonitor::watching);
        QDir(root()).mkpath(QStringLiteral("inner"));
        monitor.watch(QUrl::fromLocalFile(root()), {});
        monitor.watch(QUrl::fromLocalFile(root() + QStringLiteral("/inner")), {});
        QTRY_COMPARE(watching.size(), 2);
        QSignalSpy discovered(&monitor, &FolderMonitor::discoveredURLsChanged);
        const QString song = writeFile(root(), QStringLiteral("inner/s.mp3"));
        QVERIFY(discovered.wait(patience));
        // Nested watched folders: the change is reported once.
        QCOMPARE(paths(monitor.discoveredURLs()), QStringList{song});
    }

    void survivesTheWatchedFolderBeingDeleted()
    {
        writeFile(root(), QStringLiteral("sub/a.mp3"));
        FolderMonitor monitor;
        startWatching(monitor);
        QSignalSpy rescanned(&monitor, &FolderMonitor::rescanned);
        QSignalSpy discovered(&monitor, &FolderMonitor::discoveredURLsChanged);
        QVERIFY(QDir(root()).removeRecursively());
        QVERIFY(rescanned.wait(patience));
        QCOMPARE(discovered.size(), 0);

        // Recreated later: the folder is gone from the watch, but nothing breaks.
        QDir().mkpath(root());
        monitor.rescan();
        QVERIFY(rescanned.wait(patience));
    }

    void moreFoldersThanCanBeWatched()
    {
        for (int i = 0; i < 40; ++i)
            QDir(root()).mkpath(QStringLiteral("f%1").arg(i));
        FolderMonitor monitor;
        monitor.setWatchBudget(10);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("folders cannot be watched")));
        startWatching(monitor);
        QCOMPARE(monitor.watchedFolderCount(), 10);
        QCOMPARE(monitor.unwatchedFolderCount(), 31);

        // Files in unwatched folders still appear with the next rescan.
        QSignalSpy discovered(&monitor, &FolderMonitor::discoveredURLsChanged);
        const QString song = writeFile(root(), QStringLiteral("f39/late.mp3"));
        monitor.rescan();
        QVERIFY(discovered.wait(patience));
        QCOMPARE(paths(monitor.discoveredURLs()), QStringList{song});
    }
};

QTEST_GUILESS_MAIN(TestFolderMonitor)
#include "tst_folder_monitor.moc"
