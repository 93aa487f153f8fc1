#include "services/notify/store/undone.h"

#include <utility>

namespace qv_notify {

Undone::Sequences Undone::Take() {
    const std::lock_guard<std::mutex> guard(m_lock);
    return std::exchange(m_waiting, {});
}

void Undone::PutBack(Sequences&& sequences) {
    const std::lock_guard<std::mutex> guard(m_lock);
    for (auto& [consumer, own] : sequences) {
        std::vector<std::int64_t>& waiting = m_waiting[consumer];
        waiting.insert(waiting.end(), own.begin(), own.end());
    }
}

}  // namespace qv_notify
