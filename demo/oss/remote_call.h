#pragma once

#include <tao/ORB.h>

#include <chrono>
#include <future>
#include <string>
#include <thread>
#include <utility>

#include "demo/oss/problem.h"

namespace qv_oss {

/// Whom a call goes to: decides what a failure of it means.
enum class Peer { kNamingService, kFactory, kSession, kNotification };

/// Turns what the ORB or the EMS raised into a Problem. To be called in a handler; passes on what it doesn't
/// know.
[[noreturn]] void Explain(Peer peer, const std::string& what);

/// Ends the process: a call that hangs can't be taken back, and what it uses can't be taken from it.
[[noreturn]] void EndForTimeout(const std::string& what, std::chrono::milliseconds limit);

/// Makes calls to other processes and gives none of them longer than a limit.
class RemoteCaller {
  public:
    explicit RemoteCaller(std::chrono::milliseconds limit) : limit_(limit) {}

    std::chrono::milliseconds limit() const { return limit_; }

    /// Runs `call` and returns its result. `what` completes the sentences "… did not answer" and "… failed".
    /// Raises Problem; ends the process when the time is up.
    template <class Call>
    auto Run(Peer peer, const std::string& what, Call call) const -> decltype(call()) try {
        std::packaged_task<decltype(call())()> task(std::move(call));
        auto result = task.get_future();
        std::thread caller(std::move(task));
        if (result.wait_for(limit_) != std::future_status::ready) {
            EndForTimeout(what, limit_);
        }
        caller.join();
        return result.get();
    } catch (...) {
        Explain(peer, what);
    }

  private:
    const std::chrono::milliseconds limit_;
};

}  // namespace qv_oss
