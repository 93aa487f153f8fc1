// Command line of the naming service, in the spelling of TAO's Naming_Service.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "services/naming/common_parts.h"

namespace qv_naming {

/// What the command line asks for. Paths stand as they were given.
struct Settings {
    std::string host;                  // empty: every interface
    std::uint16_t port = 0;            // IIOP port, 1 to 65535
    std::uint16_t ssl_port = 0;        // 0: no SSL
    std::string ssl_profile;           // "-ORBSvcConf", empty when absent
    std::string ior_file;              // "-o", empty when absent
    std::string pid_file;              // "-p", empty when absent
    std::string data_directory;        // "-u", empty when absent
    std::vector<std::string> ignored;  // one sentence per option that has no counterpart here
    bool help = false;
    bool version = false;
};

/// Reads the arguments that follow the program's name.
/// Throws StartError (kExitUsage) that names the argument it can't accept.
Settings ParseCommandLine(const std::vector<std::string>& arguments);

/// The text that "-h" prints.
std::string UsageText();

}  // namespace qv_naming
