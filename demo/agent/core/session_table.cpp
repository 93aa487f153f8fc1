#include "demo/agent/core/session_table.h"

#include <algorithm>
#include <utility>

namespace qv_demo {

ReleaseStrategy ToReleaseStrategy(int configured) {
    return configured == 1 ? ReleaseStrategy::kFirstInFirstOut : ReleaseStrategy::kRefuseNewcomer;
}

SessionTable::SessionTable(SessionLimits limits, Clock clock) : limits_(limits), clock_(std::move(clock)) {}

SessionTable::Admission SessionTable::Admit(const std::string& identity) {
    Admission admission;
    const auto same = std::find_if(sessions_.begin(), sessions_.end(),
                                   [&](const auto& entry) { return entry.second.identity == identity; });
    if (same != sessions_.end()) {
        admission.evicted.push_back(same->first);
        sessions_.erase(same);
    }
    const auto limit = static_cast<std::size_t>(std::max(limits_.max_sessions, 1));
    if (sessions_.size() >= limit && limits_.strategy == ReleaseStrategy::kRefuseNewcomer) {
        return admission;
    }
    while (sessions_.size() >= limit) {
        admission.evicted.push_back(sessions_.begin()->first);
        sessions_.erase(sessions_.begin());
    }
    admission.admitted = true;
    admission.id = next_id_++;
    sessions_.emplace(admission.id, Entry{identity, clock_()});
    return admission;
}

bool SessionTable::Touch(SessionId id) {
    const auto found = sessions_.find(id);
    if (found == sessions_.end()) {
        return false;
    }
    found->second.last_heard = clock_();
    return true;
}

bool SessionTable::Remove(SessionId id) {
    return sessions_.erase(id) != 0;
}

std::vector<SessionId> SessionTable::TakeSilent() {
    std::vector<SessionId> silent;
    if (limits_.silent_time <= std::chrono::seconds::zero()) {
        return silent;
    }
    const TimePoint now = clock_();
    for (auto entry = sessions_.begin(); entry != sessions_.end();) {
        if (now - entry->second.last_heard > limits_.silent_time) {
            silent.push_back(entry->first);
            entry = sessions_.erase(entry);
        } else {
            ++entry;
        }
    }
    return silent;
}

}  // namespace qv_demo
