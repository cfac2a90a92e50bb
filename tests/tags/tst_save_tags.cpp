// SPDX-License-Identifier: GPL-3.0-or-later
// Saving to disk. A save that fails or is refused anywhere leaves the file byte
// for byte as it was and no temporary file behind. Where root ignores
// permissions the failures are injected at the system call that would fail,
// and other programs act at chosen system calls of a save.
#include "SyscallFaults.h"
#include "TagBuilders.h"
#include "support/TestSupport.h"
#include "tags/TagReader.h"
#include "tags/TagWriter.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace faults = tagio::faults;

namespace {

QByteArray name(const QString &path)
{
    return QFile::encodeName(path);
}

QStringList listing(const QString &dir)
{
    return QDir(dir).entryList(
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

// A file last written an hour ago, so that saving it needn't wait for it to settle.
QString writeOld(const QString &dir, const QString &file, const QByteArray &bytes)
{
    const QString path = testsupport::writeFile(dir, file, bytes);
    const timespec times[2] = { { ::time(nullptr) - 3600, 0 }, { ::time(nullptr) - 3600, 0 } };
    ::utimensat(AT_FDCWD, name(path).constData(), times, 0);
    return path;
}

const QByteArray flacBytes
    = build::flacFile({ { 0, build::streamInfo() }, { 4, build::vorbisBody({ "TITLE=old", "GENRE=g" }) },
                          { 1, QByteArray(100, '\0') } },
        build::flacFrame() + QByteArray(4000, 'a'));
const QByteArray mp3Bytes
    = build::id3Tag(3, build::id3Frame(3, "TIT2", build::id3Text("old"))) + build::mpegAudio();
const TagEdit edit = TagEdit::fromValues(QStringLiteral("new"), QStringLiteral("artist"), std::nullopt);
const std::optional<QString> newTitle = QStringLiteral("new");

SaveResult save(const QString &path, bool batch)
{
    return batch ? saveTags(QStringList { path }, edit).constFirst() : saveTags(path, edit);
}

enum class Setup { none, readOnly, hardLink, fifo, folder, missing };

} // namespace

Q_DECLARE_METATYPE(Setup)
Q_DECLARE_METATYPE(SaveError)

class TestSaveTags : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_folder;
    QByteArray m_m4a;

private Q_SLOTS:
    void initTestCase()
    {
        const QString m4a = m_dir.filePath(QStringLiteral("template.m4a"));
        QVERIFY(testsupport::makeAudio(m4a, 0.2));
        m_m4a = testsupport::readFile(m4a);
    }

    void init()
    {
        faults::clear();
        m_folder = m_dir.filePath(QString::fromLatin1(QTest::currentTestFunction()) + u'-'
            + QString::fromLatin1(QTest::currentDataTag()).replace(u' ', u'_').replace(u'/', u'_'));
        QDir().mkpath(m_folder);
    }

    void cleanup()
    {
        faults::clear();
        ::chmod(name(m_folder).constData(), 0755);
    }

    void failures_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("step");
        QTest::addColumn<int>("err");
        QTest::addColumn<bool>("batch");
        const std::pair<const char *, QByteArray> formats[]
            = { { "song.flac", flacBytes }, { "song.mp3", mp3Bytes }, { "song.m4a", m_m4a } };
        const std::tuple<const char *, faults::Step, int> list[] = {
            { "file cannot be read", faults::readWhole, EACCES },
            { "folder cannot be written", faults::createTemporary, EACCES },
            { "file system full", faults::writeData, ENOSPC },
            { "write fails half-way", faults::writeData, EIO },
            { "flush to disk fails", faults::syncFile, EIO },
            { "rename fails", faults::renameFile, EXDEV },
        };
        for (const bool batch : { false, true }) {
            for (const auto &[file, bytes] : formats) {
                for (const auto &[what, step, err] : list)
                    QTest::addRow("%s, %s%s", file, what, batch ? ", in a batch" : "")
                        << QString::fromLatin1(file) << bytes << int(step) << err << batch;
            }
        }
    }

