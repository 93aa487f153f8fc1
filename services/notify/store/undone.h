#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace qv_notify {

/// What consumers are done with and could not be written down, until it is. As long as the process runs
/// nobody needs it; after a restart these events would be delivered again. Any thread may call.
class Undone {
  public:
    using Sequences = std::map<std::string, std::vector<std::int64_t>>;  // by consumer

    /// All there is, which is the caller's to write down or to put back.
    Sequences Take();
    void PutBack(Sequences&& sequences);

  private:
    std::mutex m_lock;
    Sequences m_waiting;
};

}  // namespace qv_notify
