#include "demo/agent/loss_announcer.h"

#include <deque>

#include "demo/agent/console.h"
#include "logging/corbalogutil.h"

namespace qv_demo {

struct LossAnnouncer::Notice {
    bool begins = false;
    std::string time;
    std::string notification_id;
};

struct LossAnnouncer::State : CallingThread::Shared {
    explicit State(SessionDirectory& sessions_in) : sessions(sessions_in) {}

    SessionDirectory& sessions;
    std::deque<Notice> notices;
    bool losing = false;
};

LossAnnouncer::LossAnnouncer(SessionDirectory& sessions)
    : state_(std::make_shared<State>(sessions)),
      thread_(state_, [state = state_.get()](auto& lock) { Run(*state, lock); }) {}

void LossAnnouncer::Occurred(const std::string& time, const std::string& notification_id) {
    Post({true, time, notification_id});
}

void LossAnnouncer::Cleared(const std::string& time) {
    Post({false, time, ""});
}

void LossAnnouncer::Post(const Notice& notice) {
    const std::lock_guard<std::mutex> guard(state_->mutex);
    if (state_->losing != notice.begins) {
        state_->losing = notice.begins;
        state_->notices.push_back(notice);
        state_->changed.notify_all();
    }
}

void LossAnnouncer::Run(State& state, std::unique_lock<std::mutex>& lock) {
    for (;;) {
        state.changed.wait(lock, [&] { return state.stop || !state.notices.empty(); });
        if (state.stop) {
            return;
        }
        const Notice notice = state.notices.front();
        state.notices.pop_front();
        lock.unlock();
        Say(notice.begins ? "events  can't be sent since " + notice.time + ", first " + notice.notification_id
                          : "events  are sent again since " + notice.time);
        for (const auto& session : state.sessions.All()) {
            Tell(*session, notice);
        }
        lock.lock();
    }
}

void LossAnnouncer::Tell(const Session& session, const Notice& notice) {
    try {
        if (notice.begins) {
            session.client->eventLossOccurred(notice.time.c_str(), notice.notification_id.c_str());
        } else {
            session.client->eventLossCleared(notice.time.c_str());
        }
    } catch (CORBA::Exception& e) {
        TA_POS;
        NS_CORBA::TaException(e, "[LossAnnouncer::Tell] An OSS could not be told of lost events");
    }
}

}  // namespace qv_demo
