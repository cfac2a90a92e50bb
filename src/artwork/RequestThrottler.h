// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <list>
#include <memory>
#include <mutex>

// Spaces online lookups: every booking gets its own start instant, at least one
// interval after the one booked before it, so a burst of N lookups is spread over
// N intervals in booking order. Consulted once per album or artist lookup, not
// once per request. Bookings are atomic and may come from any thread.
//
// A lookup somebody is waiting to see (the playing song's picture) books
// urgently: it takes the earliest instant still to come, and the bookings that
// held it and the ones after move one interval later each. A booking's wait
// therefore ends with a look at Slot::remaining(), not at the instant it was
// told first.
//
// Time is the monotonic clock: a wall-clock jump must neither stall lookups for
// an hour nor let a burst through at once.
class RequestThrottler
{
public:
    using Clock = std::chrono::steady_clock;
    enum class Priority { Normal, Urgent };

    // A booked start. Let it go once started (or given up): until then it
    // may be moved.
    class Slot
    {
    public:
        ~Slot();
        // How long is left until the start; zero once it has come.
        std::chrono::nanoseconds remaining() const;

    private:
        friend class RequestThrottler;
        struct Bookings;
        std::shared_ptr<Bookings> m_bookings;
        Clock::time_point m_start;
    };

    explicit RequestThrottler(std::chrono::nanoseconds interval = std::chrono::seconds(1));

    std::shared_ptr<Slot> reserveSlot(Priority priority = Priority::Normal);

    std::chrono::nanoseconds interval() const { return m_interval; }

private:
    const std::chrono::nanoseconds m_interval;
    std::shared_ptr<Slot::Bookings> m_bookings;
};
