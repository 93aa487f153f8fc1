// A server that isn't ready yet.
#pragma once

#include "orb/export.h"

namespace qv_orb {

/// Requests from other processes wait while one exists, instead of being told that there are no such objects
/// by an ORB that takes them before the server has made its own. To be made ahead of the ORB. Any thread may
/// make and end one; it concerns the whole process.
class QV_ORB_API RequestHold {
  public:
    RequestHold();
    ~RequestHold();
    RequestHold(const RequestHold&) = delete;
    RequestHold& operator=(const RequestHold&) = delete;
};

}  // namespace qv_orb