    void failures()
    {
        QFETCH(QString, file);
        QFETCH(QByteArray, bytes);
        QFETCH(int, step);
        QFETCH(int, err);
        QFETCH(bool, batch);
        const QString path = writeOld(m_folder, file, bytes);
        // In a batch, the fault hits the first file; the second one is saved.
        const QString other = batch ? writeOld(m_folder, QStringLiteral("other-") + file, bytes) : QString();
        const QStringList before = listing(m_folder);

        // Without root, the permission faults are real.
        const bool real = ::geteuid() != 0 && (step == faults::readWhole || step == faults::createTemporary);
        if (real)
            ::chmod(name(step == faults::readWhole ? path : m_folder).constData(),
                step == faults::readWhole ? 0200 : 0555);
        else
            faults::inject(faults::Step(step), 1, err);
        faults::setPartialWriteBytes(bytes.size() / 2);

        const SaveResult r
            = batch ? saveTags(QStringList { path, other }, edit).constFirst() : saveTags(path, edit);
        QCOMPARE(r.error, step == faults::readWhole ? SaveError::unreadable : SaveError::writeFailed);
        QVERIFY(!r.detail.isEmpty());
        // A folder that cannot be written refuses the second file too.
        if (batch && !(real && step == faults::createTemporary))
            QCOMPARE(readMetadata(other).title, newTitle);
        ::chmod(name(path).constData(), 0644);
        ::chmod(name(m_folder).constData(), 0755);
        QCOMPARE(testsupport::readFile(path), bytes);
        QCOMPARE(listing(m_folder), before);

        // The same file saves once the fault is gone.
        faults::clear();
        QVERIFY(saveTags(path, edit));
        QCOMPARE(readMetadata(path).title, newTitle);
        QCOMPARE(listing(m_folder), before);
    }

