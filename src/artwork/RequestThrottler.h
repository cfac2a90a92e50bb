// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <mutex>

// Spaces online lookups: every booking gets its own start instant, at least one
// interval after the one booked before it, so a burst of N lookups is spread over
// N intervals in booking order. Consulted once per album or artist lookup, not
// once per request. Bookings are atomic and may come from any thread.
//
// Time is the monotonic clock: a wall-clock jump must neither stall lookups for
// an hour nor let a burst through at once.
class RequestThrottler
{
public:
    using Clock = std::chrono::steady_clock;

    explicit RequestThrottler(std::chrono::nanoseconds interval = std::chrono::seconds(1));

    // How long the caller must wait before starting, at least zero.
    std::chrono::nanoseconds reserveSlot();

    std::chrono::nanoseconds interval() const { return m_interval; }

private:
    const std::chrono::nanoseconds m_interval;
    std::mutex m_mutex;
    // Initially in the past: the first lookup starts at once.
    Clock::time_point m_nextAvailableTime{};
};
