// SPDX-License-Identifier: GPL-3.0-or-later
#include "SharedLookups.h"

#include <QList>
#include <QObject>

#include <coroutine>

struct SharedLookups::Pending
{
    CancelToken cancel = CancelToken::create();
    int waiters = 0;
    bool finished = false;
    std::optional<QImage> image;
    QList<std::function<void()>> whenDone;
};

namespace {

// Resumes a waiting request when the lookup is done or the request is
// cancelled, whichever comes first.
template<typename Pending> class DoneOrCancelled
{
public:
    DoneOrCancelled(Pending &pending, const CancelToken &cancel)
        : m_pending(pending)
        , m_cancel(cancel)
    {
    }

    bool await_ready() const { return m_pending.finished || m_cancel.isCancelled(); }

    void await_suspend(std::coroutine_handle<> handle)
    {
        struct Once
        {
            bool fired = false;
            QMetaObject::Connection cancelled;
        };
        auto once = std::make_shared<Once>();
        const auto resume = [once, handle] {
            if (once->fired)
                return;
            once->fired = true;
            QObject::disconnect(once->cancelled);
            handle.resume();
        };
        m_pending.whenDone.append(resume);
        if (CancelState *state = m_cancel.state())
            once->cancelled = QObject::connect(state, &CancelState::cancelled, resume);
    }

    void await_resume() const { }

private:
    Pending &m_pending;
    CancelToken m_cancel;
};

} // namespace

SharedLookups::SharedLookups()
    : m_alive(std::make_shared<bool>(true))
{
}

SharedLookups::~SharedLookups()
{
    *m_alive = false;
    for (const std::shared_ptr<Pending> &pending : std::as_const(m_pending))
        pending->cancel.cancel();
}

QCoro::Task<std::optional<QImage>> SharedLookups::join(QString key, Start start, CancelToken cancel)
{
    if (m_missing.contains(key) || cancel.isCancelled())
        co_return std::nullopt;
    std::shared_ptr<Pending> pending = m_pending.value(key);
    if (!pending) {
        pending = std::make_shared<Pending>();
        m_pending.insert(key, pending);
        run(key, pending, std::move(start));
    }
    if (pending->finished)
        co_return pending->image;

    const std::shared_ptr<bool> alive = m_alive;
    ++pending->waiters;
    co_await DoneOrCancelled<Pending>(*pending, cancel);
    --pending->waiters;
    if (pending->finished)
        co_return pending->image;
    // This request gave up. The lookup goes on while others wait for it; the
    // last one to leave cancels it, and the next request starts afresh.
    if (pending->waiters == 0) {
        if (*alive && m_pending.value(key) == pending)
            m_pending.remove(key);
        pending->cancel.cancel();
    }
    co_return std::nullopt;
}

QCoro::Task<> SharedLookups::run(QString key, std::shared_ptr<Pending> pending, Start start)
{
    const std::shared_ptr<bool> alive = m_alive;
    ++m_running;
    const Result result = co_await start(pending->cancel);
    pending->finished = true;
    pending->image = result.image;
    if (*alive) {
        --m_running;
        if (m_pending.value(key) == pending)
            m_pending.remove(key);
        if (!result.image && result.conclusive)
            m_missing.insert(key);
    }
    const QList<std::function<void()>> waiting = std::exchange(pending->whenDone, {});
    for (const std::function<void()> &resume : waiting)
        resume();
}
