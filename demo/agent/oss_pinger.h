#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <mutex>

#include "demo/agent/calling_thread.h"
#include "demo/agent/ems.h"

namespace qv_demo {

/// Pings the OSSs' ends of the sessions and ends the session of one that failed to answer twice in a row. One
/// that doesn't answer keeps the pings of the others waiting for some seconds, which is why nothing else is
/// done in that thread.
class OssPinger {
  public:
    OssPinger(const Ems& ems, std::chrono::seconds interval);

  private:
    struct State;
    static void Run(State& state, std::unique_lock<std::mutex>& lock);
    static bool Answers(const Session& session);

    const std::shared_ptr<State> state_;
    CallingThread thread_;
};

}  // namespace qv_demo
