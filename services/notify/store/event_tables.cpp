#include "services/notify/store/event_tables.h"

#include <sqlite3.h>

#include <algorithm>
#include <unordered_set>

#include "services/notify/store/store.h"

namespace qv_notify {
namespace {

const std::string kSequenceCounter = "/events";  // no path begins with a slash
constexpr std::int64_t kSequenceBlock = 4096;
constexpr std::int64_t kPlaces = Store::kRemembered;

Time FromMicroseconds(std::int64_t value) {
    return Time(std::chrono::duration_cast<Time::duration>(std::chrono::microseconds(value)));
}

}  // namespace

EventTables::EventTables(Database& database, ObjectTables& objects)
    : m_database(database),
      m_objects(objects),
      m_add(database, "INSERT INTO events VALUES(?,?,?,?,?,?)"),
      m_remember(database, "REPLACE INTO digests VALUES(?,?,?,?)"),
      m_newest(database, "SELECT place FROM digests WHERE supplier = ? ORDER BY sequence DESC LIMIT 1"),
      m_deliver(database,
                "INSERT OR IGNORE INTO deliveries SELECT ?1, ?2 "
                "WHERE EXISTS(SELECT 1 FROM events WHERE sequence = ?1)"),
      m_done(database, "DELETE FROM deliveries WHERE sequence = ? AND consumer = ?"),
      m_drop(database,
             "DELETE FROM events WHERE sequence = ?1 "
             "AND NOT EXISTS(SELECT 1 FROM deliveries WHERE sequence = ?1)"),
      m_all(database,
            "SELECT sequence, channels.path, suppliers.path, octets, arrived, digest FROM events "
            "JOIN objects AS channels ON channels.id = channel "
            "LEFT JOIN objects AS suppliers ON suppliers.id = supplier ORDER BY sequence"),
      m_consumers(database,
                  "SELECT sequence, path FROM deliveries JOIN objects ON id = consumer "
                  "ORDER BY sequence, path"),
      m_last(database,
             "SELECT sequence, digest FROM digests WHERE supplier = ? ORDER BY sequence DESC LIMIT ?"),
      m_deliveries(database, "SELECT sequence, consumer FROM deliveries"),
      m_leave_channel(database,
                      "DELETE FROM deliveries WHERE sequence IN (SELECT sequence FROM events "
                      "WHERE channel = ?)"),
      m_leave_events(database, "DELETE FROM events WHERE channel = ?"),
      m_leave_digests(database, "DELETE FROM digests WHERE supplier = ?") {}

std::int64_t EventTables::Add(const std::string& channel, const std::string& supplier,
                              const std::string& octets, const std::string& digest, std::int64_t arrived) {
    const std::int64_t channel_id = m_objects.IdOf(channel);
    if (channel_id == 0) {
        throw StoreError("The event can't be kept: there is no channel " + channel +
                         " in the store any more. Connect to another channel.");
    }
    const std::int64_t supplier_id = m_objects.IdOf(supplier);
    const std::int64_t sequence = m_objects.NextNumber(kSequenceCounter, kSequenceBlock);
    Run(m_add)
        .Number(sequence)
        .Number(channel_id)
        .Number(supplier_id)
        .Number(arrived)
        .Octets(digest)
        .Octets(octets)
        .Finish();
    if (supplier_id != 0) {
        Remember(supplier_id, sequence, digest);
    }
    return sequence;
}

void EventTables::Remember(std::int64_t supplier, std::int64_t sequence, const std::string& digest) {
    const std::int64_t place = DigestsOf(supplier) % kPlaces;
    Run(m_remember).Number(supplier).Number(place).Number(sequence).Octets(digest).Finish();
    m_digests[supplier] = place + 1;
}

std::int64_t EventTables::DigestsOf(std::int64_t supplier) {
    const auto found = m_digests.find(supplier);
    if (found != m_digests.end()) {
        return found->second;
    }
    Run run(m_newest);
    return run.Number(supplier).Next() ? run.NumberAt(0) + 1 : 0;
}

void EventTables::Dispatch(const Dispatched& event) {
    for (const std::string& consumer : event.consumers) {
        const std::int64_t id = m_objects.IdOf(consumer);
        if (id != 0) {
            Run(m_deliver).Number(event.sequence).Number(id).Finish();
        }
    }
    DropWhenDone(event.sequence);
}

void EventTables::Done(const std::string& consumer, const std::vector<std::int64_t>& sequences) {
    const std::int64_t id = m_objects.IdOf(consumer);
    if (id == 0) {
        return;
    }
    for (const std::int64_t sequence : sequences) {
        Run(m_done).Number(sequence).Number(id).Finish();
        if (m_database.Changes() > 0) {
            DropWhenDone(sequence);
        }
    }
}

void EventTables::DropWhenDone(std::int64_t sequence) {
    Run(m_drop).Number(sequence).Finish();
}

std::vector<StoredEvent> EventTables::All() {
    std::vector<StoredEvent> events;
    {
        Run run(m_all);
        while (run.Next()) {
            StoredEvent event;
            event.sequence = run.NumberAt(0);
            event.channel = run.StringAt(1);
            event.supplier = run.StringAt(2);
            event.octets = run.StringAt(3);
            event.arrived = FromMicroseconds(run.NumberAt(4));
            if (run.StringAt(5) != DigestOf(event.octets)) {
                throw DatabaseError(SQLITE_CORRUPT, "the event " + std::to_string(event.sequence) +
                                                        " is not what was written");
            }
            events.push_back(std::move(event));
        }
    }
    AddConsumers(events);
    return events;
}

void EventTables::AddConsumers(std::vector<StoredEvent>& events) {
    auto event = events.begin();
    Run run(m_consumers);
    while (run.Next()) {
        const std::int64_t sequence = run.NumberAt(0);
        while (event != events.end() && event->sequence < sequence) {
            ++event;
        }
        if (event != events.end() && event->sequence == sequence) {
            event->dispatched = true;
            event->consumers.push_back(run.StringAt(1));
        }
    }
}

std::vector<EventDigest> EventTables::LastOf(const std::string& supplier, std::size_t count) {
    std::vector<EventDigest> digests;
    Run run(m_last);
    run.Number(m_objects.IdOf(supplier))
        .Number(static_cast<std::int64_t>(std::min(count, Store::kRemembered)));
    while (run.Next()) {
        digests.push_back({run.NumberAt(0), run.StringAt(1)});
    }
    return digests;
}

void EventTables::Leave(const std::vector<std::int64_t>& objects) {
    for (const auto& [sequence, consumer] : DeliveriesTo(objects)) {
        Run(m_done).Number(sequence).Number(consumer).Finish();
        DropWhenDone(sequence);
    }
    for (const std::int64_t object : objects) {
        Run(m_leave_digests).Number(object).Finish();
        m_digests.erase(object);
    }
}

/// Reads the whole table, for want of an index, which each delivery would have to keep up.
std::vector<std::pair<std::int64_t, std::int64_t>> EventTables::DeliveriesTo(
    const std::vector<std::int64_t>& consumers) {
    const std::unordered_set<std::int64_t> wanted(consumers.begin(), consumers.end());
    std::vector<std::pair<std::int64_t, std::int64_t>> deliveries;
    Run run(m_deliveries);
    while (run.Next()) {
        if (wanted.count(run.NumberAt(1)) > 0) {
            deliveries.emplace_back(run.NumberAt(0), run.NumberAt(1));
        }
    }
    return deliveries;
}

void EventTables::LeaveChannel(std::int64_t channel) {
    Run(m_leave_channel).Number(channel).Finish();
    Run(m_leave_events).Number(channel).Finish();
}

void EventTables::Forget() {
    m_digests.clear();
}

}  // namespace qv_notify
