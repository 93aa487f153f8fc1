#include "services/notify/channel/held_events.h"

#include <malloc.h>

#include <utility>

namespace qv_notify {

namespace {

constexpr std::size_t kLarge = std::size_t{16} << 20;  // a backlog in bytes
constexpr std::size_t kMost = 4;                       // most has gone when no more than a quarter is left

}  // namespace

EventPtr HeldEvents::Hold(const std::shared_ptr<HeldEvents>& account, std::unique_ptr<Event> event) {
    const std::size_t bytes = event->bytes;
    account->Add(bytes);
    return EventPtr(event.release(), [account, bytes](const Event* ended) {
        delete ended;
        account->Remove(bytes);
    });
}

void HeldEvents::Add(std::size_t bytes) {
    m_events.fetch_add(1, std::memory_order_relaxed);
    const std::size_t now = m_bytes.fetch_add(bytes, std::memory_order_relaxed) + bytes;
    std::size_t most = m_most_bytes.load(std::memory_order_relaxed);
    while (most < now && !m_most_bytes.compare_exchange_weak(most, now, std::memory_order_relaxed)) {
    }
}

void HeldEvents::Remove(std::size_t bytes) {
    m_events.fetch_sub(1, std::memory_order_relaxed);
    const std::size_t left = m_bytes.fetch_sub(bytes, std::memory_order_relaxed) - bytes;
    std::size_t most = m_most_bytes.load(std::memory_order_relaxed);
    // One thread gives back, and not again until as much has gone once more.
    if (most >= kLarge && left <= most / kMost &&
        m_most_bytes.compare_exchange_strong(most, left, std::memory_order_relaxed)) {
        malloc_trim(0);
    }
}

}  // namespace qv_notify
