#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "demo/agent/client_poas.h"
#include "demo/agent/core/session_table.h"
#include "demo/agent/iterator_directory.h"
#include "nmsSessionC.h"

namespace qv_demo {

/// One OSS that is logged in. Constant once it was opened.
struct Session {
    SessionId id = 0;
    std::string user;
    std::string address;
    ClientPoas poas;
    nmsSession::NmsSession_I_var client;  ///< the OSS's end
};

/// The sessions with their object adapters. Thread-safe; no lock is held while the ORB is called.
class SessionDirectory {
  public:
    /// Clients' adapters are made below `parent`. `iterators` outlives this object.
    SessionDirectory(PortableServer::POA_ptr parent, SessionLimits limits, IteratorDirectory& iterators,
                     Clock clock);

    /// Opens a session for an OSS whose password was checked. Raises EXCPT_ACCESS_DENIED when the limit is
    /// reached and newcomers are refused, EXCPT_UNABLE_TO_COMPLY when its adapters can't be made.
    std::shared_ptr<const Session> Open(const std::string& user, const std::string& address,
                                        nmsSession::NmsSession_I_ptr client);

    /// Ends a session and takes its objects away. Without effect when it has ended already.
    void End(SessionId id, const std::string& why);

    /// Notes that the session was heard of. Raises CORBA::OBJECT_NOT_EXIST when it has ended.
    void Touch(SessionId id);

    /// Null when it has ended.
    std::shared_ptr<const Session> Find(SessionId id);

    /// The session that `session_poa`, an adapter named "session", belongs to; null when it has ended. Raises
    /// CORBA::OBJECT_NOT_EXIST when the adapter is gone as well.
    std::shared_ptr<const Session> Of(PortableServer::POA_ptr session_poa);

    /// Ends those that have been silent for too long.
    void EndSilent();

    std::vector<std::shared_ptr<const Session>> All();
    std::size_t size();

  private:
    // The steps of Open; each raises what Open does.
    SessionId Admit(const std::string& identity);
    ClientPoas MakePoas(SessionId id, const std::string& identity);
    void Enter(const std::shared_ptr<const Session>& session);

    void Close(const Session& session, const std::string& why);
    std::shared_ptr<const Session> Take(SessionId id);
    std::shared_ptr<const Session> Find(const std::string& identity);

    const PortableServer::POA_var parent_;
    IteratorDirectory& iterators_;
    std::mutex mutex_;
    SessionTable table_;
    std::map<SessionId, std::shared_ptr<const Session>> sessions_;
};

}  // namespace qv_demo
