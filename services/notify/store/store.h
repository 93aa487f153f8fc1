#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "services/notify/properties/service_time.h"
#include "services/notify/store/store_error.h"
#include "services/notify/store/stored.h"

namespace qv_notify {

/// What of the service survives its process: the objects, and the events that have not been delivered. One
/// file, of which this object has the only use.
/// What an operation returned from has been handed to the system and so outlives the process; a crash of the
/// machine may cost the latest operations, never the file. Operations that several threads wait for are
/// committed together. One that fails throws StoreError and has changed nothing; the next one tries again.
/// Any thread may call.
class Store {
  public:
    /// So many of a supplier's last events are remembered: several threads may push by one proxy, and while
    /// one of them waits for its answer, the others get further; on a busy machine by some hundreds.
    static constexpr std::size_t kRemembered = 1024;

    /// Opens the file, or makes it (mode 0600) in its directory, which has to be there. Throws StoreError
    /// when it can't be written, is damaged, isn't such a file, was written by a newer version, or is in use.
    explicit Store(const std::string& path);
    ~Store();
    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;

    /// To be called when no event is under way to a consumer any more, and none will be.
    void NoteOrderlyEnd();
    /// Whether NoteOrderlyEnd was called, which is forgotten then. Where it wasn't, each consumer may have
    /// got an event of which Done was not called.
    bool TakeOrderlyEnd();

    /// Adds an object, or replaces its description.
    void Put(const std::string& path, const std::string& description);

    /// Removes the object and all below it, with their deliveries and, for a channel, its events. Nothing
    /// happens when there is none.
    void Remove(const std::string& path);

    /// All objects, those around others first, otherwise by their paths.
    std::vector<StoredObject> Objects();

    /// The next number of a counter, which starts with 1; ascending, and never the same twice. After a
    /// restart some may be left out.
    std::int64_t NextNumber(const std::string& counter);

    /// Keeps an event. Returns its number, which is greater than all before. Throws StoreError also when
    /// there is no such channel.
    std::int64_t AddEvent(const std::string& channel, const std::string& supplier, const std::string& octets,
                          Time arrived);

    /// Says for whom events are. One that is for nobody is dropped; consumers that have gone meanwhile don't
    /// count.
    void Dispatch(const std::vector<Dispatched>& events);

    /// The consumer has got these events, or doesn't get them any more. An event that all consumers are done
    /// with is dropped. What can't be written down now is, with the next call, or by NoteOrderlyEnd.
    void Done(const std::string& consumer, const std::vector<std::int64_t>& sequences);

    /// All events that are kept, in the order of their numbers. Throws StoreError also when the octets of one
    /// are not those that were added.
    std::vector<StoredEvent> Events();

    /// The last `count` events, at most kRemembered, that the supplier added, the latest last, whether they
    /// have been delivered or not.
    std::vector<EventDigest> LastEventsOf(const std::string& supplier, std::size_t count);

  private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

}  // namespace qv_notify
