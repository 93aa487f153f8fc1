#include "services/naming/command_line.h"

#include <strings.h>

#include <algorithm>
#include <array>
#include <charconv>

#include "services/common/start_error.h"

namespace qv_naming {
namespace {

struct UnusedOption {
    const char* name;
    bool takes_value;
    const char* reason;
};

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

bool SameOption(const std::string& argument, const char* name) {
    // ORB options are matched without regard to case; the service's own single letters are not.
    return argument.size() > 2 ? strcasecmp(argument.c_str(), name) == 0 : argument == name;
}

[[noreturn]] void Refuse(const std::string& what) {
    throw StartError(what + " Correct the command line; \"-h\" lists the options.", kExitUsage);
}

std::uint16_t ParsePort(const std::string& text, const std::string& endpoint) {
    unsigned value = 0;
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value);
    if (result.ec != std::errc{} || result.ptr != end || value == 0 || value > 65535) {
        Refuse("The endpoint \"" + endpoint + "\" has no valid port (1 to 65535).");
    }
    return static_cast<std::uint16_t>(value);
}

void ParseEndpointOption(const std::string& option, const std::string& endpoint, Settings& settings) {
    const std::string name = option.substr(0, option.find('='));
    if (name == "ssl_port") {
        settings.ssl_port = ParsePort(option.substr(std::min(option.size(), name.size() + 1)), endpoint);
        return;
    }
    if (name != "hostname_in_ior" && name != "portspan" && name != "reuse_addr" && name != "priority") {
        Refuse("The endpoint \"" + endpoint + "\" has the unknown option \"" + name + "\".");
    }
    settings.ignored.push_back("The endpoint option \"" + option + "\" is not used: " + kOrbInternal + ".");
}

// iiop://[version@]host:port[/option=value[&option=value]...]
void ParseEndpoint(const std::string& endpoint, Settings& settings) {
    static const std::string kScheme = "iiop://";
    if (settings.port != 0) {
        Refuse("A second endpoint \"" + endpoint + "\" is given; the naming service listens on one.");
    }
    if (strncasecmp(endpoint.c_str(), kScheme.c_str(), kScheme.size()) != 0) {
        Refuse("The endpoint \"" + endpoint + "\" is not of the form iiop://HOST:PORT.");
    }
    std::string address = endpoint.substr(kScheme.size());
    std::string options;
    if (const auto slash = address.find('/'); slash != std::string::npos) {
        options = address.substr(slash + 1);
        address.resize(slash);
    }
    if (const auto at = address.find('@'); at != std::string::npos) {
        address.erase(0, at + 1);
    }
    if (address.find_first_of(",;") != std::string::npos) {
        Refuse("The endpoint \"" + endpoint +
               "\" lists several addresses; the naming service listens on one.");
    }
    const auto colon = address.rfind(':');
    if (colon == std::string::npos || colon < address.rfind(']') + 1) {
        Refuse("The endpoint \"" + endpoint + "\" has no valid port (1 to 65535).");
    }
    settings.host = address.substr(0, colon);
    settings.port = ParsePort(address.substr(colon + 1), endpoint);
    while (!options.empty()) {
        const auto cut = std::min(options.find('&'), options.size());
        ParseEndpointOption(options.substr(0, cut), endpoint, settings);
        options.erase(0, cut + 1);
    }
}

class Arguments {
  public:
    explicit Arguments(const std::vector<std::string>& list) : list_(list) {}

    bool More() const { return next_ < list_.size(); }
    const std::string& Next() { return list_[next_++]; }

    const std::string& ValueOf(const std::string& option) {
        if (!More() || list_[next_].empty()) {
            Refuse("The option \"" + option + "\" needs a value.");
        }
        return Next();
    }

    // A composed command line leaves the value out where nothing is configured.
    std::string OptionalValueOf(const std::string& option) {
        const bool left_out = More() && !list_[next_].empty() && list_[next_][0] == '-';
        return left_out ? "" : ValueOf(option);
    }

  private:
    const std::vector<std::string>& list_;
    std::size_t next_ = 0;
};

void NoteUnused(const UnusedOption& unused, std::vector<std::string>& ignored) {
    const std::string sentence =
        std::string("The option \"") + unused.name + "\" is not used: " + unused.reason + ".";
    if (std::find(ignored.begin(), ignored.end(), sentence) == ignored.end()) {
        ignored.push_back(sentence);
    }
}

void ParseOption(const std::string& option, Arguments& arguments, Settings& settings) {
    if (SameOption(option, "-ORBEndpoint") || SameOption(option, "-ORBListenEndpoints")) {
        ParseEndpoint(arguments.ValueOf(option), settings);
    } else if (SameOption(option, "-ORBSvcConf")) {
        settings.ssl_profile = arguments.OptionalValueOf(option);
    } else if (option == "-o") {
        settings.ior_file = arguments.ValueOf(option);
    } else if (option == "-p") {
        settings.pid_file = arguments.ValueOf(option);
    } else if (option == "-u") {
        settings.data_directory = arguments.ValueOf(option);
    } else if (option == "-h" || option == "-?" || option == "--help") {
        settings.help = true;
    } else {
        const auto unused = std::find_if(kUnusedOptions.begin(), kUnusedOptions.end(),
                                         [&](const UnusedOption& o) { return SameOption(option, o.name); });
        if (unused == kUnusedOptions.end()) {
            Refuse("The option \"" + option + "\" is unknown.");
        }
        if (unused->takes_value) {
            arguments.ValueOf(option);
        }
        NoteUnused(*unused, settings.ignored);
    }
}

}  // namespace

Settings ParseCommandLine(const std::vector<std::string>& list) {
    Settings settings;
    Arguments arguments(list);
    while (arguments.More()) {
        const std::string option = arguments.Next();
        ParseOption(option, arguments, settings);
    }
    if (!settings.help && settings.port == 0) {
        Refuse("The option \"-ORBEndpoint iiop://HOST:PORT\" is missing.");
    }
    if (settings.ssl_port != 0 && settings.ssl_profile.empty()) {
        Refuse("The endpoint asks for an SSL port, but no \"-ORBSvcConf FILE\" names the SSL options.");
    }
    if (settings.ssl_port != 0 && settings.ssl_port == settings.port) {
        Refuse("The endpoint has the same number for both ports.");
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
           "\n"
           "Other options of TAO's Naming_Service are accepted; one that has no effect here is reported.\n"
           "$QV_OMNINAMES names the omniNames to run when it is not found on the path.\n";
}

}  // namespace qv_naming
