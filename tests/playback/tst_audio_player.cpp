// SPDX-License-Identifier: GPL-3.0-or-later
// The player on real files. Sound goes to "fakesink sync=true", which keeps
// real time without a sound card, or, where the samples matter, into a file
// that ffmpeg's decoding of the same files is compared with.
#include "AudioFixtures.h"
#include "playback/AudioPlayer.h"
#include "playback/PlaybackController.h"
#include "playback/ReplayGain.h"
#include "support/TestSupport.h"

#include <QFileInfo>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <span>

using fixtures::Format;

namespace {

// Every wait is for a condition; this only ends a test that hangs.
constexpr int patience = 60000;

// Players made from now on write 16-bit stereo at 44.1 kHz to the file, in
// real time or as fast as they decode (the test's cleanup() restores the sink).
// The file sink truncates when it opens, so a sink opened twice loses what
// came before.
void recordTo(const QString &file, bool realTime)
{
    qputenv("TARNWELL_AUDIO_SINK",
        QStringLiteral("capsfilter caps=audio/x-raw,format=S16LE,layout=interleaved,rate=44100,channels=2"
                       " ! filesink buffer-mode=unbuffered sync=%1 location=\"%2\"")
            .arg(realTime ? u"true" : u"false", file)
            .toUtf8());
}

std::span<const qint16> samples(const QByteArray &pcm)
{
    return { reinterpret_cast<const qint16 *>(pcm.constData()), size_t(pcm.size()) / 2 };
}

int peak(std::span<const qint16> s)
{
    int peak = 0;
    for (const qint16 v : s)
        peak = std::max(peak, std::abs(int(v)));
    return peak;
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
            if (!(changes & PlaybackController::PlayingTrackChanged))
                return;
            controller.setGapless(controller.playingTrack() != songs.last());
            if (onStart)
                onStart();
        });
    }

    AudioPlayer player;
    QList<Track> songs;
    PlaybackController controller { player, [this] { return songs; } };
    std::function<void()> onStart;
};

} // namespace

