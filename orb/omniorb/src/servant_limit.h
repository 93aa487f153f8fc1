// The bound on how many requests are in servants at the same time.
#pragma once

#include <condition_variable>
#include <mutex>

namespace qv_orb {

/// At most a given number of threads are inside at once. A thread that goes out into a call of its own steps
/// aside meanwhile and comes back ahead of those that wait to enter, so its servant goes on before new work
/// starts. Thread-safe, but for SetLimit.
class ServantLimit {
  public:
    /// 0 means no limit. Only while no thread is inside.
    void SetLimit(unsigned limit) { limit_ = limit; }
    bool limited() const { return limit_ != 0; }

    void Enter();
    void Leave();
    /// Comes back in after a Leave for an outgoing call; blocks while the limit is reached.
    void Return();
    /// How many threads wait to come back in.
    unsigned returning() const;

  private:
    unsigned limit_ = 0;
    mutable std::mutex mutex_;
    std::condition_variable may_enter_;
    std::condition_variable may_return_;
    unsigned inside_ = 0;
    unsigned returning_ = 0;
};

}  // namespace qv_orb
