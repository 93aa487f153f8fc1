#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "demo/agent/calling_thread.h"
#include "demo/agent/session_directory.h"

namespace qv_demo {

/// Tells the OSSs that are logged in when events begin to be lost, and when that is over. They are called
/// from a thread of this object, one after the other, and none of them for longer than some seconds.
/// Thread-safe.
class LossAnnouncer {
  public:
    /// `sessions` lives as long as the process.
    explicit LossAnnouncer(SessionDirectory& sessions);

    /// These take a note and return at once. Only the first loss of an outage is announced, and its end only
    /// when its beginning was.
    void Occurred(const std::string& time, const std::string& notification_id);
    void Cleared(const std::string& time);

    /// Announces no more. For one thread alone.
    void Stop() { thread_.Stop(); }

  private:
    struct Notice;
    struct State;
    static void Run(State& state, std::unique_lock<std::mutex>& lock);
    static void Tell(const Session& session, const Notice& notice);
    void Post(const Notice& notice);

    const std::shared_ptr<State> state_;
    CallingThread thread_;
};

}  // namespace qv_demo
