#pragma once

#include <condition_variable>
#include <mutex>

namespace qv_demo {

/// Waits for the signals that end the agent: Ctrl-C, SIGTERM, SIGHUP. They are blocked in every thread; one
/// thread of this object takes them. A second one ends the process at once, whatever it is doing. One object
/// in a process, to be made before any other thread and to live as long as the process.
class StopSignal {
  public:
    StopSignal();
    StopSignal(const StopSignal&) = delete;
    StopSignal& operator=(const StopSignal&) = delete;

    /// Returns when the first signal has come.
    void Wait();

  private:
    void Take();

    std::mutex mutex_;
    std::condition_variable came_;
    bool stop_ = false;
};

}  // namespace qv_demo
