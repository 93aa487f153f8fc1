#include "demo/agent/session_directory.h"

#include <utility>
#include <vector>

#include "demo/agent/accounts.h"
#include "demo/agent/console.h"
#include "demo/agent/failure.h"
#include "logging/corbalogutil.h"

namespace qv_demo {

SessionDirectory::SessionDirectory(PortableServer::POA_ptr parent, SessionLimits limits,
                                   IteratorDirectory& iterators, Clock clock)
    : parent_(PortableServer::POA::_duplicate(parent)),
      iterators_(iterators),
      table_(limits, std::move(clock)) {}

SessionId SessionDirectory::Admit(const std::string& identity) {
    SessionTable::Admission admission;
    std::vector<std::shared_ptr<const Session>> evicted;
    {
        const std::lock_guard<std::mutex> guard(mutex_);
        admission = table_.Admit(identity);
        for (const SessionId id : admission.evicted) {
            evicted.push_back(Take(id));
        }
    }
    for (const auto& session : evicted) {
        if (session) {
            Close(*session, "made room for a newcomer");
        }
    }
    if (!admission.admitted) {
        Fail(globaldefs::EXCPT_ACCESS_DENIED, "session limit reached");
    }
    return admission.id;
}

ClientPoas SessionDirectory::MakePoas(SessionId id, const std::string& identity) {
    try {
        return CreateClientPoas(parent_.in(), identity);
    } catch (CORBA::Exception& e) {
        TA_POS;
        NS_CORBA::TaException(e, "[SessionDirectory::Open] Raised while a client's adapters were made");
        const std::lock_guard<std::mutex> guard(mutex_);
        table_.Remove(id);
        Fail(globaldefs::EXCPT_UNABLE_TO_COMPLY, "no session can be made at the moment; try again");
    }
}

void SessionDirectory::Enter(const std::shared_ptr<const Session>& session) {
    {
        // Between the admission and now another newcomer may have taken the place.
        const std::lock_guard<std::mutex> guard(mutex_);
        if (table_.Touch(session->id)) {
            sessions_.emplace(session->id, session);
            return;
        }
    }
    DestroyClientPoas(session->poas);
    Fail(globaldefs::EXCPT_ACCESS_DENIED, "session limit reached");
}

std::shared_ptr<const Session> SessionDirectory::Open(const std::string& user, const std::string& address,
                                                      nmsSession::NmsSession_I_ptr client) {
    const std::string identity = MakeIdentity(user, address);
    auto session = std::make_shared<Session>();
    session->id = Admit(identity);
    session->user = user;
    session->address = address;
    session->client = nmsSession::NmsSession_I::_duplicate(client);
    session->poas = MakePoas(session->id, identity);
    Enter(session);
    Say("login   " + user + " from " + address + ", sessions open: " + std::to_string(size()));
    return session;
}

void SessionDirectory::End(SessionId id, const std::string& why) {
    std::shared_ptr<const Session> session;
    {
        const std::lock_guard<std::mutex> guard(mutex_);
        table_.Remove(id);
        session = Take(id);
    }
    if (session) {
        Close(*session, why);
    }
}

void SessionDirectory::Touch(SessionId id) {
    const std::lock_guard<std::mutex> guard(mutex_);
    if (!table_.Touch(id)) {
        throw CORBA::OBJECT_NOT_EXIST();
    }
}

std::shared_ptr<const Session> SessionDirectory::Find(SessionId id) {
    const std::lock_guard<std::mutex> guard(mutex_);
    const auto found = sessions_.find(id);
    return found == sessions_.end() ? nullptr : found->second;
}

std::shared_ptr<const Session> SessionDirectory::Of(PortableServer::POA_ptr session_poa) {
    const PortableServer::POA_var client_poa = session_poa->the_parent();
    const CORBA::String_var identity = client_poa->the_name();
    const auto session = Find(identity.in());
    // The same client may have logged in anew, below an adapter of the same name.
    return session && session->poas.session->_is_equivalent(session_poa) ? session : nullptr;
}

std::shared_ptr<const Session> SessionDirectory::Find(const std::string& identity) {
    const std::lock_guard<std::mutex> guard(mutex_);
    const auto id = table_.Find(identity);
    const auto found = id ? sessions_.find(*id) : sessions_.end();
    return found == sessions_.end() ? nullptr : found->second;
}

void SessionDirectory::EndSilent() {
    std::vector<std::shared_ptr<const Session>> silent;
    {
        const std::lock_guard<std::mutex> guard(mutex_);
        for (const SessionId id : table_.TakeSilent()) {
            silent.push_back(Take(id));
        }
    }
    for (const auto& session : silent) {
        if (session) {
            Close(*session, "silent for too long");
        }
    }
}

std::vector<std::shared_ptr<const Session>> SessionDirectory::All() {
    std::vector<std::shared_ptr<const Session>> all;
    const std::lock_guard<std::mutex> guard(mutex_);
    for (const auto& entry : sessions_) {
        all.push_back(entry.second);
    }
    return all;
}

std::size_t SessionDirectory::size() {
    const std::lock_guard<std::mutex> guard(mutex_);
    return sessions_.size();
}

std::shared_ptr<const Session> SessionDirectory::Take(SessionId id) {
    const auto found = sessions_.find(id);
    if (found == sessions_.end()) {
        return nullptr;
    }
    auto session = found->second;
    sessions_.erase(found);
    return session;
}

void SessionDirectory::Close(const Session& session, const std::string& why) {
    DestroyClientPoas(session.poas);
    Accounts::LogOut(session.user, session.address);
    iterators_.Forget(session.id);
    TA_POS;
    NS_CORBA::TaDebugWithPara(3, "[SessionDirectory::Close] Session of %s from %s ended: %s",
                              session.user.c_str(), session.address.c_str(), why.c_str());
    Say("logout  " + session.user + " from " + session.address + " (" + why + ")");
}

}  // namespace qv_demo
