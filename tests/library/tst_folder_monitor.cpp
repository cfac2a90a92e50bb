// SPDX-License-Identifier: GPL-3.0-or-later
#include "library/FolderMonitor.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using testsupport::writeFile;

namespace {

QSet<QUrl> urlSet(const QStringList &paths)
{
    QSet<QUrl> set;
    for (const QString &p : paths)
        set.insert(QUrl::fromLocalFile(p));
    return set;
}

QStringList paths(const QList<QUrl> &urls)
{
    QStringList out;
    for (const QUrl &u : urls)
        out.append(u.toLocalFile());
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
        QVERIFY(watching.wait(5000));
    }

private Q_SLOTS:
    void init()
    {
        QDir(root()).removeRecursively();
        QDir().mkpath(root());
    }

    void reportsFilesCopiedIntoNestedFolders()
    {
        writeFile(root(), QStringLiteral("old.mp3"));
        writeFile(root(), QStringLiteral("a/b/old.flac"));
        FolderMonitor monitor;
        startWatching(monitor);
        QSignalSpy discovered(&monitor, &FolderMonitor::discoveredURLsChanged);

        const QString z = writeFile(root(), QStringLiteral("a/b/z.flac"), "x");
        const QString y = writeFile(root(), QStringLiteral("a/y.mp3"), "x");
        writeFile(root(), QStringLiteral("a/b/cover.jpg"), "x");
        QVERIFY(discovered.wait(5000));
        QCOMPARE(paths(monitor.discoveredURLs()), (QStringList{y, z}));
    }

    void watchesFoldersCreatedLater()
    {
        FolderMonitor monitor;
        startWatching(monitor);
        QSignalSpy rescanned(&monitor, &FolderMonitor::rescanned);
        QSignalSpy discovered(&monitor, &FolderMonitor::discoveredURLsChanged);

        QVERIFY(QDir(root()).mkpath(QStringLiteral("new/deeper")));
        QVERIFY(rescanned.wait(5000)); // the new folders join the watch here
        QCOMPARE(discovered.size(), 0);

        const QString song = writeFile(root(), QStringLiteral("new/deeper/song.m4a"), "x");
        QVERIFY(discovered.wait(5000));
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
        QVERIFY(discovered.wait(5000));
        const qint64 elapsed = clock.elapsed();
        QVERIFY2(elapsed >= 1400, qPrintable(QString::number(elapsed)));
        QCOMPARE(monitor.discoveredURLs().size(), 50);
        QVERIFY(monitor.discoveredURLs().first().toLocalFile().endsWith(QStringLiteral("/00.mp3")));
        QTest::qWait(2000);
        QCOMPARE(discovered.size(), 1);
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
        QVERIFY(rescanned.wait(5000));
        writeFile(root(), QStringLiteral("notes.txt"), "x");
        QVERIFY(rescanned.wait(5000));
        QCOMPARE(discovered.size(), 0);
        QVERIFY(monitor.discoveredURLs().isEmpty());
    }

    void untilTheLibraryCatchesUpFilesAreAnnouncedAgain()
    {
        FolderMonitor monitor;
        startWatching(monitor);
        QSignalSpy discovered(&monitor, &FolderMonitor::discoveredURLsChanged);
        const QString a = writeFile(root(), QStringLiteral("a.mp3"));
        QVERIFY(discovered.wait(5000));
        const QString b = writeFile(root(), QStringLiteral("b.mp3"));
        QVERIFY(discovered.wait(5000));
        QCOMPARE(paths(monitor.discoveredURLs()), (QStringList{a, b}));

        monitor.setKnownURLs(urlSet({a, b}));
        monitor.clearDiscoveredURLs();
        const QString c = writeFile(root(), QStringLiteral("c.mp3"));
        QVERIFY(discovered.wait(5000));
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
        QVERIFY(discovered.wait(5000));
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
        QVERIFY(rescanned.wait(5000));
        QCOMPARE(discovered.size(), 0);

        // Recreated later: the folder is gone from the watch, but nothing breaks.
        QDir().mkpath(root());
        monitor.rescan();
        QVERIFY(rescanned.wait(5000));
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
        QVERIFY(discovered.wait(5000));
        QCOMPARE(paths(monitor.discoveredURLs()), QStringList{song});
    }
};

QTEST_GUILESS_MAIN(TestFolderMonitor)
#include "tst_folder_monitor.moc"
