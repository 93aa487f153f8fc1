// The commands about events.
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <memory>

#include "demo/oss/commands.h"
#include "demo/oss/event_subscription.h"
#include "demo/oss/extension_client.h"
#include "demo/oss/stop_request.h"
#include "demo/oss/text.h"

namespace qv_oss {
namespace {

using std::chrono::steady_clock;

constexpr std::chrono::milliseconds kLook{50};
constexpr std::chrono::seconds kPingEvery{30};  // keeps the session from ending for silence
constexpr std::chrono::seconds kTryEvery{1};

bool ColoursWanted() {
    const char* const refused = std::getenv("NO_COLOR");
    return isatty(STDOUT_FILENO) == 1 && (refused == nullptr || *refused == '\0');
}

/// Lets the watch hear of losses for as long as this object lives.
class LossNews {
  public:
    LossNews(const OssSession& session, EventWatch& watch) : session_(session) {
        session_.TellLossesTo(&watch);
    }
    ~LossNews() { session_.TellLossesTo(nullptr); }
    LossNews(const LossNews&) = delete;
    LossNews& operator=(const LossNews&) = delete;

  private:
    const OssSession& session_;
};

/// Listens until enough has come, the time is up, or the process is asked to end.
class Listener {
  public:
    Listener(const OssOrb& orb, const RemoteCaller& caller, const OssSession& session,
             const Settings& settings, EventWatch& watch)
        : orb_(orb), caller_(caller), session_(session), settings_(settings), watch_(watch) {
        Subscribe();
        watch_.Remark("listening");
    }

    void Listen() {
        const auto end = steady_clock::now() + settings_.listen_for;
        auto ping = steady_clock::now() + kPingEvery;
        while (!Enough() && (settings_.listen_for.count() == 0 || steady_clock::now() < end) &&
               !StopRequested(kLook)) {
            if (watch_.OutputFailed()) {
                throw Problem(kUnexpected, "the events can't be written to standard output");
            }
            if (steady_clock::now() >= ping) {
                session_.Ping();
                ping += kPingEvery;
            }
            RenewIfLost();
        }
    }

    /// Why the subscription could not be ended; empty when it was.
    std::string End() {
        try {
            subscription_->End();
            return "";
        } catch (const Problem& problem) {
            return problem.what();
        }
    }

  private:
    bool Enough() const { return settings_.event_count != 0 && watch_.events() >= settings_.event_count; }

    void Subscribe() {
        subscription_ = std::make_unique<EventSubscription>(
            orb_, caller_, session_, EventInterest{settings_.filter, settings_.types}, watch_);
    }

    /// Once events arrive again, they may do so through another channel, which knows nothing of this OSS.
    void RenewIfLost() {
        doubtful_ = watch_.TakeCleared() || doubtful_;
        if (!doubtful_ || steady_clock::now() < next_try_) {
            return;
        }
        next_try_ = steady_clock::now() + kTryEvery;
        try {
            if (!subscription_->Stands()) {
                Subscribe();
                watch_.Remark("listening again, to a new event channel");
            }
            doubtful_ = false;
            failed_before_ = false;
        } catch (const Problem& problem) {
            if (problem.code() != kNoEvents) {
                throw;
            }
            // The first call may merely find that the connection of before has gone.
            if (failed_before_) {
                watch_.Remark(std::string("not listening: ") + problem.what());
            }
            failed_before_ = true;
        }
    }

    const OssOrb& orb_;
    const RemoteCaller& caller_;
    const OssSession& session_;
    const Settings& settings_;
    EventWatch& watch_;
    std::unique_ptr<EventSubscription> subscription_;
    bool doubtful_ = false;
    bool failed_before_ = false;
    steady_clock::time_point next_try_;
};

}  // namespace

void Commands::Events() {
    NamingClient naming(orb_.orb(), settings_, caller_);
    EventWatch watch(ColoursWanted());
    OssSession session = LogIn(naming);
    const LossNews news(session, watch);
    Listener listener(orb_, caller_, session, settings_, watch);
    try {
        listener.Listen();
    } catch (const Problem&) {
        listener.End();
        watch.Remark(watch.Summary());
        throw;
    }
    const std::string unfinished = listener.End();
    session.LogOut();
    watch.Remark(watch.Summary());
    if (!unfinished.empty()) {
        throw Problem(kNoEvents, "the subscription could not be ended, and a persistent channel keeps it: " +
                                     unfinished);
    }
}

void Commands::Raise() {
    NamingClient naming(orb_.orb(), settings_, caller_);
    OssSession session = LogIn(naming);
    ExtensionClient(session, caller_).RaiseEvents(settings_.raise_count, settings_.raise_rate);
    std::cout << "the EMS raises " << settings_.raise_count << " events, " << settings_.raise_rate
              << " in a second" << std::endl;
    session.LogOut();
}

}  // namespace qv_oss