class TestAudioPlayer : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_long; // 30 s WAV
    QByteArray m_sink;

    QString path(const QString &name) const { return m_dir.filePath(name); }

    QString make(Format format, const QString &name, double seconds, int frequency = 440)
    {
        const QString file = path(name + u'.' + fixtures::extension(format));
        if (!fixtures::makeAudio(format, file, seconds, frequency))
            return {};
        return file;
    }

    // Waits until the player has played that far: time passing measured by
    // audio, not by a sleep.
    static void playUntil(AudioPlayer &player, double seconds)
    {
        QTRY_VERIFY_WITH_TIMEOUT(player.currentTime() >= seconds, patience);
    }

    void letAudioTimePass(double seconds)
    {
        AudioPlayer clock;
        QVERIFY(clock.load(QUrl::fromLocalFile(m_long)));
        clock.play();
        playUntil(clock, seconds);
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_sink = qgetenv("TARNWELL_AUDIO_SINK");
        m_long = make(Format::Wav, QStringLiteral("long"), 30);
        QVERIFY(!m_long.isEmpty());
    }

    void cleanup() { qputenv("TARNWELL_AUDIO_SINK", m_sink); }

    void playsEveryFormat_data()
    {
        QTest::addColumn<Format>("format");
        // VBR MP3 without a Xing header has no index: its length is estimated
        // while it plays.
        QTest::addColumn<bool>("lengthKnownAtLoad");
        QTest::addColumn<double>("tolerance");
        QTest::newRow("wav") << Format::Wav << true << 0.05;
        QTest::newRow("flac") << Format::Flac << true << 0.05;
        QTest::newRow("mp3 vbr without xing") << Format::Mp3VbrNoXing << false << 0.25;
        QTest::newRow("m4a aac") << Format::M4aAac << true << 0.1;
        QTest::newRow("m4a alac") << Format::M4aAlac << true << 0.05;
        QTest::newRow("aiff") << Format::Aiff << true << 0.05;
        QTest::newRow("caf lpcm") << Format::CafLpcm << true << 0.05;
        // ALAC packets hold 4096 frames; CAF's length counts whole packets.
        QTest::newRow("caf alac") << Format::CafAlac << true << 0.1;
    }

    // Length, seeking, pause and resume, the end, and play after the end.
    void playsEveryFormat()
    {
        QFETCH(Format, format);
        QFETCH(bool, lengthKnownAtLoad);
        QFETCH(double, tolerance);
        constexpr double length = 3.0;
        const QString file = make(format, fixtures::name(format).replace(u' ', u'-'), length);
        QVERIFY(!file.isEmpty());
        AudioPlayer player;
        QSignalSpy finished(&player, &AudioPlayer::finishTickChanged);
        QSignalSpy moved(&player, &AudioPlayer::currentTimeChanged);

        QVERIFY(player.load(QUrl::fromLocalFile(file)));
        QCOMPARE(player.currentTime(), 0.0);
        QCOMPARE(player.isPlaying(), false);
        if (lengthKnownAtLoad)
            QVERIFY2(qAbs(player.duration() - length) <= tolerance,
                qPrintable(QString::number(player.duration())));
        player.play();
        QVERIFY(player.isPlaying());
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
        QCOMPARE(player.finishTick(), 1);
        QCOMPARE(player.isPlaying(), false);
        QCOMPARE(player.currentTime(), 0.0);
        // Played again it starts over, and the end was counted once.
        player.play();
        playUntil(player, 0.2);
        QVERIFY(player.currentTime() < length - 0.5);
        QCOMPARE(finished.size(), 1);
    }

    void loadStopsTheOldSound_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("content"); // null: the file does not exist; "audio": a real file
        QTest::newRow("text named .mp3") << QStringLiteral("notes.mp3") << QByteArray("just some text\n");
        QTest::newRow("empty .flac") << QStringLiteral("empty.flac") << QByteArray("");
        QTest::newRow("missing file") << QStringLiteral("missing.wav") << QByteArray();
        QTest::newRow("another song") << QStringLiteral("other.flac") << QByteArray("audio");
    }

    // A file that can't be opened leaves what was published as it was; either
    // way the old sound stops at once.
    void loadStopsTheOldSound()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, content);
        const QString file = path(name);
        QFile::remove(file);
        const bool audio = content == "audio";
        if (audio)
            QVERIFY(fixtures::makeAudio(Format::Flac, file, 2.0));
        else if (!content.isNull())
            testsupport::writeFile(m_dir.path(), name, content);

        AudioPlayer player;
        QVERIFY(player.load(QUrl::fromLocalFile(m_long)));
        player.play();
        playUntil(player, 0.3);
        const double position = player.currentTime();
        QSignalSpy length(&player, &AudioPlayer::durationChanged);
        QSignalSpy moved(&player, &AudioPlayer::currentTimeChanged);

        QCOMPARE(player.load(QUrl::fromLocalFile(file)), audio);
        QCOMPARE(player.isPlaying(), true); // until the caller plays or pauses
        QCOMPARE(player.duration(), audio ? 2.0 : 30.0);
        QCOMPARE(player.currentTime(), audio ? 0.0 : position);
        const double stoppedAt = player.livePosition();
        const qsizetype changes = length.size() + moved.size();
        letAudioTimePass(0.5);
        QCOMPARE(player.livePosition(), stoppedAt);
        QCOMPARE(length.size() + moved.size(), changes);

        // What is loaded now plays on from where it stood.
        player.play();
        QTRY_VERIFY_WITH_TIMEOUT(player.currentTime() > stoppedAt + 0.1, patience);
    }

    // Three files of three formats end to end: the recording holds exactly
    // their samples, in order, none missing or added at the joins, through a
    // sink opened once; each song becomes the playing one when its first
    // sample has reached the sink, not before.
    void gaplessJoinsKeepEverySample()
    {
        const QStringList files { make(Format::Wav, QStringLiteral("one"), 2.0, 300),
            make(Format::Flac, QStringLiteral("two"), 1.5, 500),
            make(Format::M4aAlac, QStringLiteral("three"), 1.0, 700) };
        QByteArray expected;
        QList<qsizetype> boundaries;
        for (const QString &f : files) {
            boundaries.append(expected.size());
            expected += fixtures::decode(f);
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
        // Deleted after it was queued: the song ends as usual, the next one
        // can't be loaded, and the chain stops there.
        QTest::newRow("onto a file that vanished") << Format::Wav << Format::Flac << true;
        // CAF can't be joined: the song ends and the next one is loaded.
        QTest::newRow("onto a caf file") << Format::Wav << Format::CafLpcm << false;
        QTest::newRow("from a caf file") << Format::CafLpcm << Format::Wav << false;
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
        QTest::addColumn<bool>("levelling");
        QTest::addColumn<double>("firstLevel"); // of the untagged file's own level
        QTest::addColumn<double>("secondToFirst");
        // Each format keeps the gain its own way; a second song joined
        // without a gap gets its own level from its first sample on.
        QTest::newRow("flac, tagged second") << Format::Flac << false << true << 1.0 << 0.5;
        QTest::newRow("mp3, tagged second") << Format::Mp3 << false << true << 1.0 << 0.5;
        QTest::newRow("m4a, tagged second") << Format::M4aAac << false << true << 1.0 << 0.5;
        QTest::newRow("wav, tagged second") << Format::Wav << false << true << 1.0 << 0.5;
        QTest::newRow("an untagged second song drops the gain") << Format::Flac << true << true << 0.5 << 2.0;
        QTest::newRow("levelling off") << Format::Flac << true << false << 1.0 << 1.0;
    }

    void levellingFollowsEachSong()
    {
        QFETCH(Format, format);
        QFETCH(bool, taggedFirst);
        QFETCH(bool, levelling);
        QFETCH(double, firstLevel);
        QFETCH(double, secondToFirst);
        const QString plain = make(format, QStringLiteral("plain"), 1.5);
        const QString tagged = path(QStringLiteral("tagged.") + fixtures::extension(format));
        QFile::remove(tagged);
        QVERIFY(QFile::copy(plain, tagged));
        QVERIFY(fixtures::tagTrackGain(tagged, QStringLiteral("-6.02 dB"), QStringLiteral("0.5")));
        const QString recording = path(QStringLiteral("levels.raw"));
        recordTo(recording, false);
        Chain chain(taggedFirst ? QStringList { tagged, plain } : QStringList { plain, tagged });
        chain.player.overrideVolumeLevelling(levelling);
        chain.controller.playTrack(chain.songs.first());
        QTRY_COMPARE_WITH_TIMEOUT(chain.player.finishTick(), 2, patience);

        // The two songs hold the same decoded samples, so they split evenly.
        const QByteArray pcm = testsupport::readFile(recording);
        const std::span<const qint16> all = samples(pcm);
        QVERIFY(!all.empty() && all.size() % 4 == 0);
        const std::span<const qint16> first = all.first(all.size() / 2), second = all.last(all.size() / 2);
        const int ownPeak = peak(samples(fixtures::decode(plain)));
        QVERIFY2(qAbs(peak(first) - firstLevel * ownPeak) <= 0.03 * ownPeak,
            qPrintable(QStringLiteral("%1 of %2").arg(peak(first)).arg(ownPeak)));
        for (size_t i = 0; i < second.size(); ++i) {
            // A float decoder's output is dithered on its way to 16 bits.
            if (qAbs(second[i] - secondToFirst * first[i]) > 3 + secondToFirst)
                QFAIL(qPrintable(QStringLiteral("sample %1 of the second song: %2, the first's: %3").arg(i).arg(second[i]).arg(first[i])));
        }
    }

    void gainTags_data()
    {
        QTest::addColumn<QString>("gain");
        QTest::addColumn<QString>("peak");
        QTest::addColumn<double>("factor");
        const auto row = [](const char *what, const char *gain, const char *peak, double factor) {
            QTest::newRow(what) << QString::fromUtf8(gain) << QString::fromUtf8(peak) << factor;
        };
        const double minus6 = std::pow(10.0, -6.02 / 20);
        row("the usual form", "-6.02 dB", "0.5", minus6);
        row("no unit, spaces around", " -6.02 ", "", minus6);
        row("unit in capitals", "-6.02 DB", "", minus6);
        row("a plus sign, kept below full scale by the peak", "+6 dB", "0.8", 1 / 0.8);
        row("a boost with the peak unknown is not taken", "+6 dB", "", 1.0);
        row("a small boost under the peak", "+3 dB", "0.5", std::pow(10.0, 3 / 20.0));
        row("no tag: the pre-amp", "", "", 1.0);
        row("not a number", "loud", "0.5", 1.0);
        row("a comma", "-6,02 dB", "", 1.0);
        row("beyond any real gain", "-99 dB", "", 1.0);
        row("a peak of zero is no peak", "+6 dB", "0", 1.0);
    }

    void gainTags()
    {
        QFETCH(QString, gain);
        QFETCH(QString, peak);
        QFETCH(double, factor);
        const replaygain::TrackGain tags { replaygain::parseGain(gain), replaygain::parsePeak(peak) };
        QVERIFY2(qAbs(replaygain::levellingFactor(tags) - factor) < 1e-9,
            qPrintable(QString::number(replaygain::levellingFactor(tags))));
    }

    // The preference is read by each new player; the command line's choice is not kept.
    void levellingPreference()
    {
        QCOMPARE(AudioPlayer().volumeLevelling(), true);
        {
            AudioPlayer player;
            QSignalSpy changed(&player, &AudioPlayer::volumeLevellingChanged);
            player.setVolumeLevelling(false);
            QCOMPARE(changed.size(), 1);
        }
        QCOMPARE(QSettings().value(AudioPlayer::volumeLevellingKey).toBool(), false);
        AudioPlayer player;
        QCOMPARE(player.volumeLevelling(), false);
        player.overrideVolumeLevelling(true);
        QCOMPARE(AudioPlayer().volumeLevelling(), false);
    }
};

QTEST_GUILESS_MAIN(TestAudioPlayer)
#include "tst_audio_player.moc"
