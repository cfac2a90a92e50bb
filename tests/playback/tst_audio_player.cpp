// SPDX-License-Identifier: GPL-3.0-or-later
// The player on real files. Sound goes to "fakesink sync=true", which keeps real
// time, or into a file compared with ffmpeg's decoding of the same files.
#include "playback/AudioPlayer.h"
#include "playback/PlaybackController.h"
#include "playback/ReplayGain.h"
#include "support/TestSupport.h"

#include <QFileInfo>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <span>

// A kind of file the library imports: its extension and ffmpeg's codec arguments.
struct Format
{
    QString extension, codec;
};
Q_DECLARE_METATYPE(Format)

using namespace Qt::StringLiterals;

namespace {

const Format wav{"wav", "-c:a pcm_s16le"}, flac{"flac", "-c:a flac"}, mp3{"mp3", "-c:a libmp3lame -b:a 128k"},
    aac{"m4a", "-c:a aac -b:a 128k"}, alac{"m4a", "-c:a alac"}, caf{"caf", "-c:a pcm_s16be"};

constexpr int patience = 60000;

// The file decoded by ffmpeg to interleaved 16-bit stereo at 44.1 kHz.
QByteArray decode(const QString &path)
{
    return testsupport::run(QStringLiteral("ffmpeg"), QStringList{"-nostdin", "-v", "error", "-i", path, "-f", "s16le",
                                                                  "-ac", "2", "-ar", "44100", "-"}).out;
}

// Writes REPLAYGAIN_TRACK_GAIN and _PEAK the way each format keeps them, with mutagen.
bool tagTrackGain(const QString &path, const QString &gain, const QString &peak)
{
    static const char script[] = R"(
import sys, mutagen, mutagen.id3, mutagen.mp4
path, gain, peak = sys.argv[1:4]
f = mutagen.File(path)
for key, value in (('REPLAYGAIN_TRACK_GAIN', gain), ('REPLAYGAIN_TRACK_PEAK', peak)):
    if isinstance(f, mutagen.mp4.MP4):
        f['----:com.apple.iTunes:' + key.lower()] = [mutagen.mp4.MP4FreeForm(value.encode())]
    elif hasattr(f, 'add_tags') and not path.endswith('.flac'):
        f.tags is None and f.add_tags()
        f.tags.add(mutagen.id3.TXXX(encoding=3, desc=key, text=[value]))
    else:
        f[key] = value
f.save()
)";
    return testsupport::run(QStringLiteral("/usr/bin/python3"), {QStringLiteral("-c"), QString::fromLatin1(script), path,
                                                                 gain, peak}).exitCode == 0;
}

// Players made from now on write 16-bit stereo at 44.1 kHz to the file, in real
// time or as fast as they decode (cleanup() restores the sink). The sink truncates
// the file when it opens, so a sink opened twice loses what came before.
void recordTo(const QString &file, bool realTime)
{
    qputenv("TARNWELL_AUDIO_SINK", QStringLiteral("capsfilter caps=audio/x-raw,format=S16LE,layout=interleaved,"
                                                  "rate=44100,channels=2 ! filesink buffer-mode=unbuffered sync=%1 "
                                                  "location=\"%2\"").arg(realTime ? u"true" : u"false", file).toUtf8());
}

std::span<const qint16> samples(const QByteArray &pcm)
{
    return {reinterpret_cast<const qint16 *>(pcm.constData()), size_t(pcm.size()) / 2};
}
int peak(std::span<const qint16> s)
{
    return s.empty() ? 0 : std::abs(int(*std::ranges::max_element(s, {}, [](qint16 a) { return std::abs(a); })));
}

// The player and controller wired as the program wires them, over a list of
// files; the owner stops after the last song instead of starting over.
struct Chain
{
    explicit Chain(const QStringList &files)
    {
        for (const QString &f : files)
            songs.append(Track::create(QUrl::fromLocalFile(f)));
        QObject::connect(&player, &AudioPlayer::finishTickChanged, &player, [this] {
            if (controller.playingTrack() != songs.last())
                controller.playNext();
        });
        controller.setChangeListener([this](unsigned changes) {
            if (changes & PlaybackController::PlayingTrackChanged) {
                controller.setGapless(controller.playingTrack() != songs.last());
                onStart();
            }
        });
    }

    AudioPlayer player;
    QList<Track> songs;
    PlaybackController controller { player, [this] { return songs; } };
    std::function<void()> onStart = [] {};
};

} // namespace

