#include "demo/agent/event_source.h"

#include <chrono>
#include <exception>
#include <utility>

#include "demo/agent/console.h"
#include "demo/agent/event_mapping.h"
#include "logging/corbalogutil.h"
#include "notification/supplier.h"
#include "time/timechange.h"

namespace qv_demo {

using std::chrono::steady_clock;

EventSource::EventSource(const Inventory& inventory, std::string ems, EventLedger& ledger)
    : inventory_(inventory), ems_(std::move(ems)), ledger_(ledger), thread_([this] { Run(); }) {}

EventSource::~EventSource() {
    Stop();
}

void EventSource::Stop() {
    {
        const std::lock_guard<std::mutex> guard(mutex_);
        stop_ = true;
    }
    changed_.notify_all();
    if (thread_.joinable()) {
        thread_.join();
    }
}

bool EventSource::Raise(std::uint32_t count, std::uint32_t per_second) {
    {
        const std::lock_guard<std::mutex> guard(mutex_);
        if (count > kMostAtOnce - waiting_) {
            return false;
        }
        waiting_ += count;
        per_second_ = per_second;
    }
    changed_.notify_all();
    return true;
}

void EventSource::Heartbeat() {
    PushNext(true);
}

void EventSource::Run() {
    std::unique_lock<std::mutex> lock(mutex_);
    while (!stop_) {
        changed_.wait(lock, [this] { return stop_ || waiting_ > 0; });
        auto due = steady_clock::now();
        std::uint32_t raised = 0;
        while (!changed_.wait_until(lock, due, [this] { return stop_; }) && waiting_ > 0) {
            // Where a push took longer than its share, the next ones follow at once.
            due += std::chrono::duration_cast<steady_clock::duration>(std::chrono::seconds(1)) / per_second_;
            --waiting_;
            ++raised;
            lock.unlock();
            PushNext(false);
            lock.lock();
        }
        if (raised > 0) {
            Say("events  raised " + std::to_string(raised) + ", noted in " + ledger_.path());
        }
    }
}

void EventSource::PushNext(bool heartbeat) try {
    const std::lock_guard<std::mutex> guard(push_mutex_);
    const std::uint32_t number = ++last_number_;
    const PlannedEvent planned = heartbeat ? PlanHeartbeat(number) : PlanEvent(number, inventory_);
    CosNotification::StructuredEvent event =
        ToStructuredEvent(planned, ems_, NS_CORBA::TimeChange::getTime());
    const bool sent = NS_CORBA::SuppilerMgr::Instance()->PushEvent(event) == 0;
    if (!ledger_.NoteEvent(planned, NotificationIdOf(event), sent) && !std::exchange(complained_, true)) {
        Say("events  the ledger " + ledger_.path() + " can't be written; events are missing there");
    }
} catch (CORBA::Exception& e) {
    TA_POS;
    NS_CORBA::TaException(e, "[EventSource::PushNext] Raised while an event was pushed");
}

}  // namespace qv_demo
