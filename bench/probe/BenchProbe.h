// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QStringList>
#include <QTimer>

#include <chrono>

class AppState;
class QQuickWindow;

// The measurements of tarnwell-probe, the program with a probe inside for
// bench/ (and for the test that kills a batch save half-way). The mode is the
// first argument:
//   first-frame   prints the time from start to the first frame, then quits
//   import-stall  prints the longest time the GUI thread did not run its event
//                 loop while the command-line folders were imported and the
//                 work that follows ran, then quits
//   tag-batch     once the command-line folders are imported, opens the
//                 untagged songs, selects them all and saves the album
//                 "Batch Album" into every one through the batch editor;
//                 prints "saved N" as the files are written, then the longest
//                 GUI-thread stall during the saves and the time they took,
//                 then quits
//   scroll        once the command-line folders are imported, shows all songs
//                 and prints the time until that list is on screen; then
//                 scrolls it a screenful a frame for 1,000 frames and jumps to
//                 200 random places, and prints the longest and the median
//                 frame, then quits
//   memory        with folders: prints the time until the first songs are
//                 listed and until all are imported and indexed, the longest GUI-thread stall then and in the 10 s
//                 after, RSS and PSS 10 s after; then copies one of the songs
//                 into its own folder and prints the CPU time the program
//                 spent until that song was indexed (the copy is removed).
//                 Without folders: RSS and PSS 10 s after the first frame.
class BenchProbe : public QObject
{
    Q_OBJECT

public:
    using Clock = std::chrono::steady_clock::time_point;
    static Clock now() { return std::chrono::steady_clock::now(); }

    static const QStringList modes;

    // Parented to the main state, so it goes when the program ends.
    BenchProbe(const QString &mode, Clock start, QQuickWindow *window, AppState *state);

private:
    void tick();
    void finishStallMeasure();
    void startTagBatch(AppState *state);
    void startScroll(QQuickWindow *window, AppState *state);
    void startMemory(QQuickWindow *window, AppState *state);

    Clock m_start;
    QTimer m_heartbeat;
    QElapsedTimer m_sinceTick;
    QElapsedTimer m_sinceStart;
    qint64 m_longestStallMs = 0;
    bool m_reported = false;
};
