#include "services/notify/model/repetition_memory.h"

namespace qv_notify {

void RepetitionMemory::Restore(const std::vector<EventDigest>& last) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    for (const EventDigest& event : last) {
        m_digests.insert(event.digest);
    }
}

bool RepetitionMemory::Compares(SteadyTime now) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    if (m_digests.empty()) {
        return false;
    }
    if (m_pushes == 0) {
        m_until = now + kWindow;
    }
    if (m_pushes >= kFewestPushes && now >= m_until) {
        m_digests.clear();
        return false;
    }
    ++m_pushes;
    return true;
}

bool RepetitionMemory::Take(const std::string& digest) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    const auto found = m_digests.find(digest);
    if (found == m_digests.end()) {
        return false;
    }
    m_digests.erase(found);
    return true;
}

}  // namespace qv_notify
