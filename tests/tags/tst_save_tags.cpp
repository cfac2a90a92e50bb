// SPDX-License-Identifier: GPL-3.0-or-later
// Saving to disk. A save that fails anywhere leaves the file byte for byte as
// it was and no temporary file behind. Where root ignores permissions the failures are
// injected at the system call that would fail.
#include "TagBuilders.h"
#include "support/TestSupport.h"
#include "tags/AtomicReplace.h"
#include "tags/TagReader.h"
#include "tags/TagWriter.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <cerrno>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

namespace faults = tagio::faults;

namespace {

bool isRoot()
{
    return ::geteuid() == 0;
}

QStringList listing(const QString &dir)
{
    return QDir(dir).entryList(
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

QByteArray flacBytes(qsizetype audioSize = 4000)
{
    return build::flacFile({ { 0, build::streamInfo() }, { 4, build::vorbisBody({ "TITLE=old", "GENRE=g" }) },
                               { 1, QByteArray(100, '\0') } },
        QByteArray(audioSize, 'a'));
}

QByteArray mp3Bytes()
{
    return build::id3Tag(3, build::id3Frame(3, "TIT2", build::id3Text("old"))) + build::mpegAudio();
}

mode_t modeOf(const QString &path)
{
    struct stat st;
    return ::stat(QFile::encodeName(path).constData(), &st) == 0 ? st.st_mode & 07777 : 0;
}

const TagEdit edit = TagEdit::fromValues(QStringLiteral("new"), QStringLiteral("artist"), std::nullopt);

} // namespace

class TestSaveTags : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_folder;

private Q_SLOTS:
    void init()
    {
        faults::clear();
        m_folder = m_dir.filePath(QString::fromLatin1(QTest::currentTestFunction()) + u'-'
            + QString::fromLatin1(QTest::currentDataTag()).replace(u' ', u'_'));
        QDir().mkpath(m_folder);
    }

    void cleanup()
    {
        faults::clear();
        ::chmod(QFile::encodeName(m_folder).constData(), 0755);
    }

    void failures_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("step");
        QTest::addColumn<int>("err");
        QTest::addColumn<bool>("batch");
        struct Format
        {
            const char *name;
            QByteArray bytes;
        };
        const Format formats[] = { { "song.flac", flacBytes() }, { "song.mp3", mp3Bytes() } };
        struct Fault
        {
            const char *what;
            faults::Step step;
            int err;
        };
        const Fault list[] = {
            { "file cannot be read", faults::readWhole, EACCES },
            { "folder cannot be written", faults::createTemporary, EACCES },
            { "file system full", faults::writeData, ENOSPC },
            { "write fails half-way", faults::writeData, EIO },
            { "flush to disk fails", faults::syncFile, EIO },
            { "rename fails", faults::renameFile, EXDEV },
        };
        for (const bool batch : { false, true }) {
            for (const Format &f : formats) {
                for (const Fault &fault : list)
                    QTest::addRow("%s, %s%s", f.name, fault.what, batch ? ", in a batch" : "")
                        << QString::fromLatin1(f.name) << f.bytes << int(fault.step) << fault.err << batch;
            }
        }
    }

