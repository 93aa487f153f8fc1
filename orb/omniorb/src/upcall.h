// The road of one request through the interceptors to its servant and back (CORBA 3.0, 21.3.6 to 21.3.8).
#pragma once

class omniCallDescriptor;
class omniServant;

namespace qv_orb {

/// Called by the ORB in place of the servant's skeleton, on the thread of the request, for remote and
/// collocated calls alike. Raises what the client is to see.
void InterceptUpcall(omniCallDescriptor* call, omniServant* servant);

}  // namespace qv_orb
