#pragma once

#include <notification/call_back_obj.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

/// The agent's way to the event channel: sends alarms, hears of outages, looks after the channel from a
/// thread of its own. One object in a process. Thread-safe but for Start and Stop.
class Events : public NS_CORBA::CallBackObj {
  public:
    ~Events() override { Stop(); }

    /// Connects to the channel, or goes on without it for now. False when the threads can't be started.
    bool Start();
    /// Leaves the channel. To be called while the ORB still runs.
    void Stop();

    void SendAlarm(const std::string& station, const std::string& text);

    // CallBackObj: called with the buffer's lock held, so nothing in here waits or pushes.
    void EventLossOccurred(const std::string& time, const std::string& notification_id) override;
    void EventLossCleared(const std::string& time) override;
    void StructuredEventToStr(std::stringstream& out, const CosNotification::StructuredEvent& event) override;
    void HeartBeating() override {}

  private:
    void LookAfterChannel();

    std::atomic<bool> lost_{false};
    std::mutex mutex_;
    std::condition_variable changed_;
    bool stop_ = true;
    std::thread supervisor_;
};
