#pragma once

#include <ctime>
#include <string>
#include <vector>

namespace qv_tools {

/// What to make for a trial.
struct TrialOptions {
    std::string directory;           ///< is made; one that is there must be empty
    std::vector<std::string> hosts;  ///< names and addresses of the servers' host
    long days = 90;                  ///< how long certificates and the revocation list hold
    bool refused = false;            ///< also make clients that are to be refused
    std::time_t now = 0;
};

/// Makes an authority, certificates with encrypted keys and service configuration files for servers
/// ("server") and clients ("client"), and the authority's revocation list below etc/ssl/nbi/crl. With
/// `refused` also for a client of another authority ("stranger"), for one whose certificate has expired
/// ("expired") and for one without a certificate ("nameless"). Pass phrases are random and stand in the
/// service configuration files alone. The directory appears complete or not at all. Returns the paths of the
/// service configuration files. Throws std::exception.
std::vector<std::string> MakeTrialCredentials(const TrialOptions& options);

}  // namespace qv_tools
