// orb/request_hold.h for a real TAO, which serves no request before the ORB is run.
#include "orb/request_hold.h"

namespace qv_orb {

RequestHold::RequestHold() = default;
RequestHold::~RequestHold() = default;

}  // namespace qv_orb
