// SPDX-License-Identifier: GPL-3.0-or-later
// Now-playing and media keys as a desktop client sees them: the real player and
// controller behind the MPRIS service, driven by playerctl on a private session
// bus (the test runs under dbus-run-session).
#include "AudioFixtures.h"
#include "playback/AudioPlayer.h"
#include "playback/MprisService.h"
#include "playback/PlaybackController.h"
#include "support/TestSupport.h"

#include <QFileInfo>
#include <QImageReader>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using fixtures::Format;

namespace {

// The whole playback side as the main state wires it.
struct Stack
{
    explicit Stack(const QList<Track> &queue)
        : queue(queue)
        , controller(player, [this] { return this->queue; })
        , mpris(player, controller)
    {
        controller.setChangeListener([this](unsigned changes) {
            if (changes & (PlaybackController::PlayingTrackChanged | PlaybackController::ShuffleChanged))
                mpris.updateNowPlaying();
        });
        QObject::connect(
            &player, &AudioPlayer::finishTickChanged, &player, [this] { controller.playNext(); });
    }

    QList<Track> queue;
    AudioPlayer player;
    PlaybackController controller;
    MprisService mpris;
};

} // namespace

class TestMpris : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QList<Track> m_songs;
    std::unique_ptr<Stack> m_stack;

    // Runs playerctl without blocking the event loop, which must keep
    // answering playerctl's own calls. Returns stdout, trimmed; null on failure.
    QString playerctl(const char *args)
    {
        QProcess p;
        QSignalSpy done(&p, &QProcess::finished);
        p.start(QStringLiteral("playerctl"),
            QStringList { QStringLiteral("--player=tarnwell") } + QString::fromLatin1(args).split(u' '));
        if (!done.wait(60000)) {
            p.kill();
            p.waitForFinished();
            return {};
        }
        if (p.exitCode() != 0)
            return {};
        const QString out = QString::fromUtf8(p.readAllStandardOutput()).trimmed();
        return out.isNull() ? QStringLiteral("") : out;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(!qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS"), "run under dbus-run-session");
        for (const char *name : { "First Song", "Second" }) {
            const QString file = m_dir.filePath(QString::fromLatin1(name) + QStringLiteral(".wav"));
            QVERIFY(fixtures::makeAudio(Format::Wav, file, 20.0));
            m_songs.append(Track::create(QUrl::fromLocalFile(file)));
        }
    }

    void init()
    {
        m_stack = std::make_unique<Stack>(m_songs);
        QVERIFY(m_stack->mpris.registerOnBus());
    }

    void cleanup() { m_stack.reset(); }

    // A following client hears of each change without asking.
    void clientsAreToldOfChanges()
    {
        Stack &s = *m_stack;
        s.controller.playTrack(m_songs[0]);
        QProcess follower;
        follower.start(QStringLiteral("playerctl"),
            { QStringLiteral("--player=tarnwell"), QStringLiteral("--follow"), QStringLiteral("metadata"),
                QStringLiteral("--format"), QStringLiteral("{{status}} {{title}}") });
        QStringList lines;
        connect(&follower, &QProcess::readyReadStandardOutput, this, [&] {
            while (follower.canReadLine())
                lines.append(QString::fromUtf8(follower.readLine()).trimmed());
        });
        QTRY_VERIFY_WITH_TIMEOUT(lines.contains(QStringLiteral("Playing First Song")), 60000);
        s.player.pause();
        QTRY_VERIFY_WITH_TIMEOUT(lines.contains(QStringLiteral("Paused First Song")), 60000);
        s.controller.playNext();
        QTRY_VERIFY_WITH_TIMEOUT(lines.contains(QStringLiteral("Playing Second")), 60000);
        follower.kill();
        follower.waitForFinished();
    }

    void metadataAndPosition()
    {
        Stack &s = *m_stack;
        QCOMPARE(playerctl("metadata title"), QString());
        s.controller.playTrack(m_songs[0]);
        QCOMPARE(playerctl("metadata artist"), QString());
        // playerctl quotes object paths.
        QString trackId = playerctl("metadata mpris:trackid");
        trackId.remove(u'\'');
        QVERIFY2(trackId.startsWith(QStringLiteral("/org/tarnwell/track/")), qPrintable(trackId));

        QTRY_VERIFY(playerctl("position").toDouble() > 0.3);
        // Half of 20 s: playing on from the start would take ten seconds to get there.
        s.controller.seek(0.5);
        QTRY_VERIFY(playerctl("position").toDouble() >= 9.9);
    }

    // Clients read shuffle and set it both ways; setting it to what it is
    // already changes nothing.
    void shuffleBothWays()
    {
        Stack &s = *m_stack;
        QCOMPARE(playerctl("shuffle"), QStringLiteral("Off"));
        s.controller.toggleShuffle();
        QCOMPARE(playerctl("shuffle"), QStringLiteral("On"));
        QVERIFY(!playerctl("shuffle On").isNull());
        // Answered after the command was handled.
        QCOMPARE(playerctl("shuffle"), QStringLiteral("On"));
        QVERIFY(s.controller.isShuffled());
        QVERIFY(!playerctl("shuffle Off").isNull());
        QTRY_VERIFY(!s.controller.isShuffled());
        QCOMPARE(playerctl("shuffle"), QStringLiteral("Off"));
    }

    void artworkAsAFile()
    {
        Stack &s = *m_stack;
        QImage picture(64, 64, QImage::Format_RGB32);
        picture.fill(Qt::red);
        s.controller.playTrack(m_songs[1]);
        s.mpris.setArtwork(picture);
        // Announced once the file is written, not only with the next change of song.
        QTRY_VERIFY_WITH_TIMEOUT(QUrl(playerctl("metadata mpris:artUrl")).isLocalFile(), 10000);
        const QUrl art(playerctl("metadata mpris:artUrl"));
        QImageReader reader(art.toLocalFile());
        QCOMPARE(reader.format(), QByteArray("jpeg"));
        QCOMPARE(reader.size(), QSize(64, 64));

        s.mpris.setArtwork(QImage());
        QVERIFY(!QFileInfo::exists(art.toLocalFile()));
    }
};

QTEST_GUILESS_MAIN(TestMpris)
#include "tst_mpris.moc"
