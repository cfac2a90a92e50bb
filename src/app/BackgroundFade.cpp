// SPDX-License-Identifier: GPL-3.0-or-later
#include "BackgroundFade.h"

#include <QEasingCurve>
#include <QPointF>

BackgroundFade::BackgroundFade(QObject *parent, int fadeMs, int swapDelayMs)
    : QObject(parent)
    , m_fade(this, "opacity")
{
    m_swapTimer.setSingleShot(true);
    m_swapTimer.setInterval(swapDelayMs);
    connect(&m_swapTimer, &QTimer::timeout, this, &BackgroundFade::swap);

    QEasingCurve easeInOut(QEasingCurve::BezierSpline);
    easeInOut.addCubicBezierSegment(QPointF(0.42, 0.0), QPointF(0.58, 1.0), QPointF(1.0, 1.0));
    m_fade.setEasingCurve(easeInOut);
    m_fade.setDuration(fadeMs);
}

void BackgroundFade::setOpacity(double opacity)
{
    if (qFuzzyCompare(1.0 + opacity, 1.0 + m_opacity))
        return;
    m_opacity = opacity;
    Q_EMIT opacityChanged();
}

void BackgroundFade::show(const QUrl &source)
{
    // Cancelling the pending swap leaves a running fade-out alone: it still
    // ends at 0, where the next swap picks up.
    m_swapTimer.stop();
    m_next = source;
    if (m_shown.isEmpty()) {
        swap();
        return;
    }
    fadeTo(0.0);
    m_swapTimer.start();
}

void BackgroundFade::swap()
{
    if (m_shown != m_next) {
        m_shown = m_next;
        Q_EMIT shownSourceChanged();
    }
    if (!m_shown.isEmpty())
        fadeTo(1.0);
}

void BackgroundFade::fadeTo(double target)
{
    m_fade.stop();
    m_fade.setStartValue(m_opacity);
    m_fade.setEndValue(target);
    m_fade.start();
}
