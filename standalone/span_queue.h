#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <vector>

namespace qv_standalone {

/// Spans on their way from the threads of requests to the one that takes them: at most `capacity`, further
/// ones are dropped and counted. Any thread may call any operation.
class SpanQueue {
  public:
    using Clock = std::chrono::steady_clock;

    explicit SpanQueue(std::size_t capacity) : m_capacity(capacity) {}

    /// Never waits for room. False when the span was dropped, because the queue is full or closed.
    bool Push(std::string&& span);

    /// Waits for a span, no longer than `idle`; then for company, no longer than `gather`, unless the queue
    /// is half full; then takes up to `max` spans, the oldest first. A closed queue doesn't wait. Empty when
    /// there is none.
    std::vector<std::string> Take(std::size_t max, Clock::duration idle, Clock::duration gather);

    /// No more spans are accepted; those accepted can still be taken.
    void Close();
    /// Closed, and all was taken.
    bool Finished() const;

    /// Counts a span as dropped that wasn't even offered.
    void CountDropped(std::uint64_t spans);
    /// How many spans were dropped since this was last called.
    std::uint64_t TakeDropped();

  private:
    /// What the taker sleeps for; who brings it about wakes it.
    enum class Awaited { kNothing, kAny, kHalf };

    const std::size_t m_capacity;
    mutable std::mutex m_lock;  // guards what follows
    std::condition_variable m_wake;
    std::deque<std::string> m_spans;
    Awaited m_awaited = Awaited::kNothing;
    bool m_closed = false;
    std::uint64_t m_dropped = 0;
};

}  // namespace qv_standalone
