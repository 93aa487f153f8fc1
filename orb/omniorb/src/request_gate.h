// Where threads that are to serve requests wait until the server is ready.
#pragma once

namespace qv_orb {

/// Returns once no RequestHold exists. Any thread may call.
void PassRequestGate();

}  // namespace qv_orb
