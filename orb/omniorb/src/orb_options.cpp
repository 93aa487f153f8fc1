#include "orb_options.h"

#include <strings.h>

#include <cstring>
#include <functional>
#include <stdexcept>

namespace qv_orb {
namespace {

// How an option that the underlying ORB has no counterpart for is recognised: by its name and whether a value
// follows.
struct InertOption {
    const char* name;
    bool has_value;
};

constexpr InertOption kInertOptions[] = {
    {"-ORBCollocation", true},
    {"-ORBCollocationStrategy", true},
    {"-ORBPreferredInterfaces", true},
    {"-ORBEnforcePreferredInterfaces", true},
    {"-ORBDottedDecimalAddresses", true},
    {"-ORBDaemon", false},
    {"-ORBDebug", false},
    {"-ORBLingerTimeout", true},
    {"-ORBMulticastDiscoveryEndpoint", true},
    {"-ORBNameServicePort", true},
    {"-ORBNegotiateCodesets", true},
    {"-ORBNodelay", true},
    {"-ORBObjRefStyle", true},
    {"-ORBRcvSock", true},
    {"-ORBSndSock", true},
    {"-ORBSingleReadOptimization", true},
    {"-ORBServiceConfigDirective", true},
    {"-ORBSkipServiceConfigOpen", false},
    {"-ORBStdProfileComponents", true},
    {"-ORBUseImR", true},
    {"-ORBUseSharedProfile", true},
};

bool Same(const char* a, const char* b) {
    return strcasecmp(a, b) == 0;
}

class Parser {
  public:
    Parser(int argc, char** argv) : argc_(argc), argv_(argv) {}

    OrbOptions Run(int& argc) {
        int kept = 0;
        while (next_ < argc_) {
            char* argument = argv_[next_];
            if (strncasecmp(argument, "-ORB", 4) != 0) {
                argv_[kept++] = argument;
                ++next_;
                continue;
            }
            ++next_;
            Take(argument);
        }
        if (kept < argc_) {
            argv_[kept] = nullptr;
        }
        argc = kept;
        return std::move(options_);
    }

  private:
    void Take(const char* option) {
        if (Same(option, "-ORBId")) {
            options_.orb_id = Value(option);
        } else if (Same(option, "-ORBServerId")) {
            options_.server_id = Value(option);
        } else if (Same(option, "-ORBInitRef")) {
            Add("InitRef", InitRef(Value(option)));
        } else if (Same(option, "-ORBDefaultInitRef")) {
            Add("DefaultInitRef", Value(option));
        } else if (Same(option, "-ORBEndpoint") || Same(option, "-ORBListenEndpoints")) {
            AddEndpoints(Value(option), options_);
        } else if (Same(option, "-ORBDebugLevel")) {
            Add("traceLevel", Value(option));
        } else if (Same(option, "-ORBSvcConf")) {
            options_.service_config = OptionalValue();
        } else {
            TakeInert(option);
        }
    }

    void TakeInert(const char* option) {
        for (const InertOption& inert : kInertOptions) {
            if (Same(option, inert.name)) {
                options_.without_effect.emplace_back(
                    inert.has_value ? std::string(option) + " " + Value(option) : option);
                return;
            }
        }
        throw std::invalid_argument(std::string("unknown ORB option ") + option);
    }

    bool HasValue() const { return next_ < argc_ && argv_[next_][0] != '-'; }

    std::string Value(const char* option) {
        if (!HasValue()) {
            throw std::invalid_argument(std::string("the ORB option ") + option + " needs a value");
        }
        return argv_[next_++];
    }

    // A composed command line leaves the value out where no file is configured.
    std::string OptionalValue() { return HasValue() ? argv_[next_++] : ""; }

    static std::string InitRef(const std::string& value) {
        const std::size_t equals = value.find('=');
        if (equals == 0 || equals == std::string::npos || equals + 1 == value.size()) {
            throw std::invalid_argument("-ORBInitRef " + value + " is not of the form name=reference");
        }
        return value;
    }

    void Add(const char* name, std::string value) {
        options_.underlying.emplace_back(name, std::move(value));
    }

    const int argc_;
    char** const argv_;
    int next_ = 0;
    OrbOptions options_;
};

[[noreturn]] void BadEndpoint(const std::string& endpoint, const char* why) {
    throw std::invalid_argument("the end point " + endpoint + " is not usable: " + why);
}

std::string CheckedPort(const std::string& port, const std::string& endpoint) {
    if (port.empty()) {
        return "0";
    }
    if (port.find_first_not_of("0123456789") != std::string::npos || port.size() > 5 ||
        std::stoul(port) > 65535) {
        BadEndpoint(endpoint, "a port is a number from 0 to 65535");
    }
    return port;
}

std::vector<std::string> Split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    std::size_t begin = 0;
    while (begin <= text.size()) {
        const std::size_t end = std::min(text.find(separator, begin), text.size());
        parts.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return parts;
}

// One "[version@]host:port[/options]", behind the "iiop://".
void AddAddress(const std::string& address, const std::string& endpoint, OrbOptions& options) {
    const std::size_t slash = address.find('/');
    std::string host = address.substr(0, slash);
    host = host.substr(host.find('@') == std::string::npos ? 0 : host.find('@') + 1);
    const std::size_t bracket = host.rfind(']');
    const std::size_t colon = host.find(':', bracket == std::string::npos ? 0 : bracket);
    const std::string port = colon == std::string::npos ? "" : host.substr(colon + 1);
    host = host.substr(0, colon);
    options.underlying.emplace_back("endPoint", "giop:tcp:" + host + ":" + CheckedPort(port, endpoint));
    if (slash == std::string::npos) {
        return;
    }
    for (const std::string& option : Split(address.substr(slash + 1), '&')) {
        const std::size_t equals = option.find('=');
        const std::string name = option.substr(0, equals);
        const std::string value = equals == std::string::npos ? "" : option.substr(equals + 1);
        if (name == "ssl_port") {
            options.wants_ssl = true;
            options.underlying.emplace_back("endPoint",
                                            "giop:ssl:" + host + ":" + CheckedPort(value, endpoint));
        } else if (name == "portspan" || name == "reuse_addr" || name == "hostname_in_ior") {
            options.without_effect.push_back("-ORBEndpoint …/" + option);
        } else if (!option.empty()) {
            BadEndpoint(endpoint, ("its option " + option + " is unknown").c_str());
        }
    }
}

}  // namespace

void AddEndpoints(const std::string& endpoints, OrbOptions& options) {
    constexpr char kScheme[] = "iiop://";
    for (const std::string& endpoint : Split(endpoints, ';')) {
        if (endpoint.compare(0, std::strlen(kScheme), kScheme) != 0) {
            BadEndpoint(endpoint, "only iiop:// is spoken here");
        }
        for (const std::string& address : Split(endpoint.substr(std::strlen(kScheme)), ',')) {
            AddAddress(address, endpoint, options);
        }
    }
}

OrbOptions TakeOrbOptions(int& argc, char** argv) {
    return Parser(argc, argv).Run(argc);
}

}  // namespace qv_orb
