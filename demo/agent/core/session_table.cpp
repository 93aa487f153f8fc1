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
    if (const auto same = Find(identity)) {
        admission.evicted.push_back(Evict(sessions_.find(*same)));
    }
    const auto limit = static_cast<std::size_t>(std::max(limits_.max_sessions, 1));
    if (sessions_.size() >= limit && limits_.strategy == ReleaseStrategy::kRefuseNewcomer) {
        return admission;
    }
    while (sessions_.size() >= limit) {
        admission.evicted.push_back(Evict(sessions_.begin()));
    }
    admission.admitted = true;
    admission.id = next_id_++;
    sessions_.emplace(admission.id, Entry{identity, clock_()});
    by_identity_.emplace(identity, admission.id);
    return admission;
}

std::optional<SessionId> SessionTable::Find(const std::string& identity) const {
    const auto found = by_identity_.find(identity);
    return found == by_identity_.end() ? std::nullopt : std::optional<SessionId>(found->second);
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
    const auto found = sessions_.find(id);
    if (found == sessions_.end()) {
        return false;
    }
    Erase(found);
    return true;
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
            entry = Erase(entry);
        } else {
            ++entry;
        }
    }
    return silent;
}

SessionTable::Entries::iterator SessionTable::Erase(Entries::iterator session) {
    by_identity_.erase(session->second.identity);
    return sessions_.erase(session);
}

SessionId SessionTable::Evict(Entries::iterator session) {
    const SessionId id = session->first;
    Erase(session);
    return id;
}

}  // namespace qv_demo
