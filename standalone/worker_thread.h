#pragma once

#include <chrono>
#include <functional>
#include <future>
#include <thread>

namespace qv_standalone {

/// A thread that takes no signals, whose end can be waited for with a limit. One thread uses the object.
class WorkerThread {
  public:
    WorkerThread() = default;
    /// Waits for the thread's end.
    ~WorkerThread();
    WorkerThread(const WorkerThread&) = delete;
    WorkerThread& operator=(const WorkerThread&) = delete;

    /// To be called once. Throws std::system_error when there is no thread to be had.
    /// @param name what the system shows for it, up to 15 characters
    void Start(const char* name, std::function<void()> work);
    bool Started() const { return m_thread.joinable(); }

    /// Whether the thread has ended, or was never started, after this long at most.
    bool WaitForEnd(std::chrono::steady_clock::time_point limit);

  private:
    std::future<void> m_end;
    std::thread m_thread;
};

}  // namespace qv_standalone
