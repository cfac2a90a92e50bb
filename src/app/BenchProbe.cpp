// SPDX-License-Identifier: GPL-3.0-or-later
#include "BenchProbe.h"

#include "AppState.h"
#include "UntaggedSongs.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QQuickWindow>

#include <cstdio>
#include <utility>

BenchProbe::BenchProbe(Clock start, QQuickWindow *window, AppState *state)
    : m_start(start)
{
    const QByteArray mode = qgetenv("TARNWELL_BENCH");
    if (mode.isEmpty() || !window)
        return;

    if (mode == "first-frame") {
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

    if (mode == "import-stall") {
        // A 2 ms heartbeat: any longer gap between two beats is time the GUI
        // thread spent on something else.
        m_heartbeat.setTimerType(Qt::PreciseTimer);
        m_heartbeat.setInterval(2);
        connect(&m_heartbeat, &QTimer::timeout, this, &BenchProbe::tick);
        connect(state, &AppState::importingChanged, this, [this, state] {
            if (state->isImporting() && !m_heartbeat.isActive()) {
                m_sinceTick.start();
                m_heartbeat.start();
            }
        });
        // The import is done when its prefetch plan is made; the measure goes
        // on for a second more, while the work it started settles.
        connect(state, &AppState::prefetchPlanned, this, [this, state] {
            if (!state->isImporting())
                QTimer::singleShot(1000, this, &BenchProbe::finishStallMeasure);
        });
        return;
    }
    if (mode == "tag-batch") {
        m_heartbeat.setTimerType(Qt::PreciseTimer);
        m_heartbeat.setInterval(2);
        connect(&m_heartbeat, &QTimer::timeout, this, &BenchProbe::tick);
        connect(state, &AppState::prefetchPlanned, this, [this, state] {
            if (!state->isImporting() && !std::exchange(m_reported, true))
                startTagBatch(state);
        });
        return;
    }
    std::fprintf(stderr, "TARNWELL_BENCH: unknown mode %s\n", mode.constData());
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
    state->showUntaggedSongs();
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
