// The road of events to one consumer.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "services/notify/delivery/consumer_health.h"
#include "services/notify/delivery/consumer_port.h"
#include "services/notify/delivery/feed_report.h"
#include "services/notify/delivery/operator_log.h"
#include "services/notify/delivery/type_news.h"
#include "services/notify/delivery/work_pool.h"
#include "services/notify/queue/event_queue.h"

namespace qv_notify {

/// What became of the events of one consumer, since its proxy was made or the service started.
struct FeedCounts {
    std::uint64_t delivered = 0;
    std::uint64_t discarded = 0;  ///< for lack of room
    std::uint64_t expired = 0;
    std::uint64_t refused = 0;   ///< the consumer raised an exception again and again
    std::uint64_t in_doubt = 0;  ///< sent again, once or more often, although the consumer may have got them
};

/// One queue, and a job that delivers from it. No lock is held while the consumer is called. Any thread may
/// call.
class Feed : public Job {
  public:
    static constexpr std::chrono::milliseconds kPauseOfEnd{1000};

    struct Surroundings {
        /// Both outlive the feed, and so does what `done` and `gone` refer to; the pool may share the feed's
        /// ownership until it is stopped.
        WorkPool* pool = nullptr;
        OperatorLog* log = nullptr;
        /// The events are delivered, or never will be. Called without a lock, on the delivering or the adding
        /// thread; may block. Empty where nothing is kept.
        std::function<void(const std::vector<std::int64_t>& sequences)> done;
        /// The consumer is gone and its proxy is to be ended, which may close the feed. Called without a
        /// lock, on a thread of the pool, and again after kPauseOfEnd as long as it returns false.
        std::function<bool()> gone;
    };

    /// `path` names the proxy to the operator.
    Feed(std::string path, const QueuePolicy& policy, const RetryPolicy& retry, Surroundings around);

    /// From now on events go there. Replaces what was connected.
    void Connect(std::shared_ptr<ConsumerPort> port);
    bool Connected() const;
    /// Nothing is delivered from now on, and what waits is dropped; a call that runs is not waited for.
    void Close();

    void Add(const EventPtr& event);
    /// The consumer is told, in its turn, between events; together with what it has not been told yet.
    void Announce(const CosNotification::EventTypeSeq& added, const CosNotification::EventTypeSeq& removed);

    void Suspend();
    void Resume();
    bool Suspended() const;

    void SetPolicy(const QueuePolicy& policy);
    /// Events are collected for that long between two rounds of delivery, each of which takes what waits when
    /// it begins; 0: no pause.
    void SetPacing(std::chrono::nanoseconds interval);

    /// Drops one event by the discard policy; false when there is none.
    bool DiscardOne();

    std::size_t Depth() const;
    FeedCounts Counts() const;
    ConsumerState State() const;

    Next Run() override;
    bool Slow() const override { return m_slow.load(std::memory_order_relaxed); }

  private:
    enum class Step { kGoOn, kStop };
    enum class EndOfProxy { kNotWanted, kWanted, kDone };

    void BeginRound();
    bool RoundOver() const;
    bool MayRun(SteadyTime now) const;
    Next WhenToGoOn(SteadyTime now) const;
    Next EndProxy();
    Step DeliverOne(std::unique_lock<std::mutex>& lock);
    Step AnnounceOne(std::unique_lock<std::mutex>& lock);
    Step TakeOutcome(const EventPtr& event, const CallOutcome& outcome, std::vector<std::int64_t>& done);
    void NoteState(const std::string& reason);
    std::string Peer() const;
    void TellExpired(const std::vector<EventPtr>& events, std::vector<std::int64_t>& done);
    void TellDropped(const std::vector<EventPtr>& events, const std::string& why, std::uint64_t& count,
                     std::vector<std::int64_t>& done);
    void ReportDone(const std::vector<std::int64_t>& sequences) const;
    void ScheduleIfUseful();
    bool AnythingToDo() const;

    const Surroundings m_around;
    std::atomic<bool> m_slow{false};

    mutable std::mutex m_mutex;
    FeedReport m_report;
    EventQueue m_queue;
    ConsumerHealth m_health;
    std::shared_ptr<ConsumerPort> m_port;
    TypeNews m_news;
    std::chrono::nanoseconds m_pacing{0};
    SteadyTime m_next_round = SteadyTime::min();
    bool m_in_round = false;       // of pacing
    std::size_t m_round_left = 0;  // events of the round that still wait
    bool m_closed = false;
    EndOfProxy m_end = EndOfProxy::kNotWanted;
    EventPtr m_in_doubt;  // the last event of which that was told
    EventPtr m_refused;   // the event that the consumer raised an exception for last
    FeedCounts m_counts;
};

}  // namespace qv_notify
