#pragma once

#include <string>

#include "tools/ssl/certificate_check.h"
#include "tools/ssl/finding.h"

namespace qv_tools {

/// What is to be looked at.
struct SslSetUp {
    std::string profile;          ///< the service configuration file
    std::string share_directory;  ///< value of _APP_SHARE_DIR; empty: the lists are the system's
    bool serves = true;           ///< for an agent or a service; false: for a mere client
};

/// The directory in which the agent looks for revocation lists.
std::string RevocationListDirectory(const std::string& shareDirectory);

/// Looks at all that an agent, a companion service or a client needs for SSL. Changes nothing and asks nobody
/// for a pass phrase. Not for more than one thread at a time.
void CheckSsl(const SslSetUp& setUp, const CheckTime& time, Findings& findings);

}  // namespace qv_tools
