// Where the events of a channel's suppliers become events for consumers.
#pragma once

#include <cstdint>
#include <deque>
#include <list>
#include <memory>
#include <mutex>
#include <string>

#include "services/notify/channel/routes.h"
#include "services/notify/delivery/operator_log.h"
#include "services/notify/delivery/work_pool.h"
#include "services/notify/store/store.h"

namespace qv_notify {

/// Takes events in the order in which suppliers push them, finds out for whom they are, and hands them to the
/// feeds. For a few consumers that is done at once; where there are more, no supplier waits for the filters
/// and for their number. What the store has to know of it is committed before a consumer can get the event,
/// so that a crash makes nothing happen twice. Any thread may call.
class Intake : public Job {
  public:
    /// All have to outlive the intake, the store may be null.
    Intake(std::string channel, std::shared_ptr<const Routes> routes, WorkPool& pool, Store* store,
           OperatorLog& log);

    /// The store is to know for whom it is, when the event is kept there.
    void Add(EventPtr event);
    /// The events that no feed has yet.
    std::size_t Depth() const;
    enum class Discarded { kOne, kOnlyKeptOnesWait, kNothingWaits };
    /// Drops the oldest event that waits and isn't kept, and tells the operator. One that is kept stays:
    /// nobody has found out yet for which consumers the store has it.
    Discarded DiscardOne();
    /// Drops what waits.
    void Close();

    Next Run() override;

  private:
    struct Dispatch {
        EventPtr event;
        std::vector<const Destination*> destinations;
    };

    using Waiting = std::list<EventPtr>;

    bool MayPassBy(const Routes::Groups& groups, const Event& event);
    std::vector<EventPtr> TakeBatch();
    void ReturnBatch(std::vector<Dispatch>&& batch);
    bool Keep(const std::vector<Dispatch>& batch);

    const std::string m_channel;
    const std::shared_ptr<const Routes> m_routes;
    WorkPool& m_pool;
    Store* const m_store;
    OperatorLog& m_log;

    mutable std::mutex m_mutex;
    Waiting m_waiting;
    std::deque<Waiting::iterator> m_unkept;  // those of them that aren't kept, in their order
    std::uint64_t m_discarded = 0;
    std::size_t m_in_hand = 0;  // events of the batch that is dispatched
    bool m_dispatching = false;
    bool m_closed = false;
};

}  // namespace qv_notify
