#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "services/notify/store/database.h"
#include "services/notify/store/object_tables.h"
#include "services/notify/store/stored.h"

namespace qv_notify {

/// The events of a store and to whom they are still to be delivered. An event without deliveries is one that
/// hasn't been dispatched. Each function is part of a transaction that the caller has begun; when that is
/// taken back, Forget has to follow. One thread at a time uses it.
class EventTables {
  public:
    EventTables(Database& database, ObjectTables& objects);

    /// Throws StoreError when there is no such channel.
    std::int64_t Add(const std::string& channel, const std::string& supplier, const std::string& octets,
                     const std::string& digest, std::int64_t arrived);
    void Dispatch(const Dispatched& event);
    void Done(const std::string& consumer, const std::vector<std::int64_t>& sequences);
    std::vector<StoredEvent> All();
    /// The latest first.
    std::vector<EventDigest> LastOf(const std::string& supplier, std::size_t count);

    /// Drops the deliveries and digests of objects that go.
    void Leave(const std::vector<std::int64_t>& objects);
    /// Drops the events of a channel that goes.
    void LeaveChannel(std::int64_t channel);

    /// Drops what is remembered of the tables.
    void Forget();

  private:
    void Remember(std::int64_t supplier, std::int64_t sequence, const std::string& digest);
    std::int64_t DigestsOf(std::int64_t supplier);
    void DropWhenDone(std::int64_t sequence);
    std::vector<std::pair<std::int64_t, std::int64_t>> DeliveriesTo(
        const std::vector<std::int64_t>& consumers);
    void AddConsumers(std::vector<StoredEvent>& events);

    Database& m_database;
    ObjectTables& m_objects;
    Statement m_add;
    Statement m_remember;
    Statement m_newest;
    Statement m_deliver;
    Statement m_done;
    Statement m_drop;
    Statement m_all;
    Statement m_consumers;
    Statement m_last;
    Statement m_deliveries;
    Statement m_leave_channel;
    Statement m_leave_events;
    Statement m_leave_digests;
    std::unordered_map<std::int64_t, std::int64_t> m_digests;  // by supplier, the events so far
};

}  // namespace qv_notify
