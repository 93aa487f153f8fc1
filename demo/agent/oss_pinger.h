#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <mutex>

#include "demo/agent/calling_thread.h"
#include "demo/agent/ems.h"

namespace qv_demo {

/// Pings the OSSs' ends of the sessions and ends the session of one that failed to answer twice in a row. An
/// OSS whose machine is gone may keep its thread busy for minutes, which is why nothing else is done there.
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
