#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace qv_notify {

/// Brings the write-ahead log of a store into its file from a thread of its own, so that who writes doesn't
/// wait for the disk. Any thread may call.
class Checkpointer {
  public:
    explicit Checkpointer(std::string path);
    /// Ends the thread, after what it is doing.
    ~Checkpointer();
    Checkpointer(const Checkpointer&) = delete;
    Checkpointer& operator=(const Checkpointer&) = delete;

    /// Has the thread do it soon.
    void Wake();

  private:
    void Work();

    const std::string m_path;
    std::mutex m_lock;
    std::condition_variable m_changed;
    bool m_wanted = false;
    bool m_ending = false;
    std::thread m_thread;  // last: it uses the others
};

}  // namespace qv_notify
