// What a supplier pushed just before the service ended.
#pragma once

#include <chrono>
#include <mutex>
#include <string>
#include <unordered_set>
#include <vector>

#include "services/notify/delivery/work_pool.h"
#include "services/notify/store/stored.h"

namespace qv_notify {

/// Tells events that a supplier pushes again, because the end of the service kept the answer from it, from
/// new ones. Compares what is pushed within kWindow of the start, for who repeats a call does so soon. An
/// event that stands among the last ones more than once, such as a heartbeat without an id or a time, is
/// never taken for a repetition: better it comes twice than not at all. Any thread may call.
class RepetitionMemory {
  public:
    static constexpr std::chrono::seconds kWindow{60};

    /// The events that were kept from the supplier last; `now` is when the service starts.
    void Restore(const std::vector<EventDigest>& last, SteadyTime now);

    /// To be asked ahead of each push, before its digest is made; false once none needs to be made any more.
    bool Compares(SteadyTime now);

    /// Whether the event is among those. Each one is taken once.
    bool Take(const std::string& digest);

  private:
    std::mutex m_mutex;
    std::unordered_set<std::string> m_digests;
    SteadyTime m_until = SteadyTime::min();
};

}  // namespace qv_notify
