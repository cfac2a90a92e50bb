// SPDX-License-Identifier: GPL-3.0-or-later
// Now-playing as a desktop client sees it: the real player and controller
// behind the MPRIS service, read by playerctl on the private session bus the
// test runs on (dbus-run-session). Media keys are checked with the command line.
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
        QObject::connect(&player, &AudioPlayer::finishTickChanged, &player, [this] { controller.playNext(); });
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

    // Runs playerctl while the event loop keeps answering its calls. Its
    // output, trimmed; null when it fails.
    QString playerctl(const char *args)
    {
        QProcess p;
        QSignalSpy done(&p, &QProcess::finished);
        p.start(QStringLiteral("playerctl"), QStringList{QStringLiteral("--player=tarnwell")} + QString::fromLatin1(args).split(u' '));
        if (!done.wait(60000) || p.exitCode() != 0)
            return {};
        const QString out = QString::fromUtf8(p.readAllStandardOutput()).trimmed();
        return out.isNull() ? QStringLiteral("") : out;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(!qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS"), "run under dbus-run-session");
        for (const char *name : {"First Song", "Second"}) {
            const QString file = m_dir.filePath(QString::fromLatin1(name) + QStringLiteral(".wav"));
            QVERIFY(testsupport::makeAudio(file, 20.0));
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
        follower.start(QStringLiteral("playerctl"), QStringLiteral("--player=tarnwell --follow metadata --format").split(u' ')
                                                        << QStringLiteral("{{status}} {{title}}"));
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

    // What a client reads: no title before a song plays and no artist without a
    // tag, the track id, the picture as a file once it is written (not only with
    // the next song), the position after a seek, shuffle both ways (setting it
    // to what it is changes nothing).
    void readAndSet()
    {
        Stack &s = *m_stack;
        QCOMPARE(playerctl("metadata title"), QString());
        s.controller.playTrack(m_songs[0]);
        QCOMPARE(playerctl("metadata artist"), QString());
        QVERIFY(playerctl("metadata mpris:trackid").remove(u'\'').startsWith(QStringLiteral("/org/tarnwell/track/")));
        QImage picture(64, 64, QImage::Format_RGB32);
        picture.fill(Qt::red);
        s.mpris.setArtwork(picture);
        QTRY_VERIFY_WITH_TIMEOUT(QUrl(playerctl("metadata mpris:artUrl")).isLocalFile(), 30000);
        const QString art = QUrl(playerctl("metadata mpris:artUrl")).toLocalFile();
        QVERIFY(QImageReader(art).format() == "jpeg" && QImageReader(art).size() == QSize(64, 64));
        s.mpris.setArtwork(QImage());
        QVERIFY(!QFileInfo::exists(art));
        // Half of 20 s: playing on from the start would take ten seconds to get there.
        s.controller.seek(0.5);
        QTRY_VERIFY(playerctl("position").toDouble() >= 9.9);

        QCOMPARE(playerctl("shuffle"), QStringLiteral("Off"));
        s.controller.toggleShuffle();
        QCOMPARE(playerctl("shuffle"), QStringLiteral("On"));
        QVERIFY(!playerctl("shuffle On").isNull());
        QCOMPARE(playerctl("shuffle"), QStringLiteral("On")); // answered after the command was handled
        QVERIFY(!playerctl("shuffle Off").isNull());
        QTRY_VERIFY(!s.controller.isShuffled());
        QCOMPARE(playerctl("shuffle"), QStringLiteral("Off"));
    }

};

QTEST_GUILESS_MAIN(TestMpris)
#include "tst_mpris.moc"
