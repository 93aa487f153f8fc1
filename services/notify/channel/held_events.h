// How many events a channel holds, and how many it may.
#pragma once

#include <atomic>
#include <cstddef>
#include <memory>

#include "services/notify/queue/event.h"

namespace qv_notify {

/// Counts events for as long as some queue has them; an event that waits for several consumers counts once.
/// Any thread may call.
class HeldEvents {
  public:
    /// A counted event. The account stays until its last event has gone.
    static EventPtr Hold(const std::shared_ptr<HeldEvents>& account, std::unique_ptr<Event> event);

    std::size_t Events() const { return m_events.load(std::memory_order_relaxed); }
    std::size_t Bytes() const { return m_bytes.load(std::memory_order_relaxed); }

  private:
    std::atomic<std::size_t> m_events{0};
    std::atomic<std::size_t> m_bytes{0};
};

}  // namespace qv_notify
