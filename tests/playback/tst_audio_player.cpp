// SPDX-License-Identifier: GPL-3.0-or-later
// The player on real files through "fakesink sync=true", which keeps real time
// without a sound card.
#include "AudioFixtures.h"
#include "playback/AudioPlayer.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using fixtures::Format;

namespace {

constexpr double clipSeconds = 1.2;

QUrl fileUrl(const QString &path)
{
    return QUrl::fromLocalFile(path);
}

} // namespace

class TestAudioPlayer : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QMap<Format, QString> m_clips;
    QString m_long; // 4 s WAV
    QString m_other; // 2 s FLAC

    QString path(const QString &name) const { return m_dir.filePath(name); }

    // Loads and plays until the position has moved, so a pipeline is running.
    void startPlaying(AudioPlayer &player, const QString &file)
    {
        QVERIFY(player.load(fileUrl(file)));
        player.play();
        QTRY_VERIFY_WITH_TIMEOUT(player.currentTime() > 0.3, 3000);
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        QVERIFY2(testsupport::haveTool(QStringLiteral("ffmpeg")), "ffmpeg is needed");
        for (Format f : { Format::Wav, Format::Flac, Format::Mp3VbrNoXing, Format::M4aAac, Format::M4aAlac,
                 Format::Aiff, Format::CafLpcm, Format::CafAlac, Format::CafAac }) {
            const QString file = path(fixtures::name(f).replace(u' ', u'-') + u'.' + fixtures::extension(f));
            QVERIFY2(fixtures::makeAudio(f, file, clipSeconds), qPrintable(fixtures::name(f)));
            m_clips.insert(f, file);
        }
        m_long = path(QStringLiteral("long.wav"));
        QVERIFY(fixtures::makeAudio(Format::Wav, m_long, 4.0));
        m_other = path(QStringLiteral("other.flac"));
        QVERIFY(fixtures::makeAudio(Format::Flac, m_other, 2.0));
    }

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
        QTest::newRow("caf alac") << Format::CafAlac << true << 0.05;
        QTest::newRow("caf aac") << Format::CafAac << true << 0.1;
    }

    // Length, position while playing and paused, and the end of the file.
    void playsEveryFormat()
    {
        QFETCH(Format, format);
        QFETCH(bool, lengthKnownAtLoad);
        QFETCH(double, tolerance);
        AudioPlayer player;
        QSignalSpy finished(&player, &AudioPlayer::finishTickChanged);

        QVERIFY(player.load(fileUrl(m_clips.value(format))));
        QCOMPARE(player.currentTime(), 0.0);
        QCOMPARE(player.isPlaying(), false);
        if (lengthKnownAtLoad)
            QVERIFY2(qAbs(player.duration() - clipSeconds) <= tolerance,
                qPrintable(QString::number(player.duration())));

        player.play();
        QVERIFY(player.isPlaying());
        QTRY_VERIFY_WITH_TIMEOUT(player.currentTime() > 0.2, 2000);
        QTRY_VERIFY2_WITH_TIMEOUT(qAbs(player.duration() - clipSeconds) <= tolerance,
            qPrintable(QString::number(player.duration())), 2000);

        player.pause();
        const double pausedAt = player.currentTime();
        QSignalSpy moved(&player, &AudioPlayer::currentTimeChanged);
        QTest::qWait(600);
        QCOMPARE(moved.size(), 0);
        QCOMPARE(player.currentTime(), pausedAt);
        QVERIFY(player.livePosition() < clipSeconds - 0.2); // the sound really stopped

        player.play();
        QVERIFY(finished.wait(int(clipSeconds * 1000) + 3000));
        QCOMPARE(player.finishTick(), 1);
        QCOMPARE(player.isPlaying(), false);
        QCOMPARE(player.currentTime(), 0.0);
        // Nothing ticks on after the end, and the end is counted once.
        QSignalSpy after(&player, &AudioPlayer::currentTimeChanged);
        QTest::qWait(500);
        QCOMPARE(after.size(), 0);
        QCOMPARE(finished.size(), 1);
    }

    void failedLoadKeepsWhatWasPublished_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("content"); // null: the file does not exist
        QTest::newRow("text named .mp3") << QStringLiteral("notes.mp3") << QByteArray("just some text\n", 15);
        QTest::newRow("text named .caf") << QStringLiteral("notes.caf") << QByteArray("just some text\n", 15);
        QTest::newRow("empty .flac") << QStringLiteral("empty.flac") << QByteArray("");
        QTest::newRow("missing file") << QStringLiteral("missing.wav") << QByteArray();
    }

    void failedLoadKeepsWhatWasPublished()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, content);
        const QString bad = path(name);
        QFile::remove(bad);
        if (!content.isNull())
            testsupport::writeFile(m_dir.path(), name, content);

        AudioPlayer player;
        startPlaying(player, m_long);
        const double duration = player.duration();
        const double position = player.currentTime();
        QSignalSpy playing(&player, &AudioPlayer::isPlayingChanged);
        QSignalSpy moved(&player, &AudioPlayer::currentTimeChanged);
        QSignalSpy length(&player, &AudioPlayer::durationChanged);

        QVERIFY(!player.load(fileUrl(bad)));
        QCOMPARE(player.duration(), duration);
        QCOMPARE(player.currentTime(), position);
        QCOMPARE(player.isPlaying(), true);

        // The old sound has stopped: its position stands still, nothing ticks.
        const double stoppedAt = player.livePosition();
        QTest::qWait(400);
        QCOMPARE(player.livePosition(), stoppedAt);
        QCOMPARE(playing.size() + moved.size() + length.size(), 0);

        // The old file is still the loaded one and resumes where it stopped.
        player.play();
        QTRY_VERIFY_WITH_TIMEOUT(player.currentTime() > stoppedAt + 0.1, 2000);
    }

    void freshPlayerPlaysNothing()
    {
        AudioPlayer player;
        QVERIFY(!player.hasFile());
        player.play();
        QVERIFY(player.isPlaying());
        QTest::qWait(600);
        QCOMPARE(player.currentTime(), 0.0);
        player.pause();
        QVERIFY(!player.isPlaying());
    }

    void loadWhilePlayingStopsTheOldSound()
    {
        AudioPlayer player;
        startPlaying(player, m_long);
        QVERIFY(player.load(fileUrl(m_other)));
        QVERIFY(qAbs(player.duration() - 2.0) < 0.05);
        QCOMPARE(player.currentTime(), 0.0);
        // Still published as playing until the caller plays or pauses, but the
        // position updates stopped with the old file.
        QVERIFY(player.isPlaying());
        QSignalSpy moved(&player, &AudioPlayer::currentTimeChanged);
        QTest::qWait(600);
        QCOMPARE(moved.size(), 0);
        player.play();
        QTRY_VERIFY_WITH_TIMEOUT(player.currentTime() > 0.2, 2000);
    }

    void playTwiceKeepsOneTimer()
    {
        AudioPlayer player;
        QVERIFY(player.load(fileUrl(m_long)));
        player.play();
        player.play();
        QSignalSpy moved(&player, &AudioPlayer::currentTimeChanged);
        QTest::qWait(1100);
        // One timer updates four times a second; two would update about eight times.
        QVERIFY2(moved.size() >= 2 && moved.size() <= 5, qPrintable(QString::number(moved.size())));
    }

    void seekMovesThePositionAtOnce_data()
    {
        QTest::addColumn<Format>("format");
        QTest::newRow("wav") << Format::Wav;
        QTest::newRow("flac") << Format::Flac;
        QTest::newRow("mp3 vbr without xing") << Format::Mp3VbrNoXing;
        QTest::newRow("m4a aac") << Format::M4aAac;
        QTest::newRow("aiff") << Format::Aiff;
        QTest::newRow("caf alac") << Format::CafAlac;
        QTest::newRow("caf aac") << Format::CafAac;
    }

    // The position moves before the next update, the audio follows it (the end
    // comes as soon as the rest of the file has played), and play after the
    // end starts over.
    void seekMovesThePositionAtOnce()
    {
        QFETCH(Format, format);
        const QString file = path(QStringLiteral("seek.") + fixtures::extension(format));
        QVERIFY(fixtures::makeAudio(format, file, 4.0));
        AudioPlayer player;
        QSignalSpy finished(&player, &AudioPlayer::finishTickChanged);
        QVERIFY(player.load(fileUrl(file)));

        player.seek(2.0);
        QCOMPARE(player.currentTime(), 2.0);
        player.play();
        QSignalSpy moved(&player, &AudioPlayer::currentTimeChanged);
        QVERIFY(moved.wait(2000));
        QVERIFY2(player.currentTime() >= 1.9, qPrintable(QString::number(player.currentTime())));

        player.seek(3.5);
        QCOMPARE(player.currentTime(), 3.5);
        QElapsedTimer clock;
        clock.start();
        QVERIFY(finished.wait(3000));
        QVERIFY2(clock.elapsed() < 1500, qPrintable(QString::number(clock.elapsed())));

        player.play();
        QTRY_VERIFY_WITH_TIMEOUT(player.currentTime() > 0.2, 2000);
        QVERIFY(player.currentTime() < 2.0);
    }
};

QTEST_GUILESS_MAIN(TestAudioPlayer)
#include "tst_audio_player.moc"
