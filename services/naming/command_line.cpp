#include "services/naming/command_line.h"

#include <array>

#include "services/common/tao_arguments.h"

namespace qv_naming {
namespace {

constexpr const char* kOrbInternal = "the name server's ORB has no such setting";
constexpr const char* kPersistent = "bindings are always kept in the data directory";

// Options that TAO's naming service knows and that have no counterpart here.
constexpr std::array kUnusedOptions{
    UnusedOption{"-b", true, kPersistent},
    UnusedOption{"-d", false, "there is no debug output to switch on"},
    UnusedOption{"-f", true, kPersistent},
    UnusedOption{"-m", true, "multicast discovery is not offered"},
    UnusedOption{"-r", true, "there is no redundant pair of name servers"},
    UnusedOption{"-s", true, "contexts grow as needed"},
    UnusedOption{"-z", true, kOrbInternal},
    UnusedOption{"-ORBCollocation", true, kOrbInternal},
    UnusedOption{"-ORBDaemon", false, "the process stays in the foreground"},
    UnusedOption{"-ORBDebugLevel", true, kOrbInternal},
    UnusedOption{"-ORBDefaultInitRef", true, "the naming service calls no other service"},
    UnusedOption{"-ORBDottedDecimalAddresses", true, "references carry the host as it was given"},
    UnusedOption{"-ORBId", true, kOrbInternal},
    UnusedOption{"-ORBInitRef", true, "the naming service calls no other service"},
    UnusedOption{"-ORBLogFile", true, "messages go to standard error"},
    UnusedOption{"-ORBMulticastDiscoveryEndpoint", true, "multicast discovery is not offered"},
    UnusedOption{"-ORBNameServicePort", true, "multicast discovery is not offered"},
    UnusedOption{"-ORBNegotiateCodesets", true, kOrbInternal},
    UnusedOption{"-ORBNoDelay", true, kOrbInternal},
    UnusedOption{"-ORBObjRefStyle", true, "references are written as IOR"},
    UnusedOption{"-ORBPreferredInterfaces", true, kOrbInternal},
    UnusedOption{"-ORBRcvSock", true, kOrbInternal},
    UnusedOption{"-ORBServerId", true, kOrbInternal},
    UnusedOption{"-ORBSndSock", true, kOrbInternal},
    UnusedOption{"-ORBSvcConfDirective", true, kOrbInternal},
    UnusedOption{"-ORBUseSharedProfile", true, kOrbInternal},
    UnusedOption{"-ORBVerboseLogging", true, kOrbInternal},
};

std::uint16_t ParsePort(const std::string& digits, const std::string& endpoint,
                        const TaoArguments& arguments) {
    const std::uint16_t port = ReadPort(digits).value_or(0);
    if (port == 0) {
        arguments.Refuse("The endpoint \"" + endpoint + "\" has no valid port (1 to 65535).");
    }
    return port;
}

void ParseEndpointOption(const std::string& option, const std::string& endpoint,
                         const TaoArguments& arguments, Settings& settings) {
    if (const auto digits = EndpointValue(option, "ssl_port")) {
        settings.ssl_port = ParsePort(*digits, endpoint, arguments);
        return;
    }
    const std::string name = option.substr(0, option.find('='));
    if (name != "hostname_in_ior" && name != "portspan" && name != "reuse_addr" && name != "priority") {
        arguments.Refuse("The endpoint \"" + endpoint + "\" has the unknown option \"" + name + "\".");
    }
    settings.ignored.push_back("The endpoint option \"" + option + "\" is not used: " + kOrbInternal + ".");
}

void ParseEndpoint(const std::string& endpoint, const TaoArguments& arguments, Settings& settings) {
    if (settings.port != 0) {
        arguments.Refuse("A second endpoint \"" + endpoint +
                         "\" is given; the naming service listens on one.");
    }
    const std::optional<TaoEndpoint> parts = SplitEndpoint(endpoint);
    if (!parts) {
        arguments.Refuse("The endpoint \"" + endpoint + "\" is not of the form iiop://HOST:PORT.");
    }
    if (parts->several) {
        arguments.Refuse("The endpoint \"" + endpoint +
                         "\" lists several addresses; the naming service listens on one.");
    }
    settings.host = parts->host;
    settings.port = ParsePort(parts->port.value_or(""), endpoint, arguments);
    for (const std::string& option : parts->options) {
        ParseEndpointOption(option, endpoint, arguments, settings);
    }
}

// A composed command line leaves the value out where nothing is configured.
std::string OptionalValueOf(const std::string& option, TaoArguments& arguments) {
    return arguments.More() && !arguments.ValueFollows() ? "" : arguments.ValueOf(option);
}

void ParseOption(const std::string& option, TaoArguments& arguments, Settings& settings) {
    if (SameOption(option, "-ORBEndpoint") || SameOption(option, "-ORBListenEndpoints")) {
        ParseEndpoint(arguments.ValueOf(option), arguments, settings);
    } else if (SameOption(option, "-ORBSvcConf")) {
        settings.ssl_profile = OptionalValueOf(option, arguments);
    } else if (option == "-o") {
        settings.ior_file = arguments.ValueOf(option);
    } else if (option == "-p") {
        settings.pid_file = arguments.ValueOf(option);
    } else if (option == "-u") {
        settings.data_directory = arguments.ValueOf(option);
    } else if (option == "-h" || option == "-?" || option == "--help") {
        settings.help = true;
    } else if (option == "--version") {
        settings.version = true;
    } else {
        arguments.PassOver(option, kUnusedOptions, settings.ignored);
    }
}

}  // namespace

Settings ParseCommandLine(const std::vector<std::string>& list) {
    Settings settings;
    TaoArguments arguments(list, "Correct the command line; \"-h\" lists the options.");
    while (arguments.More()) {
        const std::string option = arguments.Next();
        ParseOption(option, arguments, settings);
    }
    if (!settings.help && !settings.version && settings.port == 0) {
        arguments.Refuse("The option \"-ORBEndpoint iiop://HOST:PORT\" is missing.");
    }
    if (settings.ssl_port != 0 && settings.ssl_profile.empty()) {
        arguments.Refuse(
            "The endpoint asks for an SSL port, but no \"-ORBSvcConf FILE\" names the SSL options.");
    }
    if (settings.ssl_port != 0 && settings.ssl_port == settings.port) {
        arguments.Refuse("The endpoint has the same number for both ports.");
    }
    if (settings.ssl_port == 0 && !settings.ssl_profile.empty()) {
        settings.ignored.push_back(
            "The option \"-ORBSvcConf\" is not used: without ssl_port the service configuration has nothing "
            "to "
            "say.");
    }
    return settings;
}

std::string UsageText() {
    return "usage: Naming_Service -ORBEndpoint iiop://HOST:PORT[/ssl_port=PORT -ORBSvcConf FILE]\n"
           "                      [-o FILE] [-u DIR] [-p FILE]\n"
           "\n"
           "Serves corbaloc:iiop:HOST:PORT/NameService until it is sent SIGTERM, SIGINT or SIGHUP; with an "
           "SSL "
           "port,\n"
           "corbaloc:ssliop:HOST:SSLPORT/NameService.\n"
           "\n"
           "  -ORBEndpoint E  where to listen and what references carry\n"
           "  -ORBSvcConf F   the service configuration file with the options of the SSLIOP factory; "
           "requests at "
           "the plain\n"
           "                  port are refused unless -SSLNoProtection stands there\n"
           "  -o FILE         write the reference of the root context to FILE once the service answers\n"
           "  -u DIR          keep the bindings in DIR; otherwise in naming-PORT below $QV_NAMING_DATA,\n"
           "                  below the directory of -o, or below $XDG_STATE_HOME/qv_naming, the first that "
           "is set\n"
           "  -p FILE         write the process id to FILE\n"
           "  -h              print this text\n"
           "  --version       print the version\n"
           "\n"
           "Other options of TAO's Naming_Service are accepted; one that has no effect here is reported.\n"
           "$QV_OMNINAMES names the omniNames to run when it is not found on the path.\n";
}

}  // namespace qv_naming
