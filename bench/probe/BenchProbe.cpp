// SPDX-License-Identifier: GPL-3.0-or-later
#include "BenchProbe.h"

#include "AppState.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QQuickItem>
#include <QRandomGenerator>
#include <QQuickWindow>

#include <algorithm>
#include <memory>

#include <cstdio>
#include <sys/resource.h>
#include <utility>

const QStringList BenchProbe::modes{QStringLiteral("first-frame"), QStringLiteral("import-stall"),
                                    QStringLiteral("tag-batch"), QStringLiteral("scroll"),
                                    QStringLiteral("memory")};

BenchProbe::BenchProbe(const QString &mode, Clock start, QQuickWindow *window, AppState *state)
    : QObject(state)
    , m_start(start)
{
    Library *library = state->library();
    ArtworkPrefetch *prefetch = &state->artworkPrefetch();
    if (mode == u"first-frame") {
        connect(window, &QQuickWindow::frameSwapped, this, [this] {
            if (std::exchange(m_reported, true))
                return;
            const auto ms = std::chrono::duration<double, std::milli>(now() - m_start).count();
            std::printf("first-frame-ms-since-main %.1f\n", ms);
            std::printf("first-frame-epoch-ms %lld\n", QDateTime::currentMSecsSinceEpoch());
            std::fflush(stdout);
            QCoreApplication::exit(0);
        }, Qt::QueuedConnection);
        return;
    }

    if (mode == u"import-stall") {
        // A 2 ms heartbeat: any longer gap between two beats is time the GUI
        // thread spent on something else.
        m_heartbeat.setTimerType(Qt::PreciseTimer);
        m_heartbeat.setInterval(2);
        connect(&m_heartbeat, &QTimer::timeout, this, &BenchProbe::tick);
        connect(library, &Library::importingChanged, this, [this, library] {
            if (library->isImporting() && !m_heartbeat.isActive()) {
                m_sinceTick.start();
                m_heartbeat.start();
            }
        });
        // The import is done when its prefetch plan is made; the measure goes
        // on for a second more, while the work it started settles.
        connect(prefetch, &ArtworkPrefetch::planned, this, [this, library] {
            if (!library->isImporting())
                QTimer::singleShot(1000, this, &BenchProbe::finishStallMeasure);
        });
        return;
    }
    if (mode == u"tag-batch") {
        m_heartbeat.setTimerType(Qt::PreciseTimer);
        m_heartbeat.setInterval(2);
        connect(&m_heartbeat, &QTimer::timeout, this, &BenchProbe::tick);
        connect(prefetch, &ArtworkPrefetch::planned, this, [this, library, state] {
            if (!library->isImporting() && !std::exchange(m_reported, true))
                startTagBatch(state);
        });
        return;
    }
    if (mode == u"memory") {
        startMemory(window, state);
        return;
    }
    if (mode == u"scroll") {
        connect(prefetch, &ArtworkPrefetch::planned, this, [this, window, library, state] {
            if (!library->isImporting() && !std::exchange(m_reported, true))
                startScroll(window, state);
        });
    }
}

void BenchProbe::startTagBatch(AppState *state)
{
    UntaggedSongs *untagged = state->untagged();
    auto save = [this, untagged] {
        if (untagged->isLoading() || untagged->isSaving() || m_heartbeat.isActive())
            return;
        std::printf("untagged %d\n", untagged->count());
        std::fflush(stdout);
        untagged->toggleSelectAll();
        untagged->editSelected();
        m_sinceStart.start();
        m_sinceTick.start();
        m_heartbeat.start();
        untagged->saveBatch(QString(), QString(), QStringLiteral("Batch Album"));
    };
    connect(untagged, &UntaggedSongs::isLoadingChanged, this, save);
    connect(untagged, &UntaggedSongs::savingChanged, this, [untagged] {
        if (untagged->isSaving()) {
            std::printf("saved %d\n", untagged->savedSoFar());
            std::fflush(stdout);
        }
    });
    connect(untagged, &UntaggedSongs::saveFinished, this, [this](int saved) {
        tick();
        std::printf("saved-files %d\n", saved);
        std::printf("save-ms %lld\n", m_sinceStart.elapsed());
        std::printf("longest-gui-stall-ms %lld\n", m_longestStallMs);
        std::fflush(stdout);
        QCoreApplication::exit(0);
    });
    state->navigation()->showUntaggedSongs();
}

