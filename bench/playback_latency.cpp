// SPDX-License-Identifier: GPL-3.0-or-later
// Load-to-first-buffer latency of the player: AudioPlayer::load returns once
// the file has prerolled, that is once its first decoded buffer has reached the
// sink. Loads the file COUNT times (as switching songs does) and prints the
// median, 90th percentile and worst case in milliseconds. BENCH_SETTLE_MS
// waits before the first load, as a user does after the program starts (the
// player loads GStreamer's plugins ahead in the background).
#include "playback/AudioPlayer.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QThread>

#include <algorithm>
#include <cstdio>
#include <vector>

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() < 2) {
        std::fputs("usage: playback_latency FILE [COUNT]\n", stderr);
        return 2;
    }
    const QUrl url = QUrl::fromLocalFile(QFileInfo(args.at(1)).absoluteFilePath());
    const int count = args.size() > 2 ? std::max(1, args.at(2).toInt()) : 20;

    AudioPlayer player;
    if (qEnvironmentVariableIsSet("BENCH_SETTLE_MS"))
        QThread::msleep(qEnvironmentVariableIntValue("BENCH_SETTLE_MS"));
    // The first load also loads GStreamer's plugins; it is reported apart.
    QElapsedTimer clock;
    clock.start();
    if (!player.load(url)) {
        std::fprintf(stderr, "cannot play %s\n", qPrintable(url.toLocalFile()));
        return 1;
    }
    const double first = double(clock.nsecsElapsed()) / 1e6;

    std::vector<double> ms;
    for (int i = 0; i < count; ++i) {
        QCoreApplication::processEvents();
        clock.restart();
        if (!player.load(url))
            return 1;
        ms.push_back(double(clock.nsecsElapsed()) / 1e6);
    }
    std::sort(ms.begin(), ms.end());
    const auto at = [&](double q) { return ms[std::min(ms.size() - 1, size_t(q * double(ms.size())))]; };
    std::printf("first load %.1f ms; then %d loads: median %.1f ms, p90 %.1f ms, max %.1f ms\n", first, count,
        at(0.5), at(0.9), ms.back());
    return 0;
}
