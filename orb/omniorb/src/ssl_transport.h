// The ORB's SSL transport, set up from a service configuration file.
#pragma once

#include <string>

#include "orb/ssl/ssl_settings.h"

namespace qv_orb {

/// Has the ORB that is made next speak SSL by these settings. `serves` is whether it is to accept SSL
/// connections. What stands in the way (a missing file, a wrong pass phrase) throws qv_ssl::SslError, and the
/// next ORB is without SSL. Only while there is no ORB.
void PrepareSsl(const qv_ssl::SslSettings& settings, bool serves);

/// The next ORB is without SSL. Only while there is no ORB.
void PrepareWithoutSsl();

/// The transports that calls go out by, in the form of omniORB's clientTransportRule: none in clear unless
/// the settings say that protection is not needed.
const char* OutgoingTransports(const qv_ssl::SslSettings& settings);

}  // namespace qv_orb
