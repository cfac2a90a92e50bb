// SPDX-License-Identifier: GPL-3.0-or-later
// Real files made by flac, sox and ffmpeg, tagged by metaflac, mutagen and
// ffmpeg: our reader must agree with those tools, and after our writer ran the
// tools must find the new tags, everything carried over and the same audio.
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

using testsupport::run;

namespace {

const QString python = QStringLiteral("/usr/bin/python3");
const QString peerScript = QStringLiteral(TARNWELL_PEER_SCRIPT);

QJsonObject mutagenRead(const QString &path)
{
    const auto r = run(python, { peerScript, QStringLiteral("read"), path });
    if (r.exitCode != 0)
        qWarning() << "mutagen failed:" << r.err;
    return QJsonDocument::fromJson(r.out).object();
}

// ffprobe reads RIFF INFO and CAF info, which mutagen doesn't.
QJsonObject ffprobeRead(const QString &path)
{
    const auto r = run(QStringLiteral("ffprobe"),
        { QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-show_entries"),
            QStringLiteral("format_tags"), QStringLiteral("-of"), QStringLiteral("json"), path });
    const QJsonObject tags
        = QJsonDocument::fromJson(r.out).object().value(u"format").toObject().value(u"tags").toObject();
    QJsonObject out;
    for (auto it = tags.begin(); it != tags.end(); ++it)
        out.insert(it.key().toLower(), it.value());
    return out;
}

// metaflac's view of the comments, last of a key winning like our reader.
QJsonObject metaflacRead(const QString &path)
{
    const auto r = run(QStringLiteral("metaflac"), { QStringLiteral("--export-tags-to=-"), path });
    QJsonObject out;
    for (const QByteArray &line : r.out.split('\n')) {
        const qsizetype eq = line.indexOf('=');
        if (eq > 0)
            out.insert(QString::fromUtf8(line.first(eq)).toLower(), QString::fromUtf8(line.sliced(eq + 1)));
    }
    return out;
}

QJsonObject peerRead(const QString &path)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (suffix == u"flac")
        return metaflacRead(path);
    if (suffix == u"wav" || suffix == u"caf")
        return ffprobeRead(path);
    return mutagenRead(path);
}

// The decoded audio; stderr must stay empty (no decoder complaints).
QByteArray audioChecksum(const QString &path)
{
    const auto r = run(QStringLiteral("ffmpeg"),
        { QStringLiteral("-nostdin"), QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-i"),
            path, QStringLiteral("-map"), QStringLiteral("0:a"), QStringLiteral("-f"), QStringLiteral("md5"),
            QStringLiteral("-") });
    if (r.exitCode != 0 || !r.err.isEmpty())
        return "ffmpeg: " + r.err;
    return r.out.trimmed();
}

struct FlacBlock
{
    int type;
    QByteArray body;
    bool operator==(const FlacBlock &) const = default;
};

QList<FlacBlock> flacBlocks(const QByteArray &file)
{
    QList<FlacBlock> blocks;
    qsizetype pos = 4;
    while (pos + 4 <= file.size()) {
        const quint8 h = quint8(file[pos]);
        const qsizetype len
            = (quint8(file[pos + 1]) << 16) | (quint8(file[pos + 2]) << 8) | quint8(file[pos + 3]);
        blocks.append({ h & 0x7F, file.mid(pos + 4, len) });
        pos += 4 + len;
        if (h & 0x80)
            break;
    }
    return blocks;
}

QString value(const std::optional<QString> &s)
{
    return s.value_or(QStringLiteral("<absent>"));
}

QString value(const QJsonObject &o, const char *key)
{
    return o.contains(QLatin1StringView(key)) ? o.value(QLatin1StringView(key)).toString()
                                              : QStringLiteral("<absent>");
}

} // namespace

class TestTagPeers : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_originals;

    QString original(const QString &name) const { return m_originals + u'/' + name; }

    // A fresh copy of an original to write into.
    QString copy(const QString &name)
    {
        const QString to = m_dir.filePath(QStringLiteral("work/") + name);
        QDir().mkpath(QFileInfo(to).absolutePath());
        QFile::remove(to);
        if (!QFile::copy(original(name), to))
            qWarning() << "copy failed" << name;
        return to;
    }

    bool make(const QString &program, const QStringList &args)
    {
        const auto r = run(program, args);
        if (r.exitCode != 0)
            qWarning() << program << args << r.err;
        return r.exitCode == 0;
    }

