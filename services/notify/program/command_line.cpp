#include "services/notify/program/command_line.h"

#include <strings.h>

#include <array>
#include <charconv>

#include "services/common/tao_arguments.h"

namespace qv_notify {

namespace {

using qv_service::SameOption;
using qv_service::UnusedOption;

constexpr const char* kOwnThreads = "the service has a pool of threads of its own; see --threads";

// Options that TAO's notification service knows and that have no counterpart here.
constexpr std::array kUnusedOptions{
    UnusedOption{"-Boot", false, "the service does not answer multicasts"},
    UnusedOption{"-Channel", false, "clients create the channels that they need"},
    UnusedOption{"-ChannelName", true, "clients create the channels that they need"},
    UnusedOption{"-RunThreads", true, kOwnThreads},
    UnusedOption{"-ORBRunThreads", true, kOwnThreads},
    UnusedOption{"-UseSeparateDispatchingORB", true, "consumers are called on threads of their own anyway"},
    UnusedOption{"-AllocateTaskperProxy", false, kOwnThreads},
    UnusedOption{"-AllowReconnect", false, "a proxy that is kept keeps its client"},
    UnusedOption{"-DefaultConsumerAdminFilterOp", true, "the default admins combine filters with AND"},
    UnusedOption{"-DefaultSupplierAdminFilterOp", true, "the default admins combine filters with AND"},
    UnusedOption{"-NoUpdates", false, "a client switches updates off with obtain_offered_types"},
    UnusedOption{"-Timeout", true, "--call-timeout sets how long a client may take"},
};

class Arguments : public qv_service::TaoArguments {
  public:
    using TaoArguments::TaoArguments;

