// SPDX-License-Identifier: GPL-3.0-or-later
// tarnwell-cli play: the files given, in order, through the program's own
// player and controller, with media keys and now-playing over MPRIS. Songs
// follow each other without a gap and play levelled unless told otherwise
// (the stored preference is left alone). Prints the position once a second;
// Ctrl+C stops.
#include "Commands.h"

#include "playback/AudioPlayer.h"
#include "playback/MprisService.h"
#include "playback/PlaybackController.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QSocketNotifier>
#include <QTimer>

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace {

int stopPipe[2] = { -1, -1 };

void onStopSignal(int)
{
    const char byte = 1;
    [[maybe_unused]] const auto written = ::write(stopPipe[1], &byte, 1);
}

QString formatTime(double seconds)
{
    const qint64 whole = seconds > 0 ? qint64(seconds) : 0;
    return QStringLiteral("%1:%2").arg(whole / 60).arg(whole % 60, 2, 10, QLatin1Char('0'));
}

void line(const QString &text)
{
    cli::out(text.toUtf8() + '\n');
    std::fflush(stdout);
}

int usage()
{
    cli::error(QStringLiteral(
        "usage: tarnwell-cli play [--shuffle] [--repeat] [--no-gapless] [--no-levelling] FILE..."));
    return cli::usageError;
}

} // namespace

int cli::play(const QStringList &args)
{
    bool shuffle = false;
    bool repeat = false;
    bool gapless = true;
    bool levelling = true;
    QList<Track> tracks;
    for (const QString &arg : args) {
        if (arg == u"--shuffle") {
            shuffle = true;
        } else if (arg == u"--repeat") {
            repeat = true;
        } else if (arg == u"--no-gapless") {
            gapless = false;
        } else if (arg == u"--no-levelling") {
            levelling = false;
        } else if (arg.startsWith(u"--")) {
            return usage();
        } else {
            const QFileInfo info(arg);
            if (!info.isFile()) {
                error(QStringLiteral("%1: no such file").arg(arg));
                return 1;
            }
            tracks.append(Track::create(QUrl::fromLocalFile(info.absoluteFilePath())));
        }
    }
    if (tracks.isEmpty())
        return usage();

    AudioPlayer player;
    player.overrideVolumeLevelling(levelling);
    PlaybackController controller(player, [&tracks] { return tracks; });
    MprisService mpris(player, controller);
    mpris.registerOnBus(); // without a session bus, playback goes on without media keys
    if (shuffle)
        controller.toggleShuffle();

    controller.setChangeListener([&](unsigned changes) {
        if (changes & PlaybackController::PlayingTrackChanged) {
            line(QStringLiteral("playing %1").arg(controller.playingTrack()->path()));
            mpris.updateNowPlaying();
        }
    });

    // Like the program, the end of a song plays the next one; unlike it, the
    // command ends after the last one unless told to repeat, so nothing is
    // joined after the last song.
    int finished = 0;
    const auto joinAfterThisSong = [&] { return gapless && (repeat || finished + 1 < tracks.size()); };
    controller.setGapless(joinAfterThisSong());
    QObject::connect(&player, &AudioPlayer::finishTickChanged, &player, [&] {
        ++finished;
        const bool done = shuffle ? finished >= tracks.size() : controller.playingTrack() == tracks.last();
        if (done && !repeat) {
            QCoreApplication::exit(0);
            return;
        }
        controller.playNext();
        controller.setGapless(joinAfterThisSong());
        if (!player.isPlaying()) {
            error(QStringLiteral("cannot play the next file"));
            QCoreApplication::exit(1);
        }
    });

    QTimer ticker;
    ticker.setInterval(1000);
    QObject::connect(&ticker, &QTimer::timeout, &player, [&] {
        line(QStringLiteral("%1 / %2 %3")
                 .arg(formatTime(player.currentTime()), formatTime(player.duration()),
                     player.isPlaying() ? QStringLiteral("playing") : QStringLiteral("paused")));
    });

    if (::pipe2(stopPipe, O_CLOEXEC | O_NONBLOCK) != 0) {
        error(QStringLiteral("cannot set up the interrupt handler"));
        return 1;
    }
    QSocketNotifier stopNotifier(stopPipe[0], QSocketNotifier::Read);
    QObject::connect(&stopNotifier, &QSocketNotifier::activated, &player, [] {
        line(QStringLiteral("stopped"));
        QCoreApplication::exit(0);
    });
    struct sigaction action = {};
    action.sa_handler = onStopSignal;
    sigemptyset(&action.sa_mask);
    struct sigaction oldInt = {}, oldTerm = {};
    sigaction(SIGINT, &action, &oldInt);
    sigaction(SIGTERM, &action, &oldTerm);

    int code = 1;
    controller.playTrack(tracks.first());
    if (controller.playingTrack()) {
        ticker.start();
        code = QCoreApplication::exec();
    } else {
        error(QStringLiteral("cannot play %1").arg(tracks.first().path()));
    }

    sigaction(SIGINT, &oldInt, nullptr);
    sigaction(SIGTERM, &oldTerm, nullptr);
    ::close(stopPipe[0]);
    ::close(stopPipe[1]);
    return code;
}
