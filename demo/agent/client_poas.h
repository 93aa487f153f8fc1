#pragma once

#include <tao/PortableServer/PortableServer.h>

#include <string>

namespace qv_demo {

/// How a client is called in the name of its POA: the user and "address:port", each between its tags. What
/// writes the operation log reads it from there.
std::string MakeIdentity(const std::string& user, const std::string& address);

/// The object adapters of one client: its own one, named with its identity, and the two below it.
struct ClientPoas {
    PortableServer::POA_var client;
    PortableServer::POA_var session;   ///< for the objects of its session
    PortableServer::POA_var iterator;  ///< for its iterators
};

/// Makes the adapters below `parent`, under the parent's manager. Where the adapters of an earlier session of
/// the same identity are still on their way out, waits up to two seconds for them. Raises CORBA::Exception.
ClientPoas CreateClientPoas(PortableServer::POA_ptr parent, const std::string& identity);

/// Destroys the adapters with all objects in them; requests that are being served end first. Doesn't wait.
void DestroyClientPoas(const ClientPoas& poas);

}  // namespace qv_demo
