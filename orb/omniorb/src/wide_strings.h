// The code set in which wide strings pass through streams that no connection has negotiated one for.
#pragma once

#include "orb_internals.h"

namespace qv_orb {

/// UTF-16 as GIOP 1.2 writes it; without a code set a stream refuses wide strings.
inline omni::omniCodeSet::TCS_W* WideCodeSet() {
    static omni::omniCodeSet::TCS_W* const set =
        omni::omniCodeSet::getTCS_W(omni::omniCodeSet::ID_UTF_16, GIOP::Version{1, 2});
    return set;
}

}  // namespace qv_orb
