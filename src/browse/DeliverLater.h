// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFuture>
#include <QMetaObject>
#include <QObject>

// Hands the result of background work to `context`'s thread, always through
// its event loop. A plain continuation with a context runs at once, inside the
// caller, when the work is already done by the time it is attached; callers
// of load()/rebuild() can rely on being back in the event loop before results
// land. Nothing is delivered once the context is gone.
template<typename T, typename F> void deliverLater(QFuture<T> future, QObject *context, F &&deliver)
{
    future.then(context, [context, deliver = std::forward<F>(deliver)](const T &value) mutable {
        QMetaObject::invokeMethod(
            context, [deliver = std::move(deliver), value]() mutable { deliver(value); },
            Qt::QueuedConnection);
    });
}