    // Kinds of content and damage: the writers' and the peer tests.
    void refusals_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<Setup>("setup");
        QTest::addColumn<SaveError>("error");
        const auto row
            = [](const char *what, const char *file, const QByteArray &bytes, Setup setup, SaveError error) {
                  QTest::newRow(what) << QString::fromLatin1(file) << bytes << setup << error;
              };
        row("text named .mp3", "song.mp3", QByteArray(3000, 't'), Setup::none, SaveError::wrongContent);
        row("empty .mp3", "song.mp3", {}, Setup::none, SaveError::noAudio);
        row("FLAC behind an ID3v2 tag", "song.flac",
            mp3Bytes.first(mp3Bytes.size() - build::mpegAudio().size()) + flacBytes, Setup::none,
            SaveError::unsupportedFormat);
        row("read-only by its permission bits", "song.flac", flacBytes, Setup::readOnly, SaveError::readOnly);
        row("hard-linked", "song.mp3", mp3Bytes, Setup::hardLink, SaveError::hardLinked);
        row("FIFO", "song.flac", {}, Setup::fifo, SaveError::notRegularFile);
        row("folder", "song.mp3", {}, Setup::folder, SaveError::folder);
        row("missing", "song.flac", {}, Setup::missing, SaveError::missing);
    }

    void refusals()
    {
        QFETCH(QString, file);
        QFETCH(QByteArray, bytes);
        QFETCH(Setup, setup);
        const QString path = m_folder + u'/' + file;
        if (setup == Setup::fifo)
            QCOMPARE(::mkfifo(name(path).constData(), 0644), 0);
        else if (setup == Setup::folder)
            QVERIFY(QDir().mkpath(path));
        else if (setup != Setup::missing)
            writeOld(m_folder, file, bytes);
        if (setup == Setup::readOnly)
            ::chmod(name(path).constData(), 0444);
        if (setup == Setup::hardLink)
            QCOMPARE(
                ::link(name(path).constData(), name(m_folder + QStringLiteral("/other name")).constData()),
                0);
        const QStringList before = listing(m_folder);
        for (const bool batch : { false, true }) {
            const SaveResult r = save(path, batch);
            QTEST(r.error, "error");
            QVERIFY(!r.reason().isEmpty());
            QCOMPARE(listing(m_folder), before);
            if (setup == Setup::none || setup == Setup::readOnly || setup == Setup::hardLink)
                QCOMPARE(testsupport::readFile(path), bytes);
        }
    }

    // Another program acts on the file in the middle of a save: the file keeps
    // what that program made of it, and the save says so.
    void changedWhileSaving_data()
    {
        QTest::addColumn<int>("step");
        QTest::addColumn<int>("change");
        QTest::addColumn<bool>("batch");
        const std::tuple<const char *, faults::Step> changes[]
            = { { "grows while it is read", faults::readWhole },
                  { "grows while the new file is written", faults::writeData },
                  { "retagged before the rename", faults::syncFile },
                  { "replaced by another file", faults::createTemporary } };
        for (const bool batch : { false, true }) {
            for (int change = 0; change < 4; ++change)
                QTest::addRow("%s%s", std::get<0>(changes[change]), batch ? ", in a batch" : "")
                    << int(std::get<1>(changes[change])) << change << batch;
        }
    }

    void changedWhileSaving()
    {
        QFETCH(int, step);
        QFETCH(int, change);
        QFETCH(bool, batch);
        const QString path = writeOld(m_folder, QStringLiteral("song.flac"), flacBytes);
        QByteArray theirs = flacBytes;
        faults::whenCalled(faults::Step(step), [&] {
            if (change < 2) { // 100 KB more of a copy still running
                theirs += QByteArray(100 * 1024, 'm');
                QFile f(path);
                QVERIFY(f.open(QIODevice::Append) && f.write(QByteArray(100 * 1024, 'm')) > 0);
            } else if (change == 2) { // another tagger's work, same size
                theirs.replace("TITLE=old", "TITLE=new");
                testsupport::writeFile(m_folder, QStringLiteral("song.flac"), theirs);
            } else {
                theirs = mp3Bytes;
                const QString other = testsupport::writeFile(m_folder, QStringLiteral("x"), theirs);
                QCOMPARE(::rename(name(other).constData(), name(path).constData()), 0);
            }
        });
        QCOMPARE(save(path, batch).error, SaveError::changedWhileSaving);
        QCOMPARE(testsupport::readFile(path), theirs);
        QCOMPARE(listing(m_folder), QStringList { "song.flac" });
    }

    // A file written a moment ago may still be being copied: it is replaced
    // only after a second in which it didn't change.
    void freshFileSettlesFirst()
    {
        const QString path = testsupport::writeFile(m_folder, QStringLiteral("song.mp3"), mp3Bytes);
        QElapsedTimer clock;
        clock.start();
        QVERIFY(saveTags(path, edit));
        QCOMPARE_GE(clock.elapsed(), 950);
        QCOMPARE(readMetadata(path).title, newTitle);
    }

    void attributesKept()
    {
        const QString path = writeOld(m_folder, QStringLiteral("song.flac"), flacBytes);
        const QByteArray file = name(path);
        ::chmod(file.constData(), 0640);
        if (::geteuid() == 0)
            QCOMPARE(::chown(file.constData(), 1234, 4321), 0);
        // An ACL granting user 1001 read and write: header, then user::, user:1001, group::, mask::, other::.
        QByteArray acl = build::le32(2);
        for (const auto &[tag, perm, id] :
            { std::tuple { 1, 6, -1 }, { 2, 6, 1001 }, { 4, 4, -1 }, { 0x10, 6, -1 }, { 0x20, 0, -1 } })
            acl += QByteArray(1, char(tag)) + '\0' + char(perm) + '\0' + build::le32(quint32(id));
        QCOMPARE(::setxattr(file.constData(), "user.origin", "ripped", 6, 0), 0);
        QCOMPARE(
            ::setxattr(file.constData(), "system.posix_acl_access", acl.constData(), size_t(acl.size()), 0),
            0);
        struct stat before, after;
        QCOMPARE(::stat(file.constData(), &before), 0);

        QVERIFY(saveTags(path, edit));
        QCOMPARE(readMetadata(path).title, newTitle);
        QCOMPARE(::stat(file.constData(), &after), 0);
        QVERIFY(after.st_ino != before.st_ino);
        QCOMPARE(std::tuple(after.st_mode, after.st_uid, after.st_gid),
            std::tuple(before.st_mode, before.st_uid, before.st_gid));
        QByteArray value(256, '\0');
        value.resize(::getxattr(file.constData(), "user.origin", value.data(), size_t(value.size())));
        QCOMPARE(value, QByteArray("ripped"));
        value.resize(256);
        value.resize(
            ::getxattr(file.constData(), "system.posix_acl_access", value.data(), size_t(value.size())));
        QCOMPARE(value, acl);
    }

    // What a killed save left (named as ours, locked by nobody) goes with the
    // next save in the folder; a save still running and other files stay. A
    // symbolic link stays one: its target is replaced.
    void leftoversAndLinks()
    {
        const QString folder = m_folder + QStringLiteral("/real");
        const QString target = writeOld(folder, QStringLiteral("song.mp3"), mp3Bytes);
        const QString link = m_folder + QStringLiteral("/link.mp3");
        QVERIFY(QFile::link(target, link));
        for (const char *file : { ".song.tarnwell-Ab3dE9.flac", ".other.tarnwell-zzzzzz.mp3",
                 ".live.tarnwell-L1veXX.mp3", ".hidden.flac", ".x.tarnwell-short.mp3" })
            testsupport::writeFile(folder, QLatin1StringView(file), flacBytes);
        const int live
            = ::open(name(folder + QStringLiteral("/.live.tarnwell-L1veXX.mp3")).constData(), O_RDONLY);
        QCOMPARE(::flock(live, LOCK_EX), 0);
        QVERIFY(saveTags(link, edit));
        ::close(live);
        QCOMPARE(listing(folder),
            (QStringList {
                ".hidden.flac", ".live.tarnwell-L1veXX.mp3", ".x.tarnwell-short.mp3", "song.mp3" }));
        QVERIFY(QFileInfo(link).isSymLink());
        QCOMPARE(readMetadata(target).title, newTitle);
    }
};

QTEST_GUILESS_MAIN(TestSaveTags)
#include "tst_save_tags.moc"
