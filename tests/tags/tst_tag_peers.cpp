// SPDX-License-Identifier: GPL-3.0-or-later
// Real files made by flac, sox and ffmpeg, tagged by metaflac, mutagen and
// ffmpeg: our reader must agree with those tools; after a save the tools must
// find the new tags, everything else carried over and the same audio; a save
// that is refused leaves the file byte for byte as it was.
#include "TagBuilders.h"
#include "support/TestSupport.h"
#include "tags/TagReader.h"
#include "tags/TagWriter.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using testsupport::run;

namespace {

// A program and its arguments, split at spaces, then further arguments as they are.
testsupport::ToolResult runWords(const char *words, const QStringList &more = {})
{
    QStringList args = QString::fromUtf8(words).split(u' ');
    const QString program = args.takeFirst();
    return run(program, args + more);
}

const QString python = QStringLiteral("/usr/bin/python3");
const QString peerScript = QStringLiteral(TARNWELL_PEER_SCRIPT);
const QString cli = QStringLiteral(TARNWELL_CLI);

QJsonObject mutagenRead(const QString &path)
{
    return QJsonDocument::fromJson(run(python, { peerScript, QStringLiteral("read"), path }).out).object();
}

// The key=value lines of a tool, keys lower-cased, the last of a key winning like our reader.
QJsonObject keyValues(const char *words, const QString &path)
{
    QJsonObject out;
    for (QByteArray line : runWords(words, { path }).out.split('\n')) {
        line = line.startsWith("TAG:") ? line.sliced(4) : line;
        if (const qsizetype eq = line.indexOf('='); eq > 0)
            out.insert(QString::fromUtf8(line.first(eq)).toLower(), QString::fromUtf8(line.sliced(eq + 1)));
    }
    return out;
}

QJsonObject metaflacRead(const QString &path)
{
    return keyValues("metaflac --export-tags-to=-", path);
}

// ffprobe reads RIFF INFO and CAF info, which mutagen doesn't.
QJsonObject peerRead(const QString &path)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    return suffix == u"flac" ? metaflacRead(path)
        : suffix == u"wav" || suffix == u"caf"
        ? keyValues("ffprobe -v error -show_entries format_tags -of default=nw=1", path)
        : mutagenRead(path);
}

// The decoded audio; stderr must stay empty (no decoder complaints).
QByteArray audioChecksum(const QString &path)
{
    const auto r = runWords("ffmpeg -nostdin -v error -i", { path, "-map", "0:a", "-f", "md5", "-" });
    if (r.exitCode != 0 || !r.err.isEmpty())
        return "ffmpeg: " + r.err;
    return r.out.trimmed();
}

QString value(const std::optional<QString> &s)
{
    return s.value_or(QStringLiteral("<absent>"));
}

QString value(const QJsonObject &o, const char *key)
{
    return value(o.contains(QLatin1StringView(key))
            ? std::optional(o.value(QLatin1StringView(key)).toString())
            : std::nullopt);
}

} // namespace

