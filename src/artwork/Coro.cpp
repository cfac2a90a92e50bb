// SPDX-License-Identifier: GPL-3.0-or-later
#include "Coro.h"

#include <QCoro/QCoroTimer>
#include <QTimer>

namespace artwork {

QCoro::Task<> sleepFor(std::chrono::nanoseconds duration, CancelToken cancel)
{
    if (duration <= std::chrono::nanoseconds::zero() || cancel.isCancelled())
        co_return;
    QTimer timer;
    timer.setSingleShot(true);
    // Precise: a coarse timer may fire up to 5% early, and the throttle promises
    // starts at least one interval apart. Rounded up for the same reason.
    timer.setTimerType(Qt::PreciseTimer);
    if (CancelState *state = cancel.state())
        QObject::connect(state, &CancelState::cancelled, &timer, [&timer] { timer.start(0); });
    timer.start(std::chrono::ceil<std::chrono::milliseconds>(duration));
    co_await timer;
}

} // namespace artwork
