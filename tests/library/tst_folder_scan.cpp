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
        QTest::newRow("by file name, case breaks ties, hidden skipped") << QStringList { "b.mp3", "A.flac",
            "sub/a.wav", ".hidden.mp3" } << QStringList { "A.flac", "sub/a.wav", "b.mp3" };
        QTest::newRow("only audio extensions, any case") << QStringList { "notes.txt", "Song.MP3",
            "song.mp3.part", "song", "x.AIF", "y.aiff", "z.Caf", "w.m4a", "v.wav", "u.flac",
            "t.ogg" } << QStringList { "Song.MP3", "u.flac", "v.wav", "w.m4a", "x.AIF", "y.aiff", "z.Caf" };
        QTest::newRow("nothing below hidden folders; packages and song-named folders are folders")
            << QStringList { ".git/a.mp3", "d/.e/f.mp3", "Album.bundle/c.mp3", "x.mp3/inner/real.flac" }
            << QStringList { "Album.bundle/c.mp3", "x.mp3/inner/real.flac" };
        QTest::newRow("locale order, not bytes; folders play no role")
            << QStringList { "z/b.mp3", "Zebra.mp3", "a/éclair.mp3", "apple.mp3", "Éclair.mp3" }
            << QStringList { "apple.mp3", "z/b.mp3", "a/éclair.mp3", "Éclair.mp3", "Zebra.mp3" };
        QTest::newRow("equal names keep walk order") << QStringList { "b/x.mp3", "a/x.mp3", "c/x.mp3" }
                                                     << QStringList { "a/x.mp3", "b/x.mp3", "c/x.mp3" };
    }

    void filtersAndOrders()
    {
        QFETCH(QStringList, files);
        for (const QString &f : files)
            writeFile(m_dir.path(), f, "x");
        // Scans run side by side on the pool.
        QFuture<QStringList> other = QtConcurrent::run([this] { return scanFolder(m_dir.path()); });
        QTEST(relative(scanFolder(m_dir.path())), "expected");
        QTEST(relative(other.result()), "expected");
    }

    // Links are not followed (no loops, no song twice); a folder that can't be
    // read is passed over.
    void troubleScansAsLess()
    {
        QVERIFY(scanFolder(m_dir.filePath(QStringLiteral("missing"))).isEmpty());
        const QString song = writeFile(m_dir.path(), QStringLiteral("a/song.mp3"));
        QVERIFY(scanFolder(song).isEmpty());
        QVERIFY(QFile::link(m_dir.path(), m_dir.filePath(QStringLiteral("a/loop"))));
        QVERIFY(QFile::link(song, m_dir.filePath(QStringLiteral("link.mp3"))));
        const QString locked = QFileInfo(writeFile(m_dir.path(), QStringLiteral("locked/inside.mp3"))).path();
        QFile::setPermissions(locked, QFileDevice::Permissions());
        const QStringList found = relative(scanFolder(m_dir.path()));
        QFile::setPermissions(
            locked, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
        // Root reads the locked folder anyway.
        QCOMPARE(found,
            (geteuid() == 0 ? QStringList { "locked/inside.mp3", "a/song.mp3" }
                            : QStringList { "a/song.mp3" }));
        // The folders to watch: visible ones, links not followed.
        writeFile(m_dir.path(), QStringLiteral(".h/d.mp3"));
        QStringList folders = relative(scanTree(m_dir.path()).folders);
        folders.sort();
        QCOMPARE(folders, (QStringList { ".", "a", "locked" }));
    }
};

QTEST_GUILESS_MAIN(TestFolderScan)
#include "tst_folder_scan.moc"