class TestTagPeers : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_originals;

    QString original(const QString &name) const { return m_originals + u'/' + name; }

    // A fresh copy of an original to write into, in a folder of its own.
    QString copy(const QString &name, const QString &as = {})
    {
        const QString to = QDir::cleanPath(m_dir.filePath(
            QStringLiteral("work/%1/%2/%3")
                .arg(QTest::currentTestFunction(), QTest::currentDataTag(), as.isEmpty() ? name : as)));
        QDir().mkpath(QFileInfo(to).absolutePath());
        QFile::remove(to);
        if (!QFile::copy(original(name), to))
            qWarning() << "copy failed" << name;
        return to;
    }

    bool make(const char *words, const QStringList &more)
    {
        const auto r = runWords(words, more);
        if (r.exitCode != 0)
            qWarning() << words << more << r.err;
        return r.exitCode == 0;
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_originals = m_dir.filePath(QStringLiteral("originals"));
        QDir().mkpath(m_originals);
        const auto o = [&](const char *name) { return original(QLatin1StringView(name)); };
        const auto meta = [](const char *title, const char *genre) {
            return QStringList { "-metadata", QStringLiteral("title=") + QString::fromUtf8(title),
                "-metadata", QStringLiteral("artist=Ärtist"), "-metadata", "album=Album", "-metadata",
                QStringLiteral("genre=") + QLatin1StringView(genre) };
        };
#define SINE "ffmpeg -nostdin -v error -y -f lavfi -i sine=frequency=440:duration=0.3"

        // FLAC by sox then flac, tagged by metaflac, with a picture and padding.
        QVERIFY(testsupport::makeAudio(o("src.wav"), 0.3));
        QVERIFY(make("flac -s -f -o", { o("a.flac"), o("src.wav") }));
        QImage cover(32, 32, QImage::Format_RGB32);
        cover.fill(Qt::darkCyan);
        QVERIFY(cover.save(o("cover.png")));
        QVERIFY(make("metaflac --set-tag=TITLE=first --set-tag=GENRE=Blues --set-tag=TRACKNUMBER=3 "
                     "--set-tag=DATE=2001",
            { QStringLiteral("--set-tag=TITLE=Tïtle FLAC"), QStringLiteral("--set-tag=ARTIST=Ärtist"),
                "--set-tag=ALBUM=Album", "--import-picture-from=" + o("cover.png"), o("a.flac") }));

        // FLAC with a 600 KiB picture before its comments.
        QImage noise(420, 420, QImage::Format_RGB32);
        QRandomGenerator::global()->fillRange(reinterpret_cast<quint32 *>(noise.bits()), 420 * 420);
        QVERIFY(noise.save(o("big.png")));
        QVERIFY(QFile::copy(o("a.flac"), o("big.flac")));
        QVERIFY(make("metaflac --remove --block-type=PICTURE --dont-use-padding", { o("big.flac") }));
        QVERIFY(make("metaflac", { "--import-picture-from=" + o("big.png"), o("big.flac") }));

        // MP3: ID3v2.4 and v2.3 by mutagen, by ffmpeg alone, none, ID3v1 alone, both.
        QVERIFY(make(SINE, { o("v24.mp3") }));
        QVERIFY(QFile::copy(o("v24.mp3"), o("v23.mp3")));
        QVERIFY(QFile::copy(o("v24.mp3"), o("bare.mp3")));
        QVERIFY(make(SINE, meta("Tïtle ffmpeg", "Rock") << o("ffmpeg.mp3")));
        QVERIFY(make(SINE " -write_id3v1 1", meta("Title v1", "Rock") << o("v1.mp3")));
        QVERIFY(make("/usr/bin/python3", { peerScript, "strip-id3v2", o("v1.mp3") }));
        QVERIFY(make(SINE " -id3v2_version 3 -write_id3v1 1", meta("Title both", "Rock") << o("both.mp3")));
        QVERIFY(make("/usr/bin/python3", { peerScript, "tag-id3", o("v24.mp3"), "4", o("cover.png") }));
        QVERIFY(make("/usr/bin/python3", { peerScript, "tag-id3", o("v23.mp3"), "3", o("cover.png") }));
        // M4A tagged by mutagen, with a cover; WAV with RIFF INFO, AIFF with
        // an ID3 chunk, CAF with its info chunk, all by ffmpeg.
        QVERIFY(make(SINE " -c:a aac", { o("a.m4a") }));
        QVERIFY(make("/usr/bin/python3", { peerScript, "tag-m4a", o("a.m4a"), o("cover.png") }));
        QVERIFY(make(SINE, meta("Tïtle WAV", "Funk") << o("a.wav")));
        QVERIFY(make(SINE " -write_id3v2 1", meta("Tïtle AIFF", "Disco") << o("a.aiff")));
        QVERIFY(QFile::copy(o("a.aiff"), o("b.aif")));
        QVERIFY(make(SINE " -c:a pcm_s16be", meta("Tïtle CAF", "Folk") << o("a.caf")));
#undef SINE
    }

    void readerAgreesWithPeers_data()
    {
        QTest::addColumn<QString>("name");
        for (const char *name : { "a.flac", "big.flac", "v24.mp3", "v23.mp3", "ffmpeg.mp3", "bare.mp3",
                 "v1.mp3", "both.mp3", "a.m4a", "a.wav", "a.aiff", "b.aif", "a.caf" })
            QTest::newRow(name) << QString::fromLatin1(name);
    }

    void readerAgreesWithPeers()
    {
        QFETCH(QString, name);
        const TrackMetadata ours = readMetadata(original(name));
        const QJsonObject peer = peerRead(original(name));
        QCOMPARE(value(ours.title), value(peer, "title"));
        QCOMPARE(value(ours.artist), value(peer, "artist"));
        QCOMPARE(value(ours.album), value(peer, "album"));
        QCOMPARE(value(ours.genre), value(peer, "genre"));
        if (name != u"bare.mp3")
            QVERIFY(ours.title);
        // The first embedded picture, as mutagen finds it.
        if (!name.endsWith(u".wav") && !name.endsWith(u".caf")) {
            const auto picture = readEmbeddedArtwork(original(name));
            const QJsonArray pictures = mutagenRead(original(name)).value(u"pictures").toArray();
            QCOMPARE(
                picture ? QCryptographicHash::hash(*picture, QCryptographicHash::Md5).toHex() : QByteArray(),
                pictures.isEmpty() ? QByteArray() : pictures.first().toString().toLatin1());
        }
        const auto duration = readDuration(original(name));
        QVERIFY(duration && qAbs(*duration - 0.3) < 0.1);
    }

    // Every save that succeeds: the audio decodes to the same samples, the
    // peers read the tags as edited, everything else is carried over.
    void saves_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<TagEdit>("edit");
        using FE = FieldEdit;
        const TagEdit all = TagEdit::fromValues(QStringLiteral("Nouveau tïtre 東京"),
            QStringLiteral("Café Ünïcode"), QStringLiteral("Albüm = with equals"));
        for (const char *name : { "a.flac", "big.flac", "v24.mp3", "v23.mp3", "ffmpeg.mp3", "bare.mp3",
                 "a.m4a", "a.wav", "a.aiff" })
            QTest::newRow(name) << QString::fromLatin1(name) << all;
        const TagEdit titleOnly { FE::set(QStringLiteral("New")), FE::keep(), FE::keep() };
        QTest::newRow("ID3v1 only, title given") << "v1.mp3" << titleOnly;
        QTest::newRow("both tags, album removed")
            << "both.mp3" << TagEdit { FE::keep(), FE::keep(), FE::remove() };
        QTest::newRow("both tags, a title ID3v1 can't hold")
            << "both.mp3" << TagEdit { FE::set(QStringLiteral("東京")), FE::keep(), FE::keep() };
        QTest::newRow("flac, artist removed") << "a.flac" << TagEdit { FE::keep(), FE::remove(), FE::keep() };
    }

    void saves()
    {
        QFETCH(QString, name);
        QFETCH(TagEdit, edit);
        const QString path = copy(name);
        const QString folder = QFileInfo(path).absolutePath();
        const QByteArray before = testsupport::readFile(path);
        const QByteArray checksum = audioChecksum(path);
        QVERIFY2(!checksum.startsWith("ffmpeg"), checksum.constData());
        const QJsonObject peerBefore = mutagenRead(path);
        const TrackMetadata oldTags = readMetadata(path);
        const SaveResult saved = saveTags(path, edit);
        QVERIFY2(saved, qPrintable(saved.message(path)));

        QCOMPARE(audioChecksum(path), checksum);
        const TrackMetadata ours = readMetadata(path);
        const QJsonObject peer = peerRead(path);
        const FieldEdit *edits[] = { &edit.title, &edit.artist, &edit.album };
        const std::optional<QString> was[] = { oldTags.title, oldTags.artist, oldTags.album };
        const std::optional<QString> now[] = { ours.title, ours.artist, ours.album };
        const char *keys[] = { "title", "artist", "album" };
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(value(now[i]), value(edits[i]->applied(was[i])));
            QCOMPARE(value(peer, keys[i]), value(edits[i]->applied(was[i])));
        }
        QCOMPARE(value(ours.genre), value(oldTags.genre));
        QCOMPARE(value(peer, "genre"), value(oldTags.genre));
        QCOMPARE(QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
            QStringList { name });
        if (name.endsWith(u".flac")) {
            QCOMPARE(runWords("flac -t -s", { path }).exitCode, 0);
            const auto listing = runWords("metaflac --list", { path });
            QCOMPARE(listing.exitCode, 0);
            QCOMPARE(listing.out.count("type: 4 (VORBIS_COMMENT)"), 1);
            QCOMPARE(listing.out.count("is last: true"), 1);
            // Every other block byte for byte as before, in order.
            QList<plain::FlacBlock> oldBlocks = plain::flacBlocks(before);
            oldBlocks.removeIf([](const plain::FlacBlock &b) { return b.type == 4; });
            QList<plain::FlacBlock> newBlocks = plain::flacBlocks(testsupport::readFile(path));
            QCOMPARE(newBlocks.takeLast().type, 4);
            for (qsizetype i = 0; i < oldBlocks.size(); ++i)
                QCOMPARE(newBlocks.at(i).body, oldBlocks.at(i).body);
        } else {
            // Pictures and the other frames or atoms are carried over.
            const QJsonObject peerAfter = mutagenRead(path);
            QCOMPARE(peerAfter.value(u"pictures").toArray(), peerBefore.value(u"pictures").toArray());
            for (const QJsonValue &f : peerBefore.value(u"frames").toArray()) {
                if (!QStringList { "TIT2", "TPE1", "TALB" }.contains(f.toString()))
                    QVERIFY2(peerAfter.value(u"frames").toArray().contains(f), qPrintable(f.toString()));
            }
        }
    }

    // A refused save, from the command line: exit 1, the path and the reason
    // on stderr, the file byte for byte as it was and nothing beside it.
    void refusals_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("as");
        QTest::addColumn<QString>("reason");
        QTest::newRow("M4A named .mp3") << "a.m4a"
                                        << "song.mp3"
                                        << "its contents are not what its name says";
        QTest::newRow("CAF") << "a.caf"
                             << ""
                             << "tags can't be written into this kind of file";
    }

    void refusals()
    {
        QFETCH(QString, name);
        QFETCH(QString, as);
        QFETCH(QString, reason);
        const QString path = copy(name, as);
        const QByteArray bytes = testsupport::readFile(path);
        const auto r = run(cli, { "write", path, "--title", "x" });
        QCOMPARE(r.exitCode, 1);
        QVERIFY2(r.err.contains(QFile::encodeName(path + QStringLiteral(": ") + reason)), r.err.constData());
        QCOMPARE(testsupport::readFile(path), bytes);
        QCOMPARE(QDir(QFileInfo(path).absolutePath())
                     .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
            QStringList { QFileInfo(path).fileName() });
    }
};

QTEST_GUILESS_MAIN(TestTagPeers)
#include "tst_tag_peers.moc"
