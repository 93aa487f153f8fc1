#pragma once

#include <string>

#include "platform/export.h"

namespace NS_CORBA {

/// Tells who calls, for code that has no request at hand. Stateless: any thread may ask, and the answer
/// belongs to the request that this thread serves.
class QV_API TEUserHelper {
  public:
    /// The name of the POA of the running request; on a POA named "session" or "iterator", that of the POA
    /// above. A client's own POA is named with the client's identity; any other POA gives its plain name, so
    /// the result need not name a client. Empty, with a line in the log, on a thread that serves no request.
    /// Raises nothing.
    static std::string GetNmsIPAddrByContext();
};

}  // namespace NS_CORBA
