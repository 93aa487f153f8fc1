#include "demo/agent/core/iterator_table.h"

#include <algorithm>
#include <utility>

namespace qv_demo {

IteratorTable::IteratorTable(IteratorLimits limits, Clock clock)
    : limits_(limits), clock_(std::move(clock)) {}

std::optional<IteratorId> IteratorTable::Open(SessionId session) {
    const auto of_session = std::count_if(iterators_.begin(), iterators_.end(), [session](const auto& entry) {
        return entry.second.session == session;
    });
    if (iterators_.size() >= limits_.max_all ||
        static_cast<unsigned long>(of_session) >= limits_.max_per_session) {
        return std::nullopt;
    }
    const IteratorId id = next_id_++;
    iterators_.emplace(id, Entry{session, clock_()});
    return id;
}

bool IteratorTable::Touch(IteratorId id) {
    const auto found = iterators_.find(id);
    if (found == iterators_.end()) {
        return false;
    }
    found->second.last_used = clock_();
    return true;
}

bool IteratorTable::Close(IteratorId id) {
    return iterators_.erase(id) != 0;
}

template <class Condition>
std::vector<IteratorId> IteratorTable::Take(Condition condition) {
    std::vector<IteratorId> taken;
    for (auto entry = iterators_.begin(); entry != iterators_.end();) {
        if (condition(entry->second)) {
            taken.push_back(entry->first);
            entry = iterators_.erase(entry);
        } else {
            ++entry;
        }
    }
    return taken;
}

std::vector<IteratorId> IteratorTable::CloseSession(SessionId session) {
    return Take([session](const Entry& entry) { return entry.session == session; });
}

std::vector<IteratorId> IteratorTable::TakeExpired() {
    if (limits_.timeout <= std::chrono::seconds::zero()) {
        return {};
    }
    const TimePoint now = clock_();
    return Take([&](const Entry& entry) { return now - entry.last_used > limits_.timeout; });
}

}  // namespace qv_demo