private Q_SLOTS:
    void initTestCase()
    {
        for (const char *tool : { "flac", "metaflac", "sox", "ffmpeg", "ffprobe" }) {
            if (!testsupport::haveTool(QLatin1StringView(tool)))
                QSKIP("the peer tools are not installed");
        }
        if (run(python, { QStringLiteral("-c"), QStringLiteral("import mutagen") }).exitCode != 0)
            QSKIP("mutagen is not installed");
        m_originals = m_dir.filePath(QStringLiteral("originals"));
        QDir().mkpath(m_originals);
        const auto o = [&](const char *name) { return original(QLatin1StringView(name)); };
        const QString ffmpeg = QStringLiteral("ffmpeg");
        const QStringList sine { QStringLiteral("-nostdin"), QStringLiteral("-v"), QStringLiteral("error"),
            QStringLiteral("-y"), QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"),
            QStringLiteral("sine=frequency=440:duration=0.3") };
        const auto meta = [](const char *title, const char *genre) {
            return QStringList { QStringLiteral("-metadata"),
                QStringLiteral("title=") + QString::fromUtf8(title), QStringLiteral("-metadata"),
                QStringLiteral("artist=Ärtist"), QStringLiteral("-metadata"), QStringLiteral("album=Album"),
                QStringLiteral("-metadata"), QStringLiteral("genre=") + QLatin1StringView(genre) };
        };

        // FLAC by sox then flac, tagged by metaflac, with a picture and padding.
        QVERIFY(make(QStringLiteral("sox"),
            { QStringLiteral("-n"), QStringLiteral("-r"), QStringLiteral("44100"), QStringLiteral("-b"),
                QStringLiteral("16"), QStringLiteral("-c"), QStringLiteral("2"), o("src.wav"),
                QStringLiteral("synth"), QStringLiteral("0.3"), QStringLiteral("sine"),
                QStringLiteral("440") }));
        QVERIFY(make(QStringLiteral("flac"),
            { QStringLiteral("-s"), QStringLiteral("-f"), QStringLiteral("-o"), o("a.flac"), o("src.wav") }));
        QImage cover(32, 32, QImage::Format_RGB32);
        cover.fill(Qt::darkCyan);
        QVERIFY(cover.save(o("cover.png")));
        QVERIFY(make(QStringLiteral("metaflac"),
            { QStringLiteral("--set-tag=TITLE=first"), QStringLiteral("--set-tag=TITLE=Tïtle FLAC"),
                QStringLiteral("--set-tag=ARTIST=Ärtist"), QStringLiteral("--set-tag=ALBUM=Album"),
                QStringLiteral("--set-tag=GENRE=Blues"), QStringLiteral("--set-tag=TRACKNUMBER=3"),
                QStringLiteral("--set-tag=DATE=2001"),
                QStringLiteral("--import-picture-from=") + o("cover.png"), o("a.flac") }));

        // FLAC with a 600 KiB picture before its comments.
        QImage noise(420, 420, QImage::Format_RGB32);
        auto *rng = QRandomGenerator::global();
        for (int y = 0; y < noise.height(); ++y)
            for (int x = 0; x < noise.width(); ++x)
                noise.setPixel(x, y, rng->generate());
        QVERIFY(noise.save(o("big.png")));
        QVERIFY(QFileInfo(o("big.png")).size() > 512 * 1024);
        QVERIFY(QFile::copy(o("a.flac"), o("big.flac")));
        QVERIFY(make(QStringLiteral("metaflac"),
            { QStringLiteral("--remove"), QStringLiteral("--block-type=PICTURE"),
                QStringLiteral("--dont-use-padding"), o("big.flac") }));
        QVERIFY(make(QStringLiteral("metaflac"),
            { QStringLiteral("--import-picture-from=") + o("big.png"), o("big.flac") }));

        // MP3 with ID3v2.4 and v2.3 tags by mutagen, and one by ffmpeg alone.
        QVERIFY(make(ffmpeg, sine + QStringList { o("v24.mp3") }));
        QVERIFY(QFile::copy(o("v24.mp3"), o("v23.mp3")));
        QVERIFY(QFile::copy(o("v24.mp3"), o("bare.mp3")));
        QVERIFY(make(
            QStringLiteral("ffmpeg"), sine + meta("Tïtle ffmpeg", "Rock") + QStringList { o("ffmpeg.mp3") }));
        QVERIFY(make(python, { peerScript, QStringLiteral("tag-id3"), o("v24.mp3"), QStringLiteral("4") }));
        QVERIFY(make(python, { peerScript, QStringLiteral("tag-id3"), o("v23.mp3"), QStringLiteral("3") }));
        // M4A tagged by mutagen, with a cover.
        QVERIFY(
            make(ffmpeg, sine + QStringList { QStringLiteral("-c:a"), QStringLiteral("aac"), o("a.m4a") }));
        QVERIFY(make(python, { peerScript, QStringLiteral("tag-m4a"), o("a.m4a") }));
        // WAV with RIFF INFO, AIFF with an ID3 chunk, CAF with its info chunk, all by ffmpeg.
        QVERIFY(make(ffmpeg, sine + meta("Tïtle WAV", "Funk") + QStringList { o("a.wav") }));
        QVERIFY(make(ffmpeg,
            sine + meta("Tïtle AIFF", "Disco")
                + QStringList { QStringLiteral("-write_id3v2"), QStringLiteral("1"), o("a.aiff") }));
        QVERIFY(QFile::copy(o("a.aiff"), o("b.aif")));
        QVERIFY(make(ffmpeg,
            sine + meta("Tïtle CAF", "Folk")
                + QStringList { QStringLiteral("-c:a"), QStringLiteral("pcm_s16be"), o("a.caf") }));
    }

    void readerAgreesWithPeers_data()
    {
        QTest::addColumn<QString>("name");
        for (const char *name : { "a.flac", "big.flac", "v24.mp3", "v23.mp3", "ffmpeg.mp3", "bare.mp3",
                 "a.m4a", "a.wav", "a.aiff", "b.aif", "a.caf" })
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
        if (name == u"a.flac")
            QCOMPARE(value(ours.title), QStringLiteral("Tïtle FLAC")); // the last of two TITLE comments
        if (name != u"bare.mp3")
            QVERIFY(ours.title);
        const auto duration = readDuration(original(name));
        QVERIFY(duration);
        QVERIFY2(qAbs(*duration - 0.3) < 0.1, qPrintable(QString::number(*duration)));
    }

    void embeddedPictures_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("picture"); // the file it came from, or empty: none
        QTest::newRow("flac") << "a.flac"
                              << "cover.png";
        QTest::newRow("flac, 600 KiB") << "big.flac"
                                       << "big.png";
        QTest::newRow("mp3") << "v24.mp3"
                             << "";
        QTest::newRow("mp3 without picture") << "ffmpeg.mp3"
                                             << "";
        QTest::newRow("m4a") << "a.m4a"
                             << "";
        QTest::newRow("caf") << "a.caf"
                             << "";
    }

    void embeddedPictures()
    {
        QFETCH(QString, name);
        QFETCH(QString, picture);
        const auto bytes = readEmbeddedArtwork(original(name));
        if (!picture.isEmpty()) {
            QCOMPARE(bytes, std::optional<QByteArray>(testsupport::readFile(original(picture))));
            return;
        }
        const QJsonArray expected = mutagenRead(original(name)).value(u"pictures").toArray();
        if (name == u"a.caf" || expected.isEmpty()) {
            QVERIFY(!bytes);
            return;
        }
        QVERIFY(bytes);
        QCOMPARE(QString::fromLatin1(QCryptographicHash::hash(*bytes, QCryptographicHash::Md5).toHex()),
            expected.first().toString());
    }

    void writeIsSeenByPeers_data()
    {
        QTest::addColumn<QString>("name");
        for (const char *name : { "a.flac", "big.flac", "v24.mp3", "v23.mp3", "ffmpeg.mp3", "bare.mp3",
                 "a.m4a", "a.wav", "a.aiff", "b.aif" })
            QTest::newRow(name) << QString::fromLatin1(name);
    }

    void writeIsSeenByPeers()
    {
        QFETCH(QString, name);
        const QString path = copy(name);
        const QByteArray before = testsupport::readFile(path);
        const QByteArray checksum = audioChecksum(path);
        QVERIFY2(!checksum.startsWith("ffmpeg"), checksum.constData());
        const QJsonObject peerBefore = name.endsWith(u".flac") ? QJsonObject() : mutagenRead(path);
        const TrackMetadata oldTags = readMetadata(path);

        const QString title = QStringLiteral("Nouveau tïtre 東京");
        const QString artist = QStringLiteral("Café Ünïcode");
        const QString album = QStringLiteral("Albüm = with equals");
        const SaveResult saved = saveTagsWithReason(path, TagEdit::fromValues(title, artist, album));
        QVERIFY2(saved.saved, qPrintable(saved.reason));

        QCOMPARE(audioChecksum(path), checksum);
        const TrackMetadata ours = readMetadata(path);
        QCOMPARE(value(ours.title), title);
        QCOMPARE(value(ours.artist), artist);
        QCOMPARE(value(ours.album), album);
        QCOMPARE(value(ours.genre), value(oldTags.genre));

        const QJsonObject peer = peerRead(path);
        QCOMPARE(value(peer, "title"), title);
        QCOMPARE(value(peer, "artist"), artist);
        QCOMPARE(value(peer, "album"), album);
        QCOMPARE(value(peer, "genre"), value(oldTags.genre));

        if (name.endsWith(u".flac")) {
            QCOMPARE(
                run(QStringLiteral("flac"), { QStringLiteral("-t"), QStringLiteral("-s"), path }).exitCode,
                0);
            const QByteArray listing
                = run(QStringLiteral("metaflac"), { QStringLiteral("--list"), path }).out;
            QCOMPARE(listing.count("type: 4 (VORBIS_COMMENT)"), 1);
            const qsizetype comment = listing.indexOf("type: 4 (VORBIS_COMMENT)");
            QVERIFY(listing.indexOf("is last: true", comment) > comment);
            QCOMPARE(listing.count("is last: true"), 1);
            const QJsonObject tags = metaflacRead(path);
            QCOMPARE(value(tags, "tracknumber"), QStringLiteral("3"));
            QCOMPARE(value(tags, "date"), QStringLiteral("2001"));
            QVERIFY(!value(tags, "comment").isEmpty() || !tags.contains(u"comment"));
            // Every other block byte for byte as before, in order.
            QList<FlacBlock> oldBlocks = flacBlocks(before);
            oldBlocks.removeIf([](const FlacBlock &b) { return b.type == 4; });
            QList<FlacBlock> newBlocks = flacBlocks(testsupport::readFile(path));
            QCOMPARE(newBlocks.takeLast().type, 4);
            QCOMPARE(newBlocks, oldBlocks);
        } else {
            // Pictures and the other frames or atoms are carried over.
            const QJsonObject after = mutagenRead(path);
            QCOMPARE(after.value(u"pictures").toArray(), peerBefore.value(u"pictures").toArray());
            QJsonArray frames = peerBefore.value(u"frames").toArray();
            for (const QJsonValue &f : frames)
                QVERIFY2(after.value(u"frames").toArray().contains(f), qPrintable(f.toString()));
            if (name.endsWith(u".mp3")) {
                QCOMPARE(after.value(u"version").toInt(), 3);
            }
        }
    }

    void removingAndKeeping()
    {
        const QString path = copy(QStringLiteral("v24.mp3"));
        QVERIFY(saveTags(path,
            TagEdit { FieldEdit::keep(), FieldEdit::remove(), FieldEdit::set(QStringLiteral("New album")) }));
        const QJsonObject peer = mutagenRead(path);
        QCOMPARE(value(peer, "title"), QStringLiteral("Tïtle ID3"));
        QCOMPARE(value(peer, "artist"), QStringLiteral("<absent>"));
        QCOMPARE(value(peer, "album"), QStringLiteral("New album"));

        const QString flac = copy(QStringLiteral("a.flac"));
        QVERIFY(saveTags(flac, std::nullopt, QStringLiteral(""), std::nullopt));
        const QJsonObject tags = metaflacRead(flac);
        QVERIFY(!tags.contains(u"title") && !tags.contains(u"artist") && !tags.contains(u"album"));
        QCOMPARE(value(tags, "genre"), QStringLiteral("Blues"));
    }

    void largePictureThenTags()
    {
        const QString path = copy(QStringLiteral("big.flac"));
        QVERIFY(saveTags(path, QStringLiteral("Behind the picture"), std::nullopt, std::nullopt));
        const QByteArray file = testsupport::readFile(path);
        QVERIFY(file.indexOf("TITLE=Behind the picture") > 512 * 1024);
        QCOMPARE(value(readMetadata(path).title), QStringLiteral("Behind the picture"));
        QCOMPARE(value(metaflacRead(path), "title"), QStringLiteral("Behind the picture"));
    }

    void cafIsRefused()
    {
        const QString path = copy(QStringLiteral("a.caf"));
        const QByteArray before = testsupport::readFile(path);
        const SaveResult r
            = saveTagsWithReason(path, TagEdit::fromValues(QStringLiteral("x"), std::nullopt, std::nullopt));
        QVERIFY(!r.saved);
        QVERIFY(!r.reason.isEmpty());
        QCOMPARE(testsupport::readFile(path), before);
    }

    void commandLine()
    {
        const QString cli = QStringLiteral(TARNWELL_CLI);
        const QString flac = copy(QStringLiteral("a.flac"));
        const QString caf = copy(QStringLiteral("a.caf"));
        auto r = run(cli,
            { QStringLiteral("write"), flac, QStringLiteral("--artist"), QStringLiteral("New Ärtist"),
                QStringLiteral("--album="), QStringLiteral("--title"), QStringLiteral("") });
        QCOMPARE(r.exitCode, 0);
        r = run(cli, { QStringLiteral("tags"), flac, caf });
        QCOMPARE(r.exitCode, 0);
        const QList<QByteArray> lines = r.out.trimmed().split('\n');
        QCOMPARE(lines.size(), 2);
        const QJsonObject first = QJsonDocument::fromJson(lines[0]).object();
        QCOMPARE(first.value(u"path").toString(), flac);
        QCOMPARE(first.value(u"artist").toString(), QStringLiteral("New Ärtist"));
        QVERIFY(!first.contains(u"title") && !first.contains(u"album"));
        QCOMPARE(first.value(u"genre").toString(), QStringLiteral("Blues"));
        QVERIFY(qAbs(first.value(u"duration").toDouble() - 0.3) < 0.01);
        QCOMPARE(QJsonDocument::fromJson(lines[1]).object().value(u"title").toString(),
            QStringLiteral("Tïtle CAF"));

        r = run(cli, { QStringLiteral("write"), caf, QStringLiteral("--title"), QStringLiteral("x") });
        QCOMPARE(r.exitCode, 1);
        QVERIFY(!r.err.isEmpty());
        // Several files take one edit; one refusal makes the exit code 1.
        const QString mp3 = copy(QStringLiteral("v23.mp3"));
        r = run(cli,
            { QStringLiteral("write"), flac, caf, mp3, QStringLiteral("--album"), QStringLiteral("Both") });
        QCOMPARE(r.exitCode, 1);
        QCOMPARE(r.err.count('\n'), 1);
        QCOMPARE(value(readMetadata(flac).album), QStringLiteral("Both"));
        QCOMPARE(value(mutagenRead(mp3), "album"), QStringLiteral("Both"));
        QCOMPARE(run(cli, { QStringLiteral("write"), flac, QStringLiteral("--bogus"), QStringLiteral("x") })
                     .exitCode,
            2);
        QCOMPARE(run(cli, { QStringLiteral("write"), flac, QStringLiteral("--title") }).exitCode, 2);
        QCOMPARE(run(cli, { QStringLiteral("tags") }).exitCode, 2);
        QCOMPARE(
            run(cli, { QStringLiteral("tags"), m_dir.filePath(QStringLiteral("missing.mp3")) }).exitCode, 1);
    }
};

QTEST_GUILESS_MAIN(TestTagPeers)
#include "tst_tag_peers.moc"
