#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

#include "demo/agent/core/event_ledger.h"
#include "demo/agent/event_source.h"
#include "demo/agent/loss_announcer.h"
#include "notification/call_back_obj.h"

namespace qv_demo {

/// What the library's pipeline asks of the agent.
///
/// Thread safety: any thread may call, with the pipeline's lock held but for HeartBeating. So nothing in here
/// waits or pushes, except for the heartbeat.
class EventCallBacks : public NS_CORBA::CallBackObj {
  public:
    EventCallBacks(EventSource& source, LossAnnouncer& announcer, EventLedger& ledger)
        : source_(source), announcer_(announcer), ledger_(ledger) {}

    void EventLossCleared(const std::string& time) override;
    void EventLossOccurred(const std::string& time, const std::string& notification_id) override;
    void StructuredEventToStr(std::stringstream& out, const CosNotification::StructuredEvent& event) override;
    void HeartBeating() override;

  private:
    EventSource& source_;
    LossAnnouncer& announcer_;
    EventLedger& ledger_;
};

/// The agent's side of the notification pipeline, in the order that the library asks for. Used by one thread,
/// after the servants are there and before requests are let in.
class EventSending {
  public:
    /// Raises LedgerError when the ledger "events.csv" in `log_dir` can't be written.
    EventSending(const Inventory& inventory, const std::string& ems, SessionDirectory& sessions,
                 const std::string& log_dir);
    ~EventSending();
    EventSending(const EventSending&) = delete;
    EventSending& operator=(const EventSending&) = delete;

    /// Connects to the event channel, or goes on without it, and looks after it every `interval` from then
    /// on. False when the library's threads can't be started.
    bool Start(std::chrono::seconds interval);

    /// Ends events and supervision and leaves the channel. To be called while the ORB still runs.
    void Stop();

    EventSource& source() { return source_; }

  private:
    void LookAfterChannel(std::chrono::seconds interval);

    EventLedger ledger_;
    EventSource source_;
    LossAnnouncer announcer_;
    EventCallBacks call_backs_;
    bool started_ = false;

    std::mutex mutex_;
    std::condition_variable stopped_;
    bool stop_ = false;
    std::thread supervisor_;
};

}  // namespace qv_demo