namespace {

// Searches the visual tree, which is not always the QObject tree.
QQuickItem *findItem(QQuickItem *root, const QString &objectName)
{
    if (root->objectName() == objectName)
        return root;
    const QList<QQuickItem *> children = root->childItems();
    for (QQuickItem *child : children) {
        if (QQuickItem *found = findItem(child, objectName))
            return found;
    }
    return nullptr;
}

} // namespace

void BenchProbe::startScroll(QQuickWindow *window, AppState *state)
{
    struct Run
    {
        QElapsedTimer clock;
        QQuickItem *list = nullptr;
        QList<qint64> frames;
        qint64 lastFrameNs = 0;
        bool scrolling = false;
    };
    auto run = std::make_shared<Run>();
    run->clock.start();
    // The first frame with the list in it ends the "show" measure and starts
    // the scroll; each frame after that moves it a screenful further.
    connect(window, &QQuickWindow::frameSwapped, this, [this, window, run] {
        if (!run->list) {
            run->list = findItem(window->contentItem(), QStringLiteral("songList"));
            if (!run->list || !run->list->isVisible() || run->list->height() <= 0)
                return;
            std::printf("show-all-songs-ms %lld\n", run->clock.elapsed());
            std::printf("songs %d\n", run->list->property("count").toInt());
            std::fflush(stdout);
            run->lastFrameNs = run->clock.nsecsElapsed();
            run->scrolling = true;
        } else if (run->scrolling) {
            const qint64 nowNs = run->clock.nsecsElapsed();
            run->frames.append(nowNs - run->lastFrameNs);
            run->lastFrameNs = nowNs;
        }
        if (!run->scrolling)
            return;
        QQuickItem *list = run->list;
        const double contentY = list->property("contentY").toDouble();
        const double end = list->property("contentHeight").toDouble() - list->height();
        // A fling of a thousand screens, then two hundred jumps anywhere, as
        // when the scroll bar is dragged.
        if (run->frames.size() >= 1200 || end <= 0) {
            run->scrolling = false;
            const auto ms = [](qint64 ns) { return double(ns) / 1e6; };
            const auto report = [&](const char *name, QList<qint64> frames) {
                std::sort(frames.begin(), frames.end());
                if (frames.isEmpty())
                    return;
                std::printf("%s-frames %lld\n", name, qlonglong(frames.size()));
                std::printf("%s-median-frame-ms %.1f\n", name, ms(frames.at(frames.size() / 2)));
                std::printf("%s-p99-frame-ms %.1f\n", name, ms(frames.at(frames.size() * 99 / 100)));
                std::printf("%s-worst-frame-ms %.1f\n", name, ms(frames.last()));
            };
            // The first frame after the list appears still carries its making.
            report("fling", run->frames.mid(1, 999));
            report("jump", run->frames.mid(1000));
            std::fflush(stdout);
            QCoreApplication::exit(0);
            return;
        }
        const double next = run->frames.size() < 1000 && contentY + list->height() < end
            ? contentY + list->height()
            : QRandomGenerator::global()->bounded(end);
        list->setProperty("contentY", next);
    });
    state->navigation()->showAllSongs();
    window->requestUpdate();
}

