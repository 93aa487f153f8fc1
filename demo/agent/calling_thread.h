#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

namespace qv_demo {

/// A thread that calls OSSs, none of them for longer than five seconds. A stop waits two seconds at most for
/// calls that are under way and leaves the thread to itself after that. To be made once the agent has its
/// ORB. For one thread alone.
class CallingThread {
  public:
    /// What the work and its owner share; lives for as long as either.
    struct Shared {
        std::mutex mutex;
        std::condition_variable changed;
        bool stop = false;

      private:
        friend class CallingThread;
        bool ended = false;
    };

    /// `work` is called with the mutex locked, has to be back soon after `stop` was set, and may use nothing
    /// of its owner but what is shared.
    using Work = std::function<void(std::unique_lock<std::mutex>&)>;
    CallingThread(std::shared_ptr<Shared> shared, Work work);
    /// Stops.
    ~CallingThread();
    CallingThread(const CallingThread&) = delete;
    CallingThread& operator=(const CallingThread&) = delete;

    void Stop();

  private:
    const std::shared_ptr<Shared> shared_;
    std::thread thread_;
};

}  // namespace qv_demo
