// Command line of the notification service, in the spelling of TAO's Notify_Service.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "services/notify/model/service_context.h"

namespace qv_notify {

/// What the command line asks for. Paths stand as they were given.
struct Settings {
    std::vector<std::string> orb_arguments;  ///< the -ORB options, for the ORB
    std::string host;                        ///< of the first end point; empty: every interface
    std::uint16_t port = 0;                  ///< 0: chosen by the system, so nothing can outlive the process
    std::optional<std::uint16_t> ssl_port;   ///< none: no SSL; 0: chosen by the system
    std::string ssl_profile;                 ///< "-ORBSvcConf", empty when absent
    std::string factory_name = "NotifyEventChannelFactory";
    bool register_name = false;   ///< in the naming service, which -ORBInitRef names
    bool never_register = false;  ///< "-NoNameSvc", wherever it stands
    std::string ior_file;         ///< "-IORoutput", empty when absent
    std::string pid_file;         ///< "-p", empty when absent
    std::string data_directory;   ///< "-u", empty when absent
    std::chrono::milliseconds call_timeout{10000};
    ServiceLimits limits;
    bool check = false;
    bool help = false;
    bool version = false;
    std::vector<std::string> ignored;  ///< one sentence per option that has no counterpart here
};

/// Whether references stay the same over a restart, so that channels may outlive the process.
inline bool HasLastingAddress(const Settings& settings) {
    return settings.port != 0 && settings.ssl_port != std::optional<std::uint16_t>(std::uint16_t{0});
}

/// Reads the arguments that follow the program's name. Throws StartError (kExitUsage) that names the argument
/// it can't accept.
Settings ParseCommandLine(const std::vector<std::string>& arguments);

/// The text that "--help" prints.
std::string UsageText();

}  // namespace qv_notify
