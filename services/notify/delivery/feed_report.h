// What the operator is told about the road of events to one consumer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "services/notify/delivery/consumer_health.h"
#include "services/notify/delivery/operator_log.h"

namespace qv_notify {

/// Makes the sentences; each names the consumer by its address, which may be empty, and by its proxy.
/// Used by one thread at a time.
class FeedReport {
  public:
    /// `path` names the proxy; `log` outlives this.
    FeedReport(std::string path, OperatorLog& log);

    /// The state last told; online at first.
    ConsumerState ToldState() const { return m_told; }
    /// `waiting` events are in the queue.
    void State(ConsumerState state, const std::string& consumer, const std::string& reason,
               std::size_t waiting);
    void Dropped(std::int64_t sequence, const std::string& consumer, const std::string& why,
                 std::size_t waiting, std::uint64_t so_far);
    void Expired(std::size_t events, const std::string& consumer, std::uint64_t so_far);
    /// The consumer may get the event twice.
    void InDoubt(std::int64_t sequence, const std::string& consumer, const std::string& reason);

  private:
    std::string Named(const std::string& consumer) const;

    const std::string m_path;
    OperatorLog& m_log;
    ConsumerState m_told = ConsumerState::kOnline;
};

}  // namespace qv_notify
