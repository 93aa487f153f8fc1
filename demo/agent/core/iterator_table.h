#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "demo/agent/core/clock.h"
#include "demo/agent/core/session_table.h"

namespace qv_demo {

using IteratorId = std::uint64_t;

struct IteratorLimits {
    unsigned long max_all = 50;          ///< open at once in the whole agent
    unsigned long max_per_session = 20;  ///< open at once in one session
    std::chrono::seconds timeout{60};    ///< unused for longer: closed; 0 or less: never
};

/// Which iterators are open, for whom, and when they were last used. Not thread-safe; its owner guards it.
class IteratorTable {
  public:
    IteratorTable(IteratorLimits limits, Clock clock);

    /// The new iterator's id; nothing when one of the two limits is reached.
    std::optional<IteratorId> Open(SessionId session);

    /// Notes a use. False when the iterator is closed.
    bool Touch(IteratorId id);

    /// False when the iterator was closed already.
    bool Close(IteratorId id);

    /// Closes and returns all iterators of a session.
    std::vector<IteratorId> CloseSession(SessionId session);

    /// Closes and returns the iterators that nobody has used for longer than allowed.
    std::vector<IteratorId> TakeExpired();

    std::size_t size() const { return iterators_.size(); }

  private:
    struct Entry {
        SessionId session;
        TimePoint last_used;
    };

    template <class Condition>
    std::vector<IteratorId> Take(Condition condition);

    const IteratorLimits limits_;
    const Clock clock_;
    IteratorId next_id_ = 1;
    std::map<IteratorId, Entry> iterators_;
};

}  // namespace qv_demo
