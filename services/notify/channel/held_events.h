// How many events a channel holds, and how many it may.
#pragma once

#include <atomic>
#include <cstddef>
#include <memory>

#include "services/notify/queue/event.h"

namespace qv_notify {

/// Counts events for as long as some queue has them; an event that waits for several consumers counts once.
/// When most of a large backlog has gone, the memory that the heap kept of it goes back to the system. Any
/// thread may call.
class HeldEvents {
  public:
    /// A counted event. The account stays until its last event has gone.
    static EventPtr Hold(const std::shared_ptr<HeldEvents>& account, std::unique_ptr<Event> event);

    std::size_t Events() const { return m_events.load(std::memory_order_relaxed); }
    std::size_t Bytes() const { return m_bytes.load(std::memory_order_relaxed); }

  private:
    void Add(std::size_t bytes);
    void Remove(std::size_t bytes);

    std::atomic<std::size_t> m_events{0};
    std::atomic<std::size_t> m_bytes{0};
    std::atomic<std::size_t> m_most_bytes{0};  ///< since memory was given back
};

}  // namespace qv_notify
