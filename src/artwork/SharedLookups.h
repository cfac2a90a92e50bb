// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "CancelToken.h"

#include <QCoro/QCoroTask>
#include <QHash>
#include <QImage>
#include <QSet>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

// Each picture asked for once: the prefetch after an import, a card on the
// home screen and the now-playing area may all want the same artist at the
// same moment, and the web should hear of it once.
//
//   join(key) ─ a miss found before ─────────────────► nothing
//             ─ a lookup for the key in flight ─ wait ─► its picture
//             ─ none: start one ─────────── wait ─► its picture
//
// The lookup runs under a token of its own, cancelled only once every request
// waiting for it is cancelled; a cancelled request stops waiting at once. A
// lookup whose miss was conclusive (the services answered and had nothing) is
// remembered, and its key is not looked up again by this object. GUI thread.
class SharedLookups
{
public:
    struct Result
    {
        std::optional<QImage> image;
        // A miss that asking again would not change.
        bool conclusive = false;
    };
    using Start = std::function<QCoro::Task<Result>(CancelToken)>;

    SharedLookups();
    ~SharedLookups();
    SharedLookups(const SharedLookups &) = delete;
    SharedLookups &operator=(const SharedLookups &) = delete;

    // The picture of the key's lookup, starting it with `start` when none is
    // in flight.
    QCoro::Task<std::optional<QImage>> join(QString key, Start start, CancelToken cancel);

    // Lookups still running, cancelled ones winding down included.
    int running() const { return m_running; }

private:
    class Pending;
    QCoro::Task<> run(QString key, std::shared_ptr<Pending> pending, Start start);

    QHash<QString, std::shared_ptr<Pending>> m_pending;
    QSet<QString> m_missing;
    int m_running = 0;
    // Tells a running lookup that this object is gone.
    std::shared_ptr<bool> m_alive;
};
