#pragma once

#include <optional>
#include <string>

#include "orb/ssl/ssl_settings.h"
#include "tools/ssl/finding.h"

namespace qv_tools {

/// Looks at the service configuration file itself: access, form, options, and whether the agent reads the
/// same out of it as the ORB does. Nothing when the ORB can't use it. No finding shows the pass phrase.
/// @param serves whether it is for an agent or a service, which need a certificate, or for a mere client
std::optional<qv_ssl::SslSettings> CheckProfile(const std::string& profile, bool serves, Findings& findings);

}  // namespace qv_tools