class TestAudioPlayer : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_long; // 30 s WAV
    QByteArray m_sink;

    QString path(const QString &name) const { return m_dir.filePath(name); }

    // A stereo 44.1 kHz sine, or an empty path when ffmpeg fails.
    QString make(const Format &format, const QString &name, double seconds, int frequency = 440)
    {
        const QString file = path(name + u'.' + format.extension);
        const QStringList args = QStringLiteral("-nostdin -v error -y -f lavfi -i sine=frequency=%1:sample_rate=44100:"
                                                "duration=%2 -ac 2 ").arg(frequency).arg(seconds).split(u' ', Qt::SkipEmptyParts)
            + format.codec.split(u' ') + QStringList{file};
        return testsupport::run(QStringLiteral("ffmpeg"), args).exitCode == 0 ? file : QString();
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_sink = qgetenv("TARNWELL_AUDIO_SINK");
        m_long = make(wav, QStringLiteral("long"), 30);
        QVERIFY(!m_long.isEmpty());
    }

    void cleanup() { qputenv("TARNWELL_AUDIO_SINK", m_sink); }

    void playsEveryFormat_data()
    {
        QTest::addColumn<Format>("format");
        QTest::addColumn<bool>("lengthKnownAtLoad"); // VBR MP3 without a Xing header: estimated while it plays
        QTest::addColumn<double>("tolerance");
        QTest::newRow("wav") << wav << true << 0.05;
        QTest::newRow("flac") << flac << true << 0.05;
        QTest::newRow("mp3-vbr-without-xing") << Format{"mp3", "-c:a libmp3lame -q:a 4 -write_xing 0"} << false << 0.25;
        QTest::newRow("m4a-aac") << aac << true << 0.1;
        QTest::newRow("m4a-alac") << alac << true << 0.05;
        QTest::newRow("aiff") << Format{"aiff", "-c:a pcm_s16be"} << true << 0.05;
        QTest::newRow("caf-lpcm") << caf << true << 0.05;
        // ALAC packets hold 4096 frames; CAF's length counts whole packets.
        QTest::newRow("caf-alac") << Format{"caf", "-c:a alac"} << true << 0.1;
    }

    // Length, seeking, pause and resume, the end, and play after the end.
    void playsEveryFormat()
    {
        QFETCH(Format, format);
        QFETCH(bool, lengthKnownAtLoad);
        QFETCH(double, tolerance);
        constexpr double length = 3.0;
        const QString file = make(format, QString::fromLatin1(QTest::currentDataTag()), length);
        QVERIFY(!file.isEmpty());
        AudioPlayer player;
        QSignalSpy finished(&player, &AudioPlayer::finishTickChanged);
        QSignalSpy moved(&player, &AudioPlayer::currentTimeChanged);

        QVERIFY(player.load(QUrl::fromLocalFile(file)));
        QVERIFY(player.currentTime() == 0 && !player.isPlaying());
        QVERIFY2(!lengthKnownAtLoad || qAbs(player.duration() - length) <= tolerance, qPrintable(QString::number(player.duration())));
        player.play();
        QTRY_VERIFY2_WITH_TIMEOUT(qAbs(player.duration() - length) <= tolerance,
            qPrintable(QString::number(player.duration())), patience);
        // The position moves at once, and the sound follows.
        player.seek(std::nan(""));
        QVERIFY(player.currentTime() < 1.0);
        player.seek(1.0);
        QCOMPARE(player.currentTime(), 1.0);
        QVERIFY(moved.wait(patience));
        QVERIFY2(player.currentTime() >= 0.9, qPrintable(QString::number(player.currentTime())));

        player.pause();
        QVERIFY(!player.isPlaying());
        const double pausedAt = player.livePosition();
        player.play();
        QVERIFY(player.livePosition() >= pausedAt - 0.05); // resumed where it was
        player.seek(length - 0.5);
        QCOMPARE(player.currentTime(), length - 0.5);
        QVERIFY(moved.wait(patience));
        QVERIFY2(player.currentTime() >= length - 0.6 || !finished.isEmpty(),
            qPrintable(QString::number(player.currentTime())));

        QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, patience);
        QVERIFY(player.finishTick() == 1 && !player.isPlaying() && player.currentTime() == 0);
        // Played again it starts over, and the end was counted once.
        player.play();
        QTRY_VERIFY_WITH_TIMEOUT(player.currentTime() >= 0.2, patience);
        QVERIFY(player.currentTime() < length - 0.5);
        QCOMPARE(finished.size(), 1);
    }

    // A file that can't be opened (text named .mp3, a missing file) leaves what
    // was published as it was; either way the old sound stops at once, and what
    // is loaded plays on from there.
    void loadStopsTheOldSound()
    {
        testsupport::writeFile(m_dir.path(), QStringLiteral("notes.mp3"), "just some text\n");
        QVERIFY(!make(flac, QStringLiteral("other"), 2.0).isEmpty());
        for (const QString &file : {u"notes.mp3"_s, u"missing.wav"_s, u"other.flac"_s}) {
            const bool audio = file.endsWith(u"flac");
            AudioPlayer player;
            QVERIFY(player.load(QUrl::fromLocalFile(m_long)));
            player.play();
            QTRY_VERIFY_WITH_TIMEOUT(player.currentTime() >= 0.3, patience);
            const double position = player.currentTime();
            QSignalSpy length(&player, &AudioPlayer::durationChanged);
            QSignalSpy moved(&player, &AudioPlayer::currentTimeChanged);

            QCOMPARE(player.load(QUrl::fromLocalFile(path(file))), audio);
            QCOMPARE(player.isPlaying(), true); // until the caller plays or pauses
            QCOMPARE(player.duration(), audio ? 2.0 : 30.0);
            QCOMPARE(player.currentTime(), audio ? 0.0 : position);
            const double stoppedAt = player.livePosition();
            const qsizetype changes = length.size() + moved.size();
            AudioPlayer clock; // half a second of audio time passes
            QVERIFY(clock.load(QUrl::fromLocalFile(m_long)));
            clock.play();
            QTRY_VERIFY_WITH_TIMEOUT(clock.currentTime() >= 0.5, patience);
            QVERIFY(player.livePosition() == stoppedAt && length.size() + moved.size() == changes);
            player.play();
            QTRY_VERIFY_WITH_TIMEOUT(player.currentTime() > stoppedAt + 0.1, patience);
        }
    }

    // Three formats end to end: the recording holds exactly their samples, none
    // missing or added at the joins, through a sink opened once; each song
    // becomes the playing one when its first sample has reached the sink.
    void gaplessJoinsKeepEverySample()
    {
        const QStringList files { make(wav, QStringLiteral("one"), 2.0, 300),
            make(flac, QStringLiteral("two"), 1.5, 500),
            make(alac, QStringLiteral("three"), 1.0, 700) };
        QByteArray expected;
        QList<qsizetype> boundaries;
        for (const QString &f : files) {
            boundaries.append(expected.size());
            expected += decode(f);
        }
        const QString recording = path(QStringLiteral("joins.raw"));
        recordTo(recording, true);
        Chain chain(files);
        QList<qint64> recordedAtStart;
        chain.onStart = [&] { recordedAtStart.append(QFileInfo(recording).size()); };

        chain.controller.playTrack(chain.songs.first());
        QTRY_COMPARE_WITH_TIMEOUT(chain.player.finishTick(), 3, patience);

        const QByteArray recorded = testsupport::readFile(recording);
        const auto differs = std::mismatch(recorded.begin(), recorded.end(), expected.begin(), expected.end()).first;
        QVERIFY2(recorded == expected, qPrintable(QStringLiteral("%1 of %2 frames, first difference at %3; joins at %4, %5")
                     .arg(recorded.size() / 4).arg(expected.size() / 4).arg((differs - recorded.begin()) / 4)
                     .arg(boundaries[1] / 4).arg(boundaries[2] / 4)));
        QCOMPARE(recordedAtStart.size(), 3);
        for (int i = 1; i < 3; ++i)
            QVERIFY2(recordedAtStart[i] >= boundaries[i], qPrintable(QString::number(recordedAtStart[i])));
        QCOMPARE(chain.controller.history(), (QList<Track> { chain.songs[0], chain.songs[1] }));
    }

    void autoAdvanceWithoutAJoin_data()
    {
        QTest::addColumn<Format>("first");
        QTest::addColumn<Format>("second");
        QTest::addColumn<bool>("secondVanishes");
        // Deleted after it was queued: the next one can't be loaded, and the chain stops there.
        QTest::newRow("onto a file that vanished") << wav << flac << true;
        // CAF can't be joined: the song ends and the next one is loaded.
        QTest::newRow("onto a caf file") << wav << caf << false;
        QTest::newRow("from a caf file") << caf << wav << false;
    }

    void autoAdvanceWithoutAJoin()
    {
        QFETCH(Format, first);
        QFETCH(Format, second);
        QFETCH(bool, secondVanishes);
        const QStringList files { make(first, QStringLiteral("first"), 2.0),
            make(second, QStringLiteral("second"), 1.0) };
        Chain chain(files);
        chain.controller.playTrack(chain.songs.first());
        QVERIFY(chain.controller.preparedNext() == chain.songs.last());
        if (secondVanishes)
            QVERIFY(QFile::remove(files.last()));
        QTRY_COMPARE_WITH_TIMEOUT(chain.player.finishTick(), secondVanishes ? 1 : 2, patience);
        QCOMPARE(chain.controller.playingTrack(), secondVanishes ? chain.songs.first() : chain.songs.last());
        QCOMPARE(chain.controller.history(), QList<Track> { chain.songs.first() });
        QVERIFY(!chain.player.isPlaying());
    }

    void levellingFollowsEachSong_data()
    {
        QTest::addColumn<Format>("format");
        QTest::addColumn<bool>("taggedFirst");
        QTest::addColumn<double>("firstLevel"); // of the untagged file's own level
        QTest::addColumn<double>("secondToFirst");
        // Each format keeps the gain its own way; a joined song has its own level from its first sample.
        QTest::newRow("flac, tagged second") << flac << false << 1.0 << 0.5;
        QTest::newRow("mp3, tagged second") << mp3 << false << 1.0 << 0.5;
        QTest::newRow("m4a, tagged second") << aac << false << 1.0 << 0.5;
        QTest::newRow("wav, tagged second") << wav << false << 1.0 << 0.5;
        QTest::newRow("an untagged second song drops the gain") << flac << true << 0.5 << 2.0;
    }

    void levellingFollowsEachSong()
    {
        QFETCH(Format, format);
        QFETCH(bool, taggedFirst);
        QFETCH(double, firstLevel);
        QFETCH(double, secondToFirst);
        const QString plain = make(format, QStringLiteral("plain"), 1.5);
        const QString tagged = path(QStringLiteral("tagged.") + format.extension);
        QFile::remove(tagged);
        QVERIFY(QFile::copy(plain, tagged));
        QVERIFY(tagTrackGain(tagged, QStringLiteral("-6.02 dB"), QStringLiteral("0.5")));
        const QString recording = path(QStringLiteral("levels.raw"));
        recordTo(recording, false);
        Chain chain(taggedFirst ? QStringList { tagged, plain } : QStringList { plain, tagged });
        chain.controller.playTrack(chain.songs.first());
        QTRY_COMPARE_WITH_TIMEOUT(chain.player.finishTick(), 2, patience);

        const QByteArray pcm = testsupport::readFile(recording); // the same samples twice, levelled
        const std::span<const qint16> all = samples(pcm);
        QVERIFY(!all.empty() && all.size() % 4 == 0);
        const std::span<const qint16> first = all.first(all.size() / 2), second = all.last(all.size() / 2);
        const int ownPeak = peak(samples(decode(plain)));
        QVERIFY2(qAbs(peak(first) - firstLevel * ownPeak) <= 0.03 * ownPeak,
            qPrintable(QStringLiteral("%1 of %2").arg(peak(first)).arg(ownPeak)));
        for (size_t i = 0; i < second.size(); ++i) {
            // A float decoder's output is dithered on its way to 16 bits.
            if (qAbs(second[i] - secondToFirst * first[i]) > 3 + secondToFirst)
                QFAIL(qPrintable(QStringLiteral("sample %1 of the second song: %2, the first's: %3").arg(i).arg(second[i]).arg(first[i])));
        }
    }

    void gainTags()
    {
        const double minus6 = std::pow(10.0, -6.02 / 20);
        const struct { const char *gain, *peak; double factor; } cases[] {
            {"-6.02 dB", "0.5", minus6}, {" -6.02 ", "", minus6}, // no unit, spaces around
            {"+6 dB", "0.8", 1 / 0.8}, // a boost kept below full scale by the peak
            {"+6 dB", "", 1.0}, {"+6 dB", "0", 1.0}, // not taken with the peak unknown or zero
            {"", "", 1.0}, {"loud", "0.5", 1.0}, {"-99 dB", "", 1.0}, // none, not a number, beyond any real gain
        };
        for (const auto &c : cases) {
            const double got = replaygain::levellingFactor(
                {replaygain::parseGain(QString::fromUtf8(c.gain)), replaygain::parsePeak(QString::fromUtf8(c.peak))});
            QVERIFY2(qAbs(got - c.factor) < 1e-9, qPrintable(QStringLiteral("%1 %2: %3").arg(c.gain, c.peak).arg(got)));
        }
    }

    // The preference is read by each new player; the command line's choice is not kept.
    void levellingPreference()
    {
        QVERIFY(AudioPlayer().volumeLevelling());
        AudioPlayer player;
        QSignalSpy changed(&player, &AudioPlayer::volumeLevellingChanged);
        player.setVolumeLevelling(false);
        QCOMPARE(changed.size(), 1);
        QVERIFY(!AudioPlayer().volumeLevelling());
        player.overrideVolumeLevelling(true);
        QVERIFY(!AudioPlayer().volumeLevelling());
    }
};

QTEST_GUILESS_MAIN(TestAudioPlayer)
#include "tst_audio_player.moc"
