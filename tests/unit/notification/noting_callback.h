#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "notification/call_back_obj.h"

namespace qv_test {

/// A bundle's callback object that notes its calls and runs a hook in each, which may raise. Any thread may
/// call it; hooks are set before.
class NotingCallBack : public NS_CORBA::CallBackObj {
  public:
    using Calls = std::vector<std::string>;

    void EventLossCleared(const std::string& time) override {
        Note("cleared", time);
        Run(onCleared);
    }
    void EventLossOccurred(const std::string& time, const std::string& id) override {
        Note("loss", time, id);
        Run(onLoss);
    }
    void StructuredEventToStr(std::stringstream& stream, const CosNotification::StructuredEvent&) override {
        Note("text", "");
        stream << alarmText;
        Run(onText);
    }
    void HeartBeating() override {
        Note("heartbeat", "");
        Run(onHeartBeat);
    }

    /// What was called, in order: "cleared", "loss", "text", "heartbeat".
    Calls Seen() const {
        const std::lock_guard<std::mutex> guard(m_lock);
        return m_calls;
    }
    /// The times that came with the calls, empty where there is none.
    Calls Times() const {
        const std::lock_guard<std::mutex> guard(m_lock);
        return m_times;
    }
    /// The ids that came with "loss".
    Calls LostIds() const {
        const std::lock_guard<std::mutex> guard(m_lock);
        return m_ids;
    }
    void Clear() {
        const std::lock_guard<std::mutex> guard(m_lock);
        m_calls.clear();
        m_times.clear();
        m_ids.clear();
    }

    std::string alarmText;
    std::function<void()> onCleared;
    std::function<void()> onLoss;
    std::function<void()> onText;
    std::function<void()> onHeartBeat;

  private:
    void Note(const std::string& call, const std::string& time) {
        const std::lock_guard<std::mutex> guard(m_lock);
        m_calls.push_back(call);
        m_times.push_back(time);
    }
    void Note(const std::string& call, const std::string& time, const std::string& id) {
        Note(call, time);
        const std::lock_guard<std::mutex> guard(m_lock);
        m_ids.push_back(id);
    }
    static void Run(const std::function<void()>& hook) {
        if (hook) {
            hook();
        }
    }

    mutable std::mutex m_lock;
    Calls m_calls;
    Calls m_times;
    Calls m_ids;
};

}  // namespace qv_test
