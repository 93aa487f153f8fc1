#include "services/notify/model/repetition_memory.h"

namespace qv_notify {

void RepetitionMemory::Restore(const std::vector<EventDigest>& last, SteadyTime now) {
    std::unordered_set<std::string> more_than_once;
    const std::lock_guard<std::mutex> guard(m_mutex);
    for (const EventDigest& event : last) {
        if (!m_digests.insert(event.digest).second) {
            more_than_once.insert(event.digest);
        }
    }
    for (const std::string& digest : more_than_once) {
        m_digests.erase(digest);
    }
    m_until = now + kWindow;
}

bool RepetitionMemory::Compares(SteadyTime now) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    if (now >= m_until) {
        m_digests.clear();
    }
    return !m_digests.empty();
}

bool RepetitionMemory::Take(const std::string& digest) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_digests.erase(digest) > 0;
}

}  // namespace qv_notify
