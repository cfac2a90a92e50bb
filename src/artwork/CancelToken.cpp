// SPDX-License-Identifier: GPL-3.0-or-later
#include "CancelToken.h"

#include <QThread>

void CancelState::cancel()
{
    if (m_cancelled.exchange(true, std::memory_order_acq_rel))
        return;
    if (QThread::currentThread() == thread())
        Q_EMIT cancelled();
    else
        QMetaObject::invokeMethod(this, [this] { Q_EMIT cancelled(); }, Qt::QueuedConnection);
}

CancelToken CancelToken::create()
{
    CancelToken token;
    // The last holder may be on another thread (an image request); the object
    // is then deleted on its own thread.
    token.m_state = std::shared_ptr<CancelState>(new CancelState, [](CancelState *s) {
        if (QThread::currentThread() == s->thread())
            delete s;
        else
            s->deleteLater();
    });
    return token;
}

void CancelToken::cancel() const
{
    if (m_state)
        m_state->cancel();
}
