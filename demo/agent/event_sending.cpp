#include "demo/agent/event_sending.h"

#include <utility>

#include "demo/agent/console.h"
#include "demo/agent/event_mapping.h"
#include "notification/supplier.h"

namespace qv_demo {

using NS_CORBA::SuppilerMgr;

void EventCallBacks::EventLossCleared(const std::string& time) {
    ledger_.NoteCleared(time);
    announcer_.Cleared(time);
}

void EventCallBacks::EventLossOccurred(const std::string& time, const std::string& notification_id) {
    ledger_.NoteLoss(time, notification_id);
    announcer_.Occurred(time, notification_id);
}

void EventCallBacks::StructuredEventToStr(std::stringstream& out,
                                          const CosNotification::StructuredEvent& event) {
    AppendAlarmText(out, event);
}

void EventCallBacks::HeartBeating() {
    source_.Heartbeat();
}

EventSending::EventSending(const Inventory& inventory, const std::string& ems, SessionDirectory& sessions,
                           const std::string& log_dir)
    : ledger_(log_dir + "/events.csv"),
      source_(inventory, ems, ledger_),
      announcer_(sessions),
      call_backs_(source_, announcer_, ledger_) {}

EventSending::~EventSending() {
    Stop();
}

bool EventSending::Start(std::chrono::seconds interval) {
    SuppilerMgr* const manager = SuppilerMgr::Instance();
    if (manager == nullptr) {
        return false;
    }
    manager->m_pCallBackObj = &call_backs_;
    if (manager->open() == -1) {
        return false;
    }
    started_ = true;
    Say(manager->NotifyServiceInit() == 0
            ? "events          go through the notification service; noted in " + ledger_.path()
            : "events          wait for the notification service, which can't be reached yet");
    supervisor_ = std::thread([this, interval] { LookAfterChannel(interval); });
    return true;
}

void EventSending::LookAfterChannel(std::chrono::seconds interval) {
    std::unique_lock<std::mutex> lock(mutex_);
    while (!stopped_.wait_for(lock, interval, [this] { return stop_; })) {
        lock.unlock();
        SuppilerMgr::Instance()->check_channel_valid();
        lock.lock();
    }
}

void EventSending::Stop() {
    source_.Stop();
    {
        const std::lock_guard<std::mutex> guard(mutex_);
        stop_ = true;
    }
    stopped_.notify_all();
    if (supervisor_.joinable()) {
        supervisor_.join();
    }
    if (std::exchange(started_, false)) {
        SuppilerMgr::Instance()->ExitThread();
    }
    announcer_.Stop();
}

}  // namespace qv_demo
