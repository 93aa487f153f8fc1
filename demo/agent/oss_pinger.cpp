#include "demo/agent/oss_pinger.h"

#include <algorithm>

namespace qv_demo {
namespace {

constexpr int kMostFailures = 2;

}  // namespace

struct OssPinger::State : CallingThread::Shared {
    State(const Ems& ems_in, std::chrono::seconds interval_in) : ems(ems_in), interval(interval_in) {}

    const Ems& ems;
    const std::chrono::seconds interval;
    std::map<SessionId, int> failures;  // of the thread alone
};

OssPinger::OssPinger(const Ems& ems, std::chrono::seconds interval)
    : state_(std::make_shared<State>(ems, std::max(interval, std::chrono::seconds(1)))),
      thread_(state_, [state = state_.get()](auto& lock) { Run(*state, lock); }) {}

void OssPinger::Run(State& state, std::unique_lock<std::mutex>& lock) {
    while (!state.changed.wait_for(lock, state.interval, [&] { return state.stop; })) {
        lock.unlock();
        std::map<SessionId, int> failures;
        for (const auto& session : state.ems.sessions.All()) {
            const int failed = Answers(*session) ? 0 : state.failures[session->id] + 1;
            if (failed >= kMostFailures) {
                state.ems.sessions.End(session->id, "the OSS does not answer");
            } else if (failed > 0) {
                failures[session->id] = failed;
            }
        }
        state.failures = failures;
        lock.lock();
    }
}

bool OssPinger::Answers(const Session& session) {
    try {
        session.client->ping();
        return true;
    } catch (const CORBA::Exception&) {
        return false;
    }
}

}  // namespace qv_demo
