#include "services/notify/channel/held_events.h"

#include <utility>

namespace qv_notify {

EventPtr HeldEvents::Hold(const std::shared_ptr<HeldEvents>& account, std::unique_ptr<Event> event) {
    const std::size_t bytes = event->bytes;
    account->m_events.fetch_add(1, std::memory_order_relaxed);
    account->m_bytes.fetch_add(bytes, std::memory_order_relaxed);
    return EventPtr(event.release(), [account, bytes](const Event* ended) {
        delete ended;
        account->m_events.fetch_sub(1, std::memory_order_relaxed);
        account->m_bytes.fetch_sub(bytes, std::memory_order_relaxed);
    });
}

}  // namespace qv_notify
