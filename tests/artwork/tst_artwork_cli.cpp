// SPDX-License-Identifier: GPL-3.0-or-later
// tarnwell-cli artwork: its arguments, the JPEG it writes, and its answers when
// nothing is found or written. The web is a closed port; the lookups are the loader's.
#include "ArtworkTestUtil.h"
#include "artwork/ImageCodec.h"
#include "support/TestSupport.h"

#include <QTemporaryDir>
#include <QTest>

using namespace artworktest;
using testsupport::writeFile;

class TestArtworkCli : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

private Q_SLOTS:
    void answers_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("exitCode"); // 0: out.jpg holds the blue picture
        QTest::addColumn<QByteArray>("says");
        const QString song = writeFile(m_dir.path(), QStringLiteral("album/one.flac"), "x");
        writeFile(m_dir.path(), QStringLiteral("album/cover.png"), pngOf(Qt::blue));
        writeFile(musicFolder(), QStringLiteral("Low/artist.jpg"), jpegOf(Qt::blue));
        writeFile(musicFolder(), QStringLiteral("Low/Tide-1/folder.jpg"), jpegOf(Qt::blue));
        const QString out = m_dir.filePath(QStringLiteral("out.jpg"));
        QTest::newRow("song") << QStringList{"--file", song, "--out", out} << 0 << QByteArray();
        QTest::newRow("artist") << QStringList{"--artist", "Low", "--out", out} << 0 << QByteArray();
        QTest::newRow("album") << QStringList{"--artist", "Low", "--album", "Tide/1", "--out", out} << 0 << QByteArray();
        for (const QStringList &usage : {QStringList{"--artist", "A"}, QStringList{"--out", "x.jpg"},
                                         QStringList{"--artist", "A", "--size", "3", "--out", "x.jpg"},
                                         QStringList{"--out", "x.jpg", "--artist"}})
            QTest::newRow(qPrintable(usage.join(u' '))) << usage << 2 << QByteArray("usage");
        QTest::newRow("no such song") << QStringList{"--file", "/nonexistent.flac", "--out", "x.jpg"} << 1
                                      << QByteArray("/nonexistent.flac: there is no such file");
        QTest::newRow("nothing found") << QStringList{"--album", "Nowhere", "--out", "x.jpg"} << 1
                                       << QByteArray("no picture found");
        QTest::newRow("output not writable") << QStringList{"--artist", "Low", "--out", "/proc/out.jpg"} << 1
                                             << QByteArray("/proc/out.jpg: the picture cannot be written");
    }

    void answers()
    {
        QFETCH(QStringList, args);
        QFETCH(int, exitCode);
        QFETCH(QByteArray, says);
        const QString out = m_dir.filePath(QStringLiteral("out.jpg"));
        QFile::remove(out);
        const testsupport::ToolResult r = testsupport::run(QStringLiteral(TARNWELL_CLI), QStringList{"artwork"} + args);
        QCOMPARE(r.exitCode, exitCode);
        QVERIFY2(r.err.contains(says), r.err.constData());
        QVERIFY(!QFile::exists(QStringLiteral("x.jpg")));
        if (exitCode == 0) {
            QVERIFY(testsupport::readFile(out).startsWith("\xff\xd8\xff"));
            QVERIFY(looksLike(artwork::loadImageFile(out), Qt::blue));
        }
    }
};

QTEST_GUILESS_MAIN(TestArtworkCli)
#include "tst_artwork_cli.moc"
