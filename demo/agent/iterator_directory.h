#pragma once

#include <tao/PortableServer/PortableServer.h>

#include <map>
#include <mutex>

#include "demo/agent/core/iterator_table.h"

namespace qv_demo {

/// The open iterators with their objects. Thread-safe; no lock is held while the ORB is called.
class IteratorDirectory {
  public:
    IteratorDirectory(IteratorLimits limits, Clock clock);

    /// Reserves a place for an iterator. Raises EXCPT_TOO_MANY_OPEN_ITERATORS.
    IteratorId Open(SessionId session);

    /// Puts the iterator's object into `poa` and returns a new reference to it. Gives the place up when that
    /// fails.
    CORBA::Object_ptr Place(IteratorId id, PortableServer::POA_ptr poa, PortableServer::Servant servant);

    /// Notes a use. Raises CORBA::OBJECT_NOT_EXIST when the iterator is closed.
    void Touch(IteratorId id);

    /// Takes the iterator's object away. Without effect when it is closed already.
    void Close(IteratorId id);

    /// Forgets the iterators of a session whose adapters, and so whose objects, are gone.
    void Forget(SessionId session);

    /// Closes those that have not been used for too long; how many there were.
    std::size_t CloseExpired();

  private:
    struct Spot {
        PortableServer::POA_var poa;
        PortableServer::ObjectId_var id;
    };

    void Deactivate(const Spot& spot);

    std::mutex mutex_;
    IteratorTable table_;
    std::map<IteratorId, Spot> spots_;
};

}  // namespace qv_demo
