#include "demo/agent/oss_pinger.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>

namespace qv_demo {
namespace {

constexpr std::chrono::seconds kLongestWait{2};
constexpr int kMostFailures = 2;

}  // namespace

struct OssPinger::State {
    State(const Ems& ems_in, std::chrono::seconds interval_in) : ems(ems_in), interval(interval_in) {}

    const Ems& ems;
    const std::chrono::seconds interval;
    std::mutex mutex;
    std::condition_variable changed;
    bool stop = false;
    bool ended = false;
    std::map<SessionId, int> failures;  // of the thread alone
};

OssPinger::OssPinger(const Ems& ems, std::chrono::seconds interval)
    : state_(std::make_shared<State>(ems, std::max(interval, std::chrono::seconds(1)))),
      thread_([state = state_] { Run(*state); }) {}

OssPinger::~OssPinger() {
    std::unique_lock<std::mutex> lock(state_->mutex);
    state_->stop = true;
    state_->changed.notify_all();
    const bool ended = state_->changed.wait_for(lock, kLongestWait, [this] { return state_->ended; });
    lock.unlock();
    if (ended) {
        thread_.join();
    } else {
        thread_.detach();
    }
}

void OssPinger::Run(State& state) {
    std::unique_lock<std::mutex> lock(state.mutex);
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
    state.ended = true;
    state.changed.notify_all();
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
