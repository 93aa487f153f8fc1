#include "standalone/lockout.h"

namespace qv_standalone {

bool Lockout::IsLocked(const std::string& user, Time now) {
    std::lock_guard<std::mutex> guard(m_lock);
    const auto found = m_entries.find(user);
    if (found == m_entries.end()) {
        return false;
    }
    if (now - found->second.last >= m_lock_time) {
        m_entries.erase(found);
        return false;
    }
    return found->second.failures >= m_max_failures;
}

bool Lockout::Failed(const std::string& user, Time now) {
    std::lock_guard<std::mutex> guard(m_lock);
    if (m_entries.count(user) == 0 && m_entries.size() >= kMostNames) {
        MakeRoom(now);
    }
    Entry& entry = m_entries[user];
    if (now - entry.last >= m_lock_time) {
        entry.failures = 0;
    }
    entry.last = now;
    return ++entry.failures == m_max_failures;
}

void Lockout::Succeeded(const std::string& user) {
    std::lock_guard<std::mutex> guard(m_lock);
    m_entries.erase(user);
}

std::size_t Lockout::Names() const {
    std::lock_guard<std::mutex> guard(m_lock);
    return m_entries.size();
}

/// Under the lock: forgets what has expired, otherwise the name that failed longest ago.
void Lockout::MakeRoom(Time now) {
    auto oldest = m_entries.end();
    for (auto it = m_entries.begin(); it != m_entries.end();) {
        if (now - it->second.last >= m_lock_time) {
            it = m_entries.erase(it);
            continue;
        }
        if (oldest == m_entries.end() || it->second.last < oldest->second.last) {
            oldest = it;
        }
        ++it;
    }
    if (m_entries.size() >= kMostNames) {
        m_entries.erase(oldest);
    }
}

}  // namespace qv_standalone
