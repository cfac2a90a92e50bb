// SPDX-License-Identifier: GPL-3.0-or-later
#include "RequestThrottler.h"

#include <algorithm>

// Shared with the slots, which may outlive the throttler.
struct RequestThrottler::Slot::Bookings
{
    std::mutex mutex;
    // Initially in the past: the first lookup starts at once.
    Clock::time_point nextAvailableTime{};
    // Slots not yet let go, in the order of their instants.
    std::list<Slot *> slots;
};

RequestThrottler::RequestThrottler(std::chrono::nanoseconds interval)
    : m_interval(interval)
    , m_bookings(std::make_shared<Slot::Bookings>())
{
}

std::shared_ptr<RequestThrottler::Slot> RequestThrottler::reserveSlot(Priority priority)
{
    auto slot = std::make_shared<Slot>();
    slot->m_bookings = m_bookings;
    Slot::Bookings &b = *m_bookings;
    std::lock_guard lock(b.mutex);
    const Clock::time_point now = Clock::now();
    // Slots whose instant has come are starting and stay where they are.
    const auto ahead = std::find_if(b.slots.begin(), b.slots.end(), [now](const Slot *s) { return s->m_start > now; });
    if (priority == Priority::Urgent && ahead != b.slots.end()) {
        slot->m_start = (*ahead)->m_start;
        for (auto it = ahead; it != b.slots.end(); ++it)
            (*it)->m_start += m_interval;
        b.nextAvailableTime += m_interval;
        b.slots.insert(ahead, slot.get());
        return slot;
    }
    slot->m_start = std::max(b.nextAvailableTime, now);
    b.nextAvailableTime = slot->m_start + m_interval;
    b.slots.push_back(slot.get());
    return slot;
}

RequestThrottler::Slot::~Slot()
{
    std::lock_guard lock(m_bookings->mutex);
    m_bookings->slots.remove(this);
}

std::chrono::nanoseconds RequestThrottler::Slot::remaining() const
{
    std::lock_guard lock(m_bookings->mutex);
    return std::max<std::chrono::nanoseconds>(m_start - Clock::now(), std::chrono::nanoseconds::zero());
}
