// SPDX-License-Identifier: GPL-3.0-or-later
// tarnwell-cli play: the files given, in order, through the program's own
// player and controller, with media keys and now-playing over MPRIS. Songs
// follow each other without a gap and play levelled unless told otherwise
// (the stored preference is left alone). Prints the position once a second;
// Ctrl+C stops.
#include "Commands.h"

#include "model/LocalPath.h"
#include "playback/AudioPlayer.h"
#include "playback/MprisService.h"
#include "playback/PlaybackController.h"

#include <QCoreApplication>
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

} // namespace

int cli::play(const Arguments &args)
{
    if (args.operands.isEmpty())
        return badUsage("play", QStringLiteral("give at least one file"));
    const bool shuffle = args.has("--shuffle");
    const bool repeat = args.has("--repeat");
    const bool gapless = !args.has("--no-gapless");
    const bool levelling = !args.has("--no-levelling");
    QList<Track> tracks;
    for (const QString &path : absolutePaths(args.operands)) {
        if (const QString why = fileProblem(path); !why.isEmpty()) {
            error(QStringLiteral("%1: %2").arg(localpath::readable(path), why));
            return 1;
        }
        tracks.append(Track::create(localpath::fileUrl(path)));
    }

    AudioPlayer player;
    player.overrideVolumeLevelling(levelling);
    PlaybackController controller(player, [&tracks] { return tracks; });
    MprisService mpris(player, controller);
    mpris.registerOnBus(); // without a session bus, playback goes on without media keys
    if (shuffle)
        controller.toggleShuffle();

    controller.setChangeListener([&](unsigned changes) {
        if (changes & PlaybackController::PlayingTrackChanged) {
            line(QStringLiteral("playing %1").arg(localpath::readable(controller.playingTrack()->path())));
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
        error(QStringLiteral("%1: the file cannot be played").arg(localpath::readable(tracks.first().path())));
    }

    sigaction(SIGINT, &oldInt, nullptr);
    sigaction(SIGTERM, &oldTerm, nullptr);
    ::close(stopPipe[0]);
    ::close(stopPipe[1]);
    return code;
}
