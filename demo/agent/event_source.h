#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>

#include "demo/agent/core/event_ledger.h"
#include "demo/agent/core/inventory.h"

namespace qv_demo {

/// Makes up events of the inventory's elements and pushes them into the pipeline, one after the other, so
/// that their numbers, the ledger and the channel have them in one order. Thread-safe.
class EventSource {
  public:
    static constexpr std::uint32_t kMostAtOnce = 1000000;
    static constexpr std::uint32_t kMostPerSecond = 10000;

    /// `inventory` and `ledger` outlive this object. The pipeline must be in place before the first event.
    EventSource(const Inventory& inventory, std::string ems, EventLedger& ledger);
    ~EventSource();
    EventSource(const EventSource&) = delete;
    EventSource& operator=(const EventSource&) = delete;

    /// Raises `count` events more, `per_second` of them in a second (1 to kMostPerSecond), in a thread of
    /// this object. False, and nothing, when more than kMostAtOnce would wait to be raised.
    bool Raise(std::uint32_t count, std::uint32_t per_second);

    /// Pushes a heartbeat on the caller's thread, which must not hold the pipeline's lock.
    void Heartbeat();

    /// Ends the thread; what is still to be raised stays so.
    void Stop();

  private:
    void Run();
    void PushNext(bool heartbeat);

    const Inventory& inventory_;
    const std::string ems_;
    EventLedger& ledger_;

    std::mutex push_mutex_;  // held while an event is pushed
    std::uint32_t last_number_ = 0;
    bool complained_ = false;

    std::mutex mutex_;
    std::condition_variable changed_;
    std::uint32_t waiting_ = 0;
    std::uint32_t per_second_ = 1;
    bool stop_ = false;
    std::thread thread_;
};

}  // namespace qv_demo
