// What the seam remembers for the thread that runs a request.
#pragma once

#include "qv_orb/orb_base.h"

namespace omni {
class GIOP_S;
}

namespace qv_orb {

struct ThreadState {
    omni::GIOP_S* request = nullptr;         // the remote request that was received last and not answered yet
    bool in_servant = false;                 // counted by the servant limit
    bool in_remote_upcall = false;           // the servant that runs was called by another process
    IOP::ServiceContextList reply_contexts;  // for the reply that is about to be sent
};

ThreadState& thread_state();

}  // namespace qv_orb
