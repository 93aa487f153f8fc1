#pragma once

#include <tao/ORB.h>
#include <tao/PortableServer/PortableServer.h>

#include "platform/export.h"

namespace NS_CORBA {

/// Makes the child POA `name` of `parent` for references that outlive a restart of the agent: PERSISTENT,
/// with servants RETAINed under a USER_ID that the caller assigns (CORBA 3.0, chapter 11), served by the
/// parent's manager. An existing child of that name is returned as it is. Returns a new reference, which the
/// caller releases; nil on failure, which is logged: also when the existing child is gone by the time it is
/// looked up.
QV_API PortableServer::POA* get_persistent_poa(PortableServer::POA* parent, const char* name);

/// Activates `servant` under `id` in `poa`, unless that was done before, and returns a new reference to it,
/// which the caller releases; nil on failure, which is logged. The POA takes a reference of its own to the
/// servant.
QV_API CORBA::Object* get_persistent_ref(PortableServer::POA* poa, TAO_ServantBase* servant, const char* id);

}  // namespace NS_CORBA
