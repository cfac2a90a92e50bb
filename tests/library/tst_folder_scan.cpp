// SPDX-License-Identifier: GPL-3.0-or-later
#include "library/FolderScan.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QtConcurrent>

using testsupport::writeFile;

class TestFolderScan : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

    QStringList relative(const QStringList &paths) const
    {
        QStringList out;
        for (const QString &p : paths)
            out.append(QDir(m_dir.path()).relativeFilePath(p));
        return out;
    }

private Q_SLOTS:
    void init()
    {
        QDir(m_dir.path()).removeRecursively();
        QDir().mkpath(m_dir.path());
    }

    void filtersAndOrders_data()
    {
        QTest::addColumn<QStringList>("files");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("by file name, case breaks ties, hidden skipped")
            << QStringList{"b.mp3", "A.flac", "sub/a.wav", ".hidden.mp3"}
            << QStringList{"A.flac", "sub/a.wav", "b.mp3"};
        QTest::newRow("only audio extensions, any case")
            << QStringList{"notes.txt", "cover.jpg", "Song.MP3", "song.mp3.part", "song", "x.AIF",
                           "y.aiff", "z.Caf", "w.m4a", "v.wav", "u.flac", "t.ogg"}
            << QStringList{"Song.MP3", "u.flac", "v.wav", "w.m4a", "x.AIF", "y.aiff", "z.Caf"};
        QTest::newRow("nothing below hidden folders; packages are folders")
            << QStringList{".git/a.mp3", ".cache/deep/b.mp3", "Album.bundle/c.mp3", "d/.e/f.mp3"}
            << QStringList{"Album.bundle/c.mp3"};
        QTest::newRow("folders play no role in the order")
            << QStringList{"z/1.mp3", "a/3.mp3", "m/2.mp3"}
            << QStringList{"z/1.mp3", "m/2.mp3", "a/3.mp3"};
        QTest::newRow("locale order, not bytes")
            << QStringList{"b.mp3", "Zebra.mp3", "éclair.mp3", "apple.mp3", "Éclair.mp3"}
            << QStringList{"apple.mp3", "b.mp3", "éclair.mp3", "Éclair.mp3", "Zebra.mp3"};
        QTest::newRow("equal names keep walk order")
            << QStringList{"b/x.mp3", "a/x.mp3", "c/x.mp3"}
            << QStringList{"a/x.mp3", "b/x.mp3", "c/x.mp3"};
    }

    void filtersAndOrders()
    {
        QFETCH(QStringList, files);
        QFETCH(QStringList, expected);
        for (const QString &f : files)
            writeFile(m_dir.path(), f, "x");
        QCOMPARE(relative(scanFolder(m_dir.path())), expected);
    }

    void foldersNamedLikeSongsAreNotSongs()
    {
        QDir(m_dir.path()).mkpath(QStringLiteral("x.mp3/inner"));
        writeFile(m_dir.path(), QStringLiteral("x.mp3/inner/real.flac"));
        QCOMPARE(relative(scanFolder(m_dir.path())), QStringList{"x.mp3/inner/real.flac"});
    }

    void symbolicLinksAreNotFollowed()
    {
        writeFile(m_dir.path(), QStringLiteral("a/song.mp3"));
        QVERIFY(QFile::link(m_dir.path(), m_dir.filePath(QStringLiteral("a/loop"))));
        QVERIFY(QFile::link(m_dir.filePath(QStringLiteral("a")), m_dir.filePath(QStringLiteral("a/self"))));
        QVERIFY(QFile::link(m_dir.filePath(QStringLiteral("a/song.mp3")), m_dir.filePath(QStringLiteral("link.mp3"))));
        QCOMPARE(relative(scanFolder(m_dir.path())), QStringList{"a/song.mp3"});
    }

    void troubleScansAsLess()
    {
        QVERIFY(scanFolder(m_dir.filePath(QStringLiteral("missing"))).isEmpty());
        writeFile(m_dir.path(), QStringLiteral("file.mp3"));
        QVERIFY(scanFolder(m_dir.filePath(QStringLiteral("file.mp3"))).isEmpty());

        writeFile(m_dir.path(), QStringLiteral("locked/inside.mp3"));
        QFile::setPermissions(m_dir.filePath(QStringLiteral("locked")), QFileDevice::Permissions());
        const QStringList found = relative(scanFolder(m_dir.path()));
        QFile::setPermissions(m_dir.filePath(QStringLiteral("locked")),
                              QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
        QVERIFY(found.contains(QStringLiteral("file.mp3")));
        // Root reads the locked folder anyway; anyone else gets the rest of the tree.
        QCOMPARE(found.contains(QStringLiteral("locked/inside.mp3")), geteuid() == 0);
    }

    void urlsAreFileUrls()
    {
        writeFile(m_dir.path(), QStringLiteral("a b/c#d.mp3"));
        const QList<QUrl> urls = scanFolder(QUrl::fromLocalFile(m_dir.path()));
        QCOMPARE(urls.size(), 1);
        QCOMPARE(urls.first().toLocalFile(), m_dir.filePath(QStringLiteral("a b/c#d.mp3")));
    }

    void scansRunSideBySideFromThePool()
    {
        for (int i = 0; i < 30; ++i)
            writeFile(m_dir.path(), QStringLiteral("artist%1/album/%1.mp3").arg(i));
        QList<QFuture<QStringList>> scans;
        for (int i = 0; i < 6; ++i)
            scans.append(QtConcurrent::run([this] { return scanFolder(m_dir.path()); }));
        for (QFuture<QStringList> &f : scans) {
            QTRY_VERIFY_WITH_TIMEOUT(f.isFinished(), 10000);
            QCOMPARE(f.result().size(), 30);
        }
    }

    void treeListsVisibleFolders()
    {
        writeFile(m_dir.path(), QStringLiteral("a/b/c.txt"));
        writeFile(m_dir.path(), QStringLiteral(".h/d.mp3"));
        QStringList folders = relative(scanTree(m_dir.path()).folders);
        folders.sort();
        QCOMPARE(folders, (QStringList{".", "a", "a/b"}));
    }
};

QTEST_GUILESS_MAIN(TestFolderScan)
#include "tst_folder_scan.moc"
