// SPDX-License-Identifier: GPL-3.0-or-later
#include "BenchProbe.h"

#include "AppState.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QQuickItem>
#include <QRandomGenerator>
#include <QQuickWindow>

#include <algorithm>
#include <memory>

#include <cstdio>
#include <utility>

const QStringList BenchProbe::modes{QStringLiteral("first-frame"), QStringLiteral("import-stall"),
                                    QStringLiteral("tag-batch"), QStringLiteral("scroll")};

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

void BenchProbe::tick()
{
    const qint64 gap = m_sinceTick.restart();
    m_longestStallMs = std::max(m_longestStallMs, gap);
}

void BenchProbe::finishStallMeasure()
{
    tick();
    std::printf("longest-gui-stall-ms %lld\n", m_longestStallMs);
    std::fflush(stdout);
    QCoreApplication::exit(0);
}
