// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Small coroutine helpers shared by the artwork code.

#include "CancelToken.h"

#include <QCoro/QCoroTask>
#include <QFutureWatcher>
#include <QPointer>
#include <QtConcurrent/QtConcurrentRun>

#include <chrono>
#include <coroutine>

namespace artwork {

// Awaits a function run on the global thread pool. The coroutine resumes on the
// thread of `context` and only while `context` exists: a lookup whose owner is
// gone is dropped (its frame leaks) instead of touching freed state.
template<typename T>
class PoolAwaiter
{
public:
    PoolAwaiter(QObject *context, QFuture<T> future)
        : m_context(context), m_future(std::move(future))
    {
    }

    bool await_ready() const { return false; }

    void await_suspend(std::coroutine_handle<> handle)
    {
        auto *watcher = new QFutureWatcher<T>(m_context);
        QObject::connect(watcher, &QFutureWatcherBase::finished, watcher, [watcher, handle] {
            watcher->deleteLater();
            handle.resume();
        });
        watcher->setFuture(m_future);
    }

    T await_resume()
    {
        if constexpr (!std::is_void_v<T>)
            return m_future.result();
    }

private:
    QObject *m_context;
    QFuture<T> m_future;
};

// Start the pool job first, then await it:
//     auto job = QtConcurrent::run([path] { return loadImageFile(path); });
//     auto image = co_await artwork::whenDone(this, job);
// never `co_await f([capture] {...})`: GCC 12 destroys the captures of a lambda
// written inside a co_await expression twice. For the same reason, pass named
// values to the functions called in a co_await expression, not temporaries.
template<typename T>
PoolAwaiter<T> whenDone(QObject *context, const QFuture<T> &future)
{
    return PoolAwaiter<T>(context, future);
}

// Sleeps on the monotonic clock; a cancelled token ends the sleep at once. The
// interruption is no error: the caller looks at the token itself.
QCoro::Task<> sleepFor(std::chrono::nanoseconds duration, CancelToken cancel);

} // namespace artwork
