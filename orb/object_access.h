// What a service does with references and the mapping has no word for.
#pragma once

#include <tao/ORB.h>
#include <tao/PortableServer/PortableServer.h>

#include <string>

#include "orb/export.h"

namespace qv_orb {

/// Lets `servant` serve the simple object key `key`, so that corbaloc:iiop:host:port/key reaches it, and
/// returns its reference, which stays valid over restarts on the same end point. The ORB keeps a count of the
/// servant; the caller releases the reference. Raises PortableServer::POA::ObjectAlreadyActive when the key
/// is taken.
QV_ORB_API CORBA::Object_ptr PublishUnderKey(CORBA::ORB_ptr orb, const std::string& key,
                                             PortableServer::Servant servant);

/// "host:port" of the end point that the reference names first; empty for nil and where the ORB does not
/// tell. Makes no call. Thread-safe.
QV_ORB_API std::string EndpointOf(CORBA::Object_ptr object);

}  // namespace qv_orb
