#pragma once

#include <cstddef>
#include <deque>
#include <map>
#include <string>
#include <unordered_set>

namespace qv_oss {

/// Counts events, and notices one that comes again. Not thread-safe.
class EventTally {
  public:
    /// An event that comes again after so many others isn't noticed.
    static constexpr std::size_t kRemembered = 100000;

    /// False when an event of that id was counted before; those without an id are always new.
    bool Count(const std::string& type, const std::string& id);

    void CountLoss() { ++losses_; }
    void CountCleared() { ++cleared_; }

    std::size_t events() const { return events_; }

    /// One line without its end, as "7 events: 5 NT_ALARM, 2 NT_HEARTBEAT; 0 of them came again; losses
    /// announced 1, cleared 1".
    std::string Summary() const;

  private:
    std::size_t events_ = 0;
    std::size_t again_ = 0;
    std::size_t losses_ = 0;
    std::size_t cleared_ = 0;
    std::map<std::string, std::size_t> by_type_;
    std::unordered_set<std::string> ids_;
    std::deque<std::string> order_;  // of ids_, oldest first
};

}  // namespace qv_oss
