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

using testsupport::writeFile;

namespace {

constexpr int patience = 60000;

QList<QUrl> urls(const QStringList &paths)
{
    QList<QUrl> out;
    for (const QString &p : paths)
        out.append(localpath::fileUrl(p));
    return out;
}

QSet<QUrl> urlSet(const QStringList &paths)
{
    const QList<QUrl> list = urls(paths);
    return QSet<QUrl>(list.begin(), list.end());
}

} // namespace

class TestFolderMonitor : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString root() const { return m_dir.path(); }

    // Watched with the folders as an import lists them.
    static void watch(FolderMonitor &monitor, const QString &folder)
    {
        monitor.watch(localpath::fileUrl(folder), scanTree(folder).folders);
    }

    void startWatching(FolderMonitor &monitor)
    {
        QSignalSpy watching(&monitor, &FolderMonitor::watching);
        monitor.setKnownFiles([known = urlSet(scanFolder(root()))](const QUrl &file) { return known.contains(file); });
        watch(monitor, root());
        QVERIFY(watching.wait(patience));
    }

private Q_SLOTS:
    void init()
    {
        testsupport::run(QStringLiteral("rm"), { QStringLiteral("-rf"), root() }); // names not UTF-8
        QDir().mkpath(root());
    }

    void cleanupTestCase() { testsupport::run(QStringLiteral("rm"), { QStringLiteral("-rf"), root() }); }

    // New songs in nested folders and in a folder made after the watch began
    // (its name not UTF-8) are reported; new folders, deletions and other files are not.
    void reportsNewFilesInOldAndNewFolders()
    {
        writeFile(root(), QStringLiteral("old.mp3"));
        writeFile(root(), QStringLiteral("a/b/old.flac"));
        FolderMonitor monitor;
        startWatching(monitor);
        QSignalSpy rescanned(&monitor, &FolderMonitor::rescanned);
        QSignalSpy discovered(&monitor, &FolderMonitor::discoveredURLsChanged);
        const QByteArray deeper = QFile::encodeName(root())
            + "/new/d\xe9"
              "eper";
        QVERIFY(::mkdir(deeper.first(deeper.lastIndexOf('/')).constData(), 0755) == 0);
        QVERIFY(::mkdir(deeper.constData(), 0755) == 0);
        QVERIFY(rescanned.wait(patience)); // the new folders join the watch here
        QVERIFY(QFile::remove(root() + QStringLiteral("/old.mp3")));
        writeFile(root(), QStringLiteral("notes.txt"), "x");
        QVERIFY(rescanned.wait(patience));
        QCOMPARE(discovered.size(), 0);

        const QString z = writeFile(root(), QStringLiteral("a/b/z.flac"), "x");
        const QString y = writeFile(root(), QStringLiteral("a/y.mp3"), "x");
        const QString latin1 = writeFile(root(),
            localpath::fromBytes("new/d\xe9"
                                 "eper/caf\xe9.m4a"),
            "x");
        writeFile(root(), QStringLiteral("a/b/cover.jpg"), "x");
        QVERIFY(discovered.wait(patience));
        QCOMPARE(monitor.discoveredURLs(), urls({ latin1, y, z }));
    }

    // A change is reported once, however many watched folders hold it; a
    // forgotten folder (its name not UTF-8) reports nothing, nor does the
    // watched folder going.
    void watchedAndForgottenFolders()
    {
        const QString gone = root() + u'/' + localpath::fromBytes("g\xe9ne");
        const QString kept = root() + QStringLiteral("/kept");
        writeFile(gone, QStringLiteral("deep/old.mp3"));
        writeFile(kept, QStringLiteral("inner/old.mp3"));
        QSet<QUrl> known = urlSet(scanFolder(root()));
        FolderMonitor monitor;
        monitor.setKnownFiles([&known](const QUrl &file) { return known.contains(file); });
        QSignalSpy watching(&monitor, &FolderMonitor::watching);
        QSignalSpy rescanned(&monitor, &FolderMonitor::rescanned);
        for (const QString &folder : { gone, kept })
            watch(monitor, folder);
        QTRY_COMPARE_WITH_TIMEOUT(watching.size(), 2, patience);
        monitor.unwatch(localpath::fileUrl(gone));
        QCOMPARE(monitor.watchedFolderCount(), 2);
        QSignalSpy discovered(&monitor, &FolderMonitor::discoveredURLsChanged);
        writeFile(gone, QStringLiteral("deep/new.mp3"), "x");
        const QString song = writeFile(kept, QStringLiteral("inner/new.mp3"), "x");
        QVERIFY(discovered.wait(patience));
        QCOMPARE(monitor.discoveredURLs(), urls({ song }));
        monitor.rescan(); // not from the forgotten folder either
        QVERIFY(discovered.wait(patience));
        QCOMPARE(monitor.discoveredURLs(), urls({ song }));

        known.insert(localpath::fileUrl(song));
        watch(monitor, kept + QStringLiteral("/inner"));
        QTRY_COMPARE_WITH_TIMEOUT(watching.size(), 3, patience);
        monitor.clearDiscoveredURLs();
        const QString nested = writeFile(kept, QStringLiteral("inner/nested.mp3"), "x");
        QVERIFY(discovered.wait(patience));
        QCOMPARE(monitor.discoveredURLs(), urls({ nested }));
        rescanned.clear();
        testsupport::run(QStringLiteral("rm"), { QStringLiteral("-rf"), root() });
        QTRY_VERIFY_WITH_TIMEOUT(!rescanned.isEmpty(), patience);
        QCOMPARE(discovered.size(), 3);
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
        QCOMPARE_GE(clock.elapsed(), 1400);
        QCOMPARE(monitor.discoveredURLs().size(), 50);
        // Had the burst been split, its second report would come before this file's.
        const QString late = writeFile(root(), QStringLiteral("late.mp3"), "x");
        QVERIFY(discovered.wait(patience));
        QCOMPARE(discovered.size(), 2);
        // Only the folder that changed is scanned again.
        QCOMPARE(monitor.discoveredURLs(), urls({ late }));

        // Until the library knows a file, each rescan of its folder announces it again.
        const QString later = writeFile(root(), QStringLiteral("later.mp3"));
        QVERIFY(discovered.wait(patience));
        QCOMPARE(monitor.discoveredURLs(), urls({ late, later }));
        monitor.setKnownFiles([known = urlSet({ late, later })](const QUrl &file) { return known.contains(file); });
        monitor.clearDiscoveredURLs();
        const QString last = writeFile(root(), QStringLiteral("last.mp3"));
        QVERIFY(discovered.wait(patience));
        QCOMPARE(monitor.discoveredURLs(), urls({ last }));
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
        QCOMPARE(monitor.discoveredURLs(), urls({ song }));
    }
};

QTEST_GUILESS_MAIN(TestFolderMonitor)
#include "tst_folder_monitor.moc"
