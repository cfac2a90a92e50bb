// SPDX-License-Identifier: GPL-3.0-or-later
#include "RequestThrottler.h"

RequestThrottler::RequestThrottler(std::chrono::nanoseconds interval)
    : m_interval(interval)
{
}

std::chrono::nanoseconds RequestThrottler::reserveSlot()
{
    std::lock_guard lock(m_mutex);
    const Clock::time_point now = Clock::now();
    const Clock::time_point start = m_nextAvailableTime >= now ? m_nextAvailableTime : now;
    m_nextAvailableTime = start + m_interval;
    return std::max(start - now, Clock::duration::zero());
}