    void failures()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, bytes);
        QFETCH(int, step);
        QFETCH(int, err);
        QFETCH(bool, batch);
        const QString path = testsupport::writeFile(m_folder, name, bytes);
        // In a batch, the fault hits the first file; the second one is saved.
        const QString other
            = batch ? testsupport::writeFile(m_folder, QStringLiteral("other-") + name, bytes) : QString();
        const QStringList before = listing(m_folder);

        // Without root, the permission faults are real.
        const bool real = !isRoot() && (step == faults::readWhole || step == faults::createTemporary);
        if (real && step == faults::readWhole)
            ::chmod(QFile::encodeName(path).constData(), 0200);
        else if (real)
            ::chmod(QFile::encodeName(m_folder).constData(), 0555);
        else
            faults::inject(faults::Step(step), 1, err);
        faults::setPartialWriteBytes(bytes.size() / 2);

        const SaveResult r = batch ? saveTags(QStringList { path, other }, edit).constFirst()
                                   : saveTagsWithReason(path, edit);
        QVERIFY(!r.saved);
        // A folder that cannot be written refuses the second file too.
        if (batch && !(real && step == faults::createTemporary))
            QCOMPARE(readMetadata(other).title, std::optional<QString>(QStringLiteral("new")));
        QVERIFY(!r.reason.isEmpty());
        ::chmod(QFile::encodeName(path).constData(), 0644);
        ::chmod(QFile::encodeName(m_folder).constData(), 0755);
        QCOMPARE(testsupport::readFile(path), bytes);
        QCOMPARE(listing(m_folder), before);

        // The same file saves once the fault is gone.
        faults::clear();
        QVERIFY(saveTags(path, edit));
        QCOMPARE(readMetadata(path).title, std::optional<QString>(QStringLiteral("new")));
        QCOMPARE(listing(m_folder), before);
    }

    void containerFailures_data()
    {
        QTest::addColumn<int>("step");
        QTest::newRow("folder cannot be written") << int(faults::createTemporary);
        QTest::newRow("write fails") << int(faults::writeData);
        QTest::newRow("rename fails") << int(faults::renameFile);
    }

    void containerFailures()
    {
        QFETCH(int, step);
        const QString path = m_folder + QStringLiteral("/song.m4a");
        if (!testsupport::makeAudio(path, 0.2))
            QSKIP("ffmpeg is not installed");
        const QByteArray bytes = testsupport::readFile(path);
        const QStringList before = listing(m_folder);
        faults::inject(faults::Step(step), 1, EIO);
        QVERIFY(!saveTags(path, edit));
        QCOMPARE(testsupport::readFile(path), bytes);
        QCOMPARE(listing(m_folder), before);
    }

    // A real small file system that fills up during the write.
    void realFullFileSystem()
    {
        if (!isRoot())
            QSKIP("mounting a small file system needs root");
        const QByteArray mount = QFile::encodeName(m_folder);
        if (::mount("tmpfs", mount.constData(), "tmpfs", 0, "size=256k") != 0)
            QSKIP("no tmpfs can be mounted here");
        const QByteArray bytes = flacBytes(170 * 1024);
        const QString path = testsupport::writeFile(m_folder, QStringLiteral("big.flac"), bytes);
        QCOMPARE(QFileInfo(path).size(), bytes.size());
        const SaveResult r = saveTagsWithReason(path, edit);
        const QByteArray after = testsupport::readFile(path);
        const QStringList entries = listing(m_folder);
        ::umount(mount.constData());
        QVERIFY(!r.saved);
        QVERIFY2(r.reason.contains(QStringLiteral("space")), qPrintable(r.reason));
        QCOMPARE(after, bytes);
        QCOMPARE(entries, QStringList { "big.flac" });
    }

    void keepsPermissionsAndOwner()
    {
        const QString path = testsupport::writeFile(m_folder, QStringLiteral("song.flac"), flacBytes());
        ::chmod(QFile::encodeName(path).constData(), 0640);
        if (isRoot())
            QCOMPARE(::chown(QFile::encodeName(path).constData(), 1234, 4321), 0);
        QVERIFY(saveTags(path, edit));
        QCOMPARE(modeOf(path), mode_t(0640));
        if (isRoot()) {
            struct stat st;
            QCOMPARE(::stat(QFile::encodeName(path).constData(), &st), 0);
            QCOMPARE(st.st_uid, uid_t(1234));
            QCOMPARE(st.st_gid, gid_t(4321));
        }
    }

    void symbolicLinkReplacesItsTarget()
    {
        const QString target = testsupport::writeFile(m_folder, QStringLiteral("real/song.mp3"), mp3Bytes());
        const QString link = m_folder + QStringLiteral("/link.mp3");
        QVERIFY(QFile::link(target, link));
        QVERIFY(saveTags(link, edit));
        QVERIFY(QFileInfo(link).isSymLink());
        QCOMPARE(readMetadata(target).title, std::optional<QString>(QStringLiteral("new")));
        QCOMPARE(listing(m_folder + QStringLiteral("/real")), QStringList { "song.mp3" });
    }

    void refusedFilesStayUntouched_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("FLAC that starts with an ID3v2 tag")
            << "song.flac" << build::id3Tag(3, build::id3Frame(3, "TIT2", build::id3Text("x"))) + flacBytes();
        QTest::newRow("not FLAC at all") << "song.flac" << QByteArray("RIFF....WAVE");
        QTest::newRow("unsupported extension") << "song.ogg" << flacBytes();
        QTest::newRow("caf") << "song.caf"
                             << build::cafFile(build::cafChunk("info", build::cafInfo({ { "title", "x" } })));
        QTest::newRow("upper-case FLAC extension is FLAC, but this one is damaged")
            << "song.FLAC" << QByteArray("fLa");
    }

    void refusedFilesStayUntouched()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, bytes);
        const QString path = testsupport::writeFile(m_folder, name, bytes);
        QVERIFY(!saveTags(path, edit));
        QCOMPARE(testsupport::readFile(path), bytes);
        QCOMPARE(listing(m_folder), QStringList { name });
    }

    void readOnlyFileIsRespected()
    {
        if (isRoot())
            QSKIP("root may write anything");
        const QString path = testsupport::writeFile(m_folder, QStringLiteral("song.flac"), flacBytes());
        ::chmod(QFile::encodeName(path).constData(), 0444);
        QVERIFY(!saveTags(path, edit));
        QCOMPARE(testsupport::readFile(path), flacBytes());
    }

    void missingFileAndFolder()
    {
        QVERIFY(!saveTags(m_folder + QStringLiteral("/missing.flac"), edit));
        QVERIFY(!saveTags(m_folder, edit));
        QDir().mkpath(m_folder + QStringLiteral("/dir.mp3"));
        QVERIFY(!saveTags(m_folder + QStringLiteral("/dir.mp3"), edit));
    }

    // ID3v2.4 value lists become ID3v2.3 text; a kept field must still pass the
    // read-back check.
    void keptFieldsChangingForm()
    {
        using build::id3Frame;
        const QByteArray tag = build::id3Tag(4,
            id3Frame(4, "TPE1",
                QByteArray("\x03"
                           "A\x00"
                           "B",
                    4))
                + id3Frame(4, "TCON",
                    QByteArray("\x03"
                               "17\x00"
                               "Pop",
                        7))
                + id3Frame(4, "TIT2", build::id3Text("old")));
        const QString path
            = testsupport::writeFile(m_folder, QStringLiteral("list.mp3"), tag + build::mpegAudio());
        QCOMPARE(readMetadata(path).artist, std::optional<QString>(QStringLiteral("A/B")));
        QVERIFY(saveTags(
            path, TagEdit { FieldEdit::set(QStringLiteral("new")), FieldEdit::keep(), FieldEdit::keep() }));
        const TrackMetadata after = readMetadata(path);
        QCOMPARE(after.title, std::optional<QString>(QStringLiteral("new")));
        QCOMPARE(after.artist, std::optional<QString>(QStringLiteral("A/B")));
        QVERIFY(after.genre);
        QCOMPARE(testsupport::readFile(path).mid(3, 1), QByteArray("\x03"));
    }

    void batchSave()
    {
        const QString flac = testsupport::writeFile(m_folder, QStringLiteral("a.flac"), flacBytes());
        const QString mp3 = testsupport::writeFile(m_folder, QStringLiteral("sub/b.mp3"), mp3Bytes());
        const QString caf = testsupport::writeFile(m_folder, QStringLiteral("c.caf"), QByteArray("caff"));
        const TagEdit albumOnly { FieldEdit::keep(), FieldEdit::keep(),
            FieldEdit::set(QStringLiteral("Shared album")) };
        const QList<SaveResult> results = saveTags(QStringList { flac, caf, mp3 }, albumOnly);
        QCOMPARE(results.size(), 3);
        QVERIFY(results[0].saved && !results[1].saved && results[2].saved);
        QVERIFY(results[1].reason.contains(caf));
        for (const QString &path : { flac, mp3 }) {
            const TrackMetadata m = readMetadata(path);
            QCOMPARE(m.album, std::optional<QString>(QStringLiteral("Shared album")));
            QCOMPARE(m.title, std::optional<QString>(QStringLiteral("old")));
        }
        QCOMPARE(listing(m_folder), (QStringList { "a.flac", "c.caf", "sub" }));
    }

    void upperCaseExtensionIsFlac()
    {
        const QString path = testsupport::writeFile(m_folder, QStringLiteral("song.FLAC"), flacBytes());
        QVERIFY(saveTags(path, edit));
        QCOMPARE(readMetadata(path).artist, std::optional<QString>(QStringLiteral("artist")));
        QCOMPARE(readMetadata(path).genre, std::optional<QString>(QStringLiteral("g")));
    }
};

QTEST_GUILESS_MAIN(TestSaveTags)
#include "tst_save_tags.moc"
