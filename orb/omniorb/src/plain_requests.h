// Requests in clear, where SSL is required.
#pragma once

#include <omniORB4/CORBA.h>

namespace omni {
class GIOP_S;
}

namespace qv_orb {

/// Whether requests that do not come by SSL are refused from now on. Thread-safe.
void RefusePlainRequests(bool refuse);

/// Throws CORBA::NO_PERMISSION for a request that is to be refused, and reports it. Called before anybody
/// looks for the object. Thread-safe.
void AdmitRequest(omni::GIOP_S& request);

}  // namespace qv_orb
