#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <thread>

#include "demo/agent/ems.h"

namespace qv_demo {

/// Pings the OSSs' ends of the sessions and ends the session of one that failed to answer twice in a row. An
/// OSS whose machine is gone may keep its thread busy for minutes, which is why nothing else is done there.
class OssPinger {
  public:
    OssPinger(const Ems& ems, std::chrono::seconds interval);

    /// Waits two seconds at most for a ping that is under way; the thread is left to itself after that.
    ~OssPinger();
    OssPinger(const OssPinger&) = delete;
    OssPinger& operator=(const OssPinger&) = delete;

  private:
    struct State;
    static void Run(State& state);
    static bool Answers(const Session& session);

    const std::shared_ptr<State> state_;
    std::thread thread_;
};

}  // namespace qv_demo
