#pragma once

#include <memory>
#include <string>
#include <thread>

#include "demo/agent/session_directory.h"

namespace qv_demo {

/// Tells the OSSs that are logged in when events begin to be lost, and when that is over. They are called
/// from a thread of this object, one after the other, and none of them for longer than some seconds.
/// Thread-safe.
class LossAnnouncer {
  public:
    /// `sessions` lives as long as the process.
    explicit LossAnnouncer(SessionDirectory& sessions);

    ~LossAnnouncer();
    LossAnnouncer(const LossAnnouncer&) = delete;
    LossAnnouncer& operator=(const LossAnnouncer&) = delete;

    /// These take a note and return at once. Only the first loss of an outage is announced, and its end only
    /// when its beginning was.
    void Occurred(const std::string& time, const std::string& notification_id);
    void Cleared(const std::string& time);

    /// Announces no more. Waits two seconds at most for a call that is under way; the thread is left to
    /// itself after that. For one thread alone.
    void Stop();

  private:
    struct Notice;
    struct State;
    static void Run(State& state);
    static void Tell(const Session& session, const Notice& notice);
    void Post(const Notice& notice);

    const std::shared_ptr<State> state_;
    std::thread thread_;
};

}  // namespace qv_demo