namespace {

// "Rss" and "Pss" of /proc/self/smaps_rollup, in MB.
void printMemory()
{
    QFile rollup(QStringLiteral("/proc/self/smaps_rollup"));
    if (!rollup.open(QIODevice::ReadOnly))
        return;
    for (const QByteArray &line : rollup.readAll().split('\n')) {
        const QList<QByteArray> fields = line.simplified().split(' ');
        if (fields.size() >= 2 && (fields.at(0) == "Rss:" || fields.at(0) == "Pss:"))
            std::printf("%s-mb %.1f\n", fields.at(0).chopped(1).toLower().constData(), fields.at(1).toDouble() / 1024);
    }
    std::fflush(stdout);
}

// The monotonic clock in seconds, as `perf record -k CLOCK_MONOTONIC` stamps samples.
double monotonicSeconds()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

double cpuMs()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto ms = [](const timeval &t) { return double(t.tv_sec) * 1e3 + double(t.tv_usec) / 1e3; };
    return ms(usage.ru_utime) + ms(usage.ru_stime);
}

} // namespace

void BenchProbe::startMemory(QQuickWindow *window, AppState *state)
{
    Library *library = state->library();
    SearchIndex *index = state->searchIndex();
    m_heartbeat.setTimerType(Qt::PreciseTimer);
    m_heartbeat.setInterval(2);
    connect(&m_heartbeat, &QTimer::timeout, this, &BenchProbe::tick);
    const bool folders = QCoreApplication::arguments().size() > 1;
    if (!folders) {
        connect(window, &QQuickWindow::frameSwapped, this, [this] {
            if (std::exchange(m_reported, true))
                return;
            QTimer::singleShot(10000, this, [] {
                printMemory();
                QCoreApplication::exit(0);
            });
        }, Qt::QueuedConnection);
        return;
    }
    connect(library, &Library::importingChanged, this, [this, library] {
        if (library->isImporting() && !m_heartbeat.isActive()) {
            m_sinceStart.start();
            m_sinceTick.start();
            m_heartbeat.start();
        }
    });
    connect(library, &Library::tracksAppended, this, [this](int first) {
        if (first == 0) {
            std::printf("listed-ms %lld\n", m_sinceStart.elapsed());
            std::fflush(stdout);
        }
    });
    auto copy = std::make_shared<QString>();
    auto cpuBefore = std::make_shared<double>(0);
    connect(index, &SearchIndex::isBuildingChanged, this, [=, this] {
        if (index->isBuilding() || library->isImporting())
            return;
        if (!copy->isEmpty()) {
            std::printf("one-file-cpu-ms %.1f\n", cpuMs() - *cpuBefore);
            std::fflush(stdout);
            QFile::remove(*copy);
            QCoreApplication::exit(0);
            return;
        }
        if (std::exchange(m_reported, true))
            return;
        std::printf("songs %d\n", library->trackCount());
        std::printf("import-ms %lld\n", m_sinceStart.elapsed());
        std::fflush(stdout);
        QTimer::singleShot(10000, this, [=, this] {
            tick();
            std::printf("longest-gui-stall-ms %lld\n", m_longestStallMs);
            printMemory();
            m_heartbeat.stop();
            const QString first = library->tracks().first().path();
            *copy = QFileInfo(first).absolutePath() + QStringLiteral("/probe-added.flac");
            QFile::remove(*copy);
            *cpuBefore = cpuMs();
            std::fprintf(stderr, "one file added at %.3f\n", monotonicSeconds());
            QFile::copy(first, *copy);
        });
    });
}

void BenchProbe::tick()
{
    const qint64 gap = m_sinceTick.restart();
    m_longestStallMs = std::max(m_longestStallMs, gap);
    // Where each long stall lies on the monotonic clock, to find it in a
    // profile (perf record -k CLOCK_MONOTONIC).
    if (gap >= 50) {
        const double end = monotonicSeconds();
        std::fprintf(stderr, "stall %lld ms, %.3f to %.3f\n", gap, end - double(gap) / 1e3, end);
    }
}

void BenchProbe::finishStallMeasure()
{
    tick();
    std::printf("longest-gui-stall-ms %lld\n", m_longestStallMs);
    std::fflush(stdout);
    QCoreApplication::exit(0);
}
