#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "demo/agent/core/clock.h"

namespace qv_demo {

using SessionId = std::uint64_t;

/// What happens to a newcomer when as many sessions are open as are allowed.
enum class ReleaseStrategy {
    kRefuseNewcomer,  ///< the newcomer is turned away
    kFirstInFirstOut  ///< the session that was opened first makes room
};

/// The strategy of the setting "StrategyOfReleasingSession": 1 is first in, first out; any other value takes
/// the course that harms nobody who is logged in.
ReleaseStrategy ToReleaseStrategy(int configured);

struct SessionLimits {
    int max_sessions = 10;  ///< below 1 counts as 1
    ReleaseStrategy strategy = ReleaseStrategy::kFirstInFirstOut;
    std::chrono::seconds silent_time{3600};  ///< 0 or less: silence never ends a session
};

/// Who is logged in and since when: the rules of admission and of silence, without any object of the ORB.
/// Not thread-safe; its owner guards it.
class SessionTable {
  public:
    SessionTable(SessionLimits limits, Clock clock);

    struct Admission {
        bool admitted = false;
        SessionId id = 0;  ///< valid when admitted
        std::vector<SessionId>
            evicted;  ///< sessions that are gone from the table now, for the caller to close
    };

    /// Lets the client of that identity in. An earlier session of the same identity is always evicted: one
    /// user on one connection is one OSS, and it has just started anew.
    Admission Admit(const std::string& identity);

    /// The session of that identity, nothing when there is none.
    std::optional<SessionId> Find(const std::string& identity) const;

    /// Notes that the session was heard of. False when there is no such session.
    bool Touch(SessionId id);

    /// Takes the session out. False when there was none.
    bool Remove(SessionId id);

    /// Takes out and returns the sessions that have been silent for longer than allowed.
    std::vector<SessionId> TakeSilent();

    std::size_t size() const { return sessions_.size(); }

  private:
    struct Entry {
        std::string identity;
        TimePoint last_heard;
    };
    using Entries = std::map<SessionId, Entry>;

    /// Takes the session out and returns what follows it.
    Entries::iterator Erase(Entries::iterator session);
    SessionId Evict(Entries::iterator session);

    const SessionLimits limits_;
    const Clock clock_;
    SessionId next_id_ = 1;
    Entries sessions_;  // ids rise, so the map's order is the order of opening
    std::unordered_map<std::string, SessionId> by_identity_;
};

}  // namespace qv_demo
