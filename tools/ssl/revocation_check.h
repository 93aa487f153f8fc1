#pragma once

#include <string>

#include "tools/ssl/certificate_check.h"
#include "tools/ssl/finding.h"

namespace qv_tools {

/// Looks at the lists that the agent holds its certificate against at its start: which files of the directory
/// count, whether they can be read and are of use, how old they are, and whether one revokes the certificate.
void CheckRevocation(const std::string& directory, const LoadedCertificates& loaded, const CheckTime& time,
                     Findings& findings);

}  // namespace qv_tools
