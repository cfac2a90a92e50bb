// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

#include <atomic>
#include <memory>

// The shared state behind a CancelToken. Lives on the thread that created it
// (the GUI thread); cancelled() is emitted there, once.
class CancelState : public QObject
{
    Q_OBJECT

public:
    bool isCancelled() const { return m_cancelled.load(std::memory_order_acquire); }
    // Any thread. The flag is set at once; the signal follows on the owner's thread.
    void cancel();

Q_SIGNALS:
    void cancelled();

private:
    std::atomic_bool m_cancelled{false};
};

// A flag shared by whoever starts a lookup and the lookup itself. The lookup
// looks at it at its own cancellation points; besides, cancelling ends a pending
// cancellable sleep at once and makes the request in flight (and every later
// one) fail, as if the network had gone away.
class CancelToken
{
public:
    // A token that is never cancelled.
    CancelToken() = default;
    // A token that cancel() can cancel. Create it on the GUI thread.
    static CancelToken create();

    void cancel() const;
    bool isCancelled() const { return m_state && m_state->isCancelled(); }

    // Emits cancelled(); null for a token that can't be cancelled.
    CancelState *state() const { return m_state.get(); }

private:
    std::shared_ptr<CancelState> m_state;
};
