#include "demo/agent/iterator_directory.h"

#include <utility>
#include <vector>

#include "demo/agent/failure.h"
#include "logging/corbalogutil.h"

namespace qv_demo {

IteratorDirectory::IteratorDirectory(IteratorLimits limits, Clock clock) : table_(limits, std::move(clock)) {}

IteratorId IteratorDirectory::Open(SessionId session) {
    const std::lock_guard<std::mutex> guard(mutex_);
    const auto id = table_.Open(session);
    if (!id) {
        Fail(globaldefs::EXCPT_TOO_MANY_OPEN_ITERATORS,
             "too many iterators are open; use up or destroy some of them first");
    }
    return *id;
}

CORBA::Object_ptr IteratorDirectory::Place(IteratorId id, PortableServer::POA_ptr poa,
                                           PortableServer::Servant servant) try {
    Spot spot;
    spot.poa = PortableServer::POA::_duplicate(poa);
    spot.id = poa->activate_object(servant);
    CORBA::Object_var reference = poa->id_to_reference(spot.id.in());
    const std::lock_guard<std::mutex> guard(mutex_);
    spots_.emplace(id, std::move(spot));
    return reference._retn();
} catch (...) {
    const std::lock_guard<std::mutex> guard(mutex_);
    table_.Close(id);
    throw;
}

void IteratorDirectory::Touch(IteratorId id) {
    const std::lock_guard<std::mutex> guard(mutex_);
    if (!table_.Touch(id)) {
        throw CORBA::OBJECT_NOT_EXIST();
    }
}

void IteratorDirectory::Close(IteratorId id) {
    Spot spot;
    {
        const std::lock_guard<std::mutex> guard(mutex_);
        table_.Close(id);
        const auto found = spots_.find(id);
        if (found == spots_.end()) {
            return;
        }
        spot = std::move(found->second);
        spots_.erase(found);
    }
    Deactivate(spot);
}

void IteratorDirectory::Forget(SessionId session) {
    const std::lock_guard<std::mutex> guard(mutex_);
    for (const IteratorId id : table_.CloseSession(session)) {
        spots_.erase(id);
    }
}

std::size_t IteratorDirectory::CloseExpired() {
    std::vector<IteratorId> expired;
    {
        const std::lock_guard<std::mutex> guard(mutex_);
        expired = table_.TakeExpired();
    }
    for (const IteratorId id : expired) {
        Close(id);
    }
    return expired.size();
}

void IteratorDirectory::Deactivate(const Spot& spot) {
    try {
        spot.poa->deactivate_object(spot.id.in());
    } catch (CORBA::Exception& e) {
        // The session may have ended in the same moment and have taken the adapter along.
        TA_POS;
        NS_CORBA::TaException(e, "[IteratorDirectory::Deactivate] Raised while an iterator was closed");
    }
}

}  // namespace qv_demo
