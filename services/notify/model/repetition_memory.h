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
/// new ones. Compares pushes for kWindow from the first one on, and so long as there were fewer than
/// kFewestPushes: threads of a supplier that share a proxy don't wait for the one that has to repeat.
/// Any thread may call.
class RepetitionMemory {
  public:
    static constexpr std::chrono::seconds kWindow{10};
    static constexpr int kFewestPushes = 256;

    /// The events that were kept from the supplier last.
    void Restore(const std::vector<EventDigest>& last);

    /// To be asked ahead of each push, before its digest is made; false once none needs to be made any more.
    bool Compares(SteadyTime now);

    /// Whether the event is among those. Each one is taken once.
    bool Take(const std::string& digest);

  private:
    std::mutex m_mutex;
    std::unordered_multiset<std::string> m_digests;
    SteadyTime m_until = SteadyTime::min();  // min: no push yet
    int m_pushes = 0;
};

}  // namespace qv_notify
