// Translation of TAO's -ORB options into settings of the ORB in use.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace qv_orb {

struct OrbOptions {
    std::string orb_id;
    std::string server_id;
    std::string service_config;  // file of -ORBSvcConf, empty when none was named
    bool wants_ssl = false;      // an end point has an SSL port
    std::vector<std::pair<std::string, std::string>> underlying;  // option and value for the ORB in use
    std::vector<std::string> without_effect;                      // options that have no counterpart here
};

/// Reads the -ORB options (case does not matter) and removes them from argv; what else stands there keeps its
/// order. Throws std::invalid_argument with a sentence that names the option for an unknown one or a bad
/// value.
OrbOptions TakeOrbOptions(int& argc, char** argv);

/// Translates "iiop://[version@]host:port[/option&option…][;iiop://…]" into the ORB's end points, the SSL
/// ones after the plain one. Throws std::invalid_argument.
void AddEndpoints(const std::string& endpoints, OrbOptions& options);

}  // namespace qv_orb