    std::uint64_t NumberOf(const std::string& option, std::uint64_t least, std::uint64_t most) {
        const std::string& text = ValueOf(option);
        std::uint64_t number = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        if (error != std::errc() || end != text.data() + text.size() || number < least || number > most) {
            Refuse("The value \"" + text + "\" of \"" + option + "\" is not a number from " +
                   std::to_string(least) + " to " + std::to_string(most) + ".");
        }
        return number;
    }
};

std::uint16_t ReadPort(const std::string& digits, const std::string& endpoint, const Arguments& arguments) {
    const std::optional<std::uint16_t> port = qv_service::ReadPort(digits);
    if (!port) {
        arguments.Refuse("The port \"" + digits + "\" of \"" + endpoint +
                         "\" is not a number from 0 to 65535.");
    }
    return *port;
}

// The first address tells where the service is; the others, and options but ssl_port, are the ORB's business.
void ReadEndpoint(const std::string& endpoint, const Arguments& arguments, Settings& settings) {
    const std::optional<qv_service::TaoEndpoint> parts = qv_service::SplitEndpoint(endpoint);
    if (!parts) {
        arguments.Refuse("The end point \"" + endpoint + "\" is not of the form iiop://HOST:PORT.");
    }
    for (const std::string& option : parts->options) {
        if (const auto digits = qv_service::EndpointValue(option, "ssl_port")) {
            settings.ssl_port = digits->empty() ? std::uint16_t{0} : ReadPort(*digits, endpoint, arguments);
        }
    }
    settings.host = parts->host;
    if (parts->port) {
        settings.port = ReadPort(*parts->port, endpoint, arguments);
    }
}

void ReadOrbOption(const std::string& option, Arguments& arguments, Settings& settings) {
    settings.orb_arguments.push_back(option);
    if (!arguments.ValueFollows()) {
        return;
    }
    const std::string& value = arguments.Next();
    settings.orb_arguments.push_back(value);
    if (SameOption(option, "-ORBInitRef") && value.rfind("NameService=", 0) == 0) {
        settings.register_name = true;
    }
    if (SameOption(option, "-ORBSvcConf")) {
        settings.ssl_profile = value;
    }
    const bool endpoint = SameOption(option, "-ORBEndpoint") || SameOption(option, "-ORBListenEndpoints");
    if (endpoint && settings.port == 0) {
        ReadEndpoint(value, arguments, settings);
    }
}

bool ReadLimit(const std::string& option, Arguments& arguments, Settings& settings) {
    constexpr std::uint64_t kMany = 1000000000;
    ServiceLimits& limits = settings.limits;
    if (option == "--consumer-queue") {
        limits.events_per_consumer = arguments.NumberOf(option, 1, kMany);
    } else if (option == "--channel-queue") {
        limits.channel.max_events = arguments.NumberOf(option, 1, kMany);
    } else if (option == "--channel-memory") {
        limits.channel.max_bytes = arguments.NumberOf(option, 1, 1000000) * (std::size_t{1} << 20);
    } else if (option == "--threads") {
        limits.delivery_threads = arguments.NumberOf(option, 1, 1000);
    } else if (option == "--call-timeout") {
        settings.call_timeout = std::chrono::milliseconds(arguments.NumberOf(option, 1, 3600000));
    } else if (option == "--give-up-after") {
        const std::uint64_t seconds = arguments.NumberOf(option, 0, 31536000);
        limits.retry.give_up_after.reset();
        if (seconds > 0) {
            limits.retry.give_up_after = std::chrono::seconds(seconds);
        }
    } else {
        return false;
    }
    return true;
}

void ReadOption(const std::string& option, Arguments& arguments, Settings& settings) {
    if (strncasecmp(option.c_str(), "-ORB", 4) == 0 && !SameOption(option, "-ORBRunThreads")) {
        ReadOrbOption(option, arguments, settings);
    } else if (SameOption(option, "-Factory")) {
        settings.factory_name = arguments.ValueOf(option);
    } else if (SameOption(option, "-IORoutput")) {
        settings.ior_file = arguments.ValueOf(option);
    } else if (SameOption(option, "-NameSvc")) {
        settings.register_name = true;
    } else if (SameOption(option, "-NoNameSvc")) {
        settings.never_register = true;
    } else if (option == "-u") {
        settings.data_directory = arguments.ValueOf(option);
    } else if (option == "-p") {
        settings.pid_file = arguments.ValueOf(option);
    } else if (option == "--check") {
        settings.check = true;
    } else if (option == "-h" || option == "-?" || option == "--help") {
        settings.help = true;
    } else if (option == "--version") {
        settings.version = true;
    } else if (!ReadLimit(option, arguments, settings)) {
        arguments.PassOver(option, kUnusedOptions, settings.ignored);
    }
}

}  // namespace

Settings ParseCommandLine(const std::vector<std::string>& list) {
    Settings settings;
    settings.limits.retry.give_up_after = std::chrono::minutes(10);
    Arguments arguments(list, "\"Notify_Service --help\" lists the options.");
    while (arguments.More()) {
        const std::string option = arguments.Next();
        ReadOption(option, arguments, settings);
    }
    settings.register_name = settings.register_name && !settings.never_register;
    if (settings.ssl_port && settings.ssl_profile.empty()) {
        arguments.Refuse(
            "The end point asks for an SSL port, but no \"-ORBSvcConf FILE\" names the SSL options.");
    }
    if (settings.ssl_port && settings.port != 0 && *settings.ssl_port == settings.port) {
        arguments.Refuse("The end point has the same number for both ports.");
    }
    return settings;
}

std::string UsageText() {
    return "usage: Notify_Service -ORBEndpoint iiop://HOST:PORT [-ORBInitRef NameService=REFERENCE] "
           "[options]\n"
           "\n"
           "Serves event channels to corbaloc:iiop:HOST:PORT/NotifyEventChannelFactory until it is sent "
           "SIGTERM,\n"
           "SIGINT or SIGHUP.\n"
           "\n"
           "  -ORBEndpoint E         where to listen; without a port nothing can outlive the process; with\n"
           "                         /ssl_port=PORT behind it, by SSL as well\n"
           "  -ORBInitRef N=R        where the naming service is, in which the factory is registered\n"
           "  -ORBSvcConf FILE       service configuration file with the options of the SSLIOP factory; "
           "requests at\n"
           "                         the plain port are refused unless -SSLNoProtection stands there\n"
           "  -Factory NAME          name of the factory instead of NotifyEventChannelFactory\n"
           "  -IORoutput FILE        write the reference of the factory to FILE once the service is up\n"
           "  -NoNameSvc             register nothing\n"
           "  -u DIR                 keep persistent channels in DIR; otherwise in notify-PORT below\n"
           "                         $QV_NOTIFY_DATA, the directory of -IORoutput, $XDG_STATE_HOME/qv_notify "
           "or\n"
           "                         $HOME/.local/state/qv_notify, the first that is set\n"
           "  -p FILE                write the process id to FILE\n"
           "  --consumer-queue N     events that wait for one consumer at most (100000), where the client "
           "sets no\n"
           "                         MaxEventsPerConsumer\n"
           "  --channel-queue N      events that one channel holds at most (500000)\n"
           "  --channel-memory MIB   memory for the events of one channel (1024)\n"
           "  --threads N            threads that call consumers (64)\n"
           "  --call-timeout MS      how long a client may take for a call (10000)\n"
           "  --give-up-after S      end a consumer that could not be reached for so long (600; 0: never);\n"
           "                         consumers of persistent channels are never given up\n"
           "  --check                check the set-up, say what is wrong with it, and end\n"
           "  --help                 print this text\n"
           "  --version              print the version\n"
           "\n"
           "Other options of TAO's Notify_Service are accepted; one that has no effect here is reported.\n";
}

}  // namespace qv_notify
