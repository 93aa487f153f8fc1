#include "orb/ssl/service_config_file.h"

#include <strings.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

#include "orb/ssl/service_directives.h"
#include "orb/ssl/ssl_error.h"

namespace qv_ssl {
namespace {

constexpr char kFactory[] = "SSLIOP_Factory";

bool Same(const std::string& a, const char* b) {
    return strcasecmp(a.c_str(), b) == 0;
}

// Options of the factory without a meaning here, and whether a value follows.
struct InertOption {
    const char* name;
    bool has_value;
    const char* reason;
};

constexpr InertOption kInertOptions[] = {
    {"-SSLDHparams", true, "parameters are chosen to fit the key"},
    {"-SSLCheckHost", false, "host names are not compared; who may speak is settled by the authority file"},
    {"-SSLrand", true, "the system supplies random numbers"},
    {"-SSLEGDFile", true, "the system supplies random numbers"},
    {"-SSLVersionList", true, "TLS 1.2 and 1.3 are spoken, nothing older"},
    {"-verbose", false, "there is nothing more to say"},
    {"-v", false, "there is nothing more to say"},
};

// Replaces $NAME where the environment has the variable, and leaves the text alone where it does not.
std::string WithVariables(const std::string& text) {
    constexpr char kName[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_";
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        if (text[at] == '$') {
            const std::size_t end = std::min(text.find_first_not_of(kName, at + 1), text.size());
            const char* value = std::getenv(text.substr(at + 1, end - at - 1).c_str());
            if (value != nullptr) {
                result += value;
                at = end;
                continue;
            }
        }
        result += text[at++];
    }
    return result;
}

/// Reads the options of one SSLIOP_Factory directive.
class OptionReader {
  public:
    OptionReader(std::vector<std::string> words, const std::string& path, ServiceConfig& config)
        : words_(std::move(words)), path_(path), config_(config) {}

    void Run() {
        config_.ssl.emplace();
        config_.ssl->profile = path_;
        while (next_ < words_.size()) {
            const std::string option = words_[next_++];
            if (option == "\n") {
                secret_in_line_ = false;
            } else {
                Take(option);
            }
        }
    }

  private:
    void Take(const std::string& option) {
        SslSettings& ssl = *config_.ssl;
        if (NameIn(option) != option) {
            TakeUnknown(option);
            return;
        }
        // The pass phrase goes first: what follows it must never be taken for an option and be shown.
        if (Same(option, "-SSLPrivateKeyPasswd")) {
            ssl.pass_phrase = PassPhrase(option);
        } else if (Same(option, "-SSLPassword")) {
            ssl.pass_phrase = PlainPassPhrase(option);
        } else if (Same(option, "-SSLPrivateKey")) {
            ssl.private_key_file = File(option);
        } else if (Same(option, "-SSLCertificate")) {
            ssl.certificate_file = File(option);
        } else if (Same(option, "-SSLCAfile")) {
            ssl.authority_file = File(option);
        } else if (Same(option, "-SSLCApath")) {
            ssl.authority_directory = File(option);
        } else if (Same(option, "-SSLAuthenticate")) {
            ssl.authenticate = Mode(option);
        } else if (Same(option, "-SSLNoProtection")) {
            ssl.no_protection = true;
        } else if (Same(option, "-SSLCipherList")) {
            ssl.ciphers = Value(option);
        } else if (Same(option, "-SSLServerCipherOrder")) {
            ssl.server_chooses_cipher = true;
        } else {
            TakeInert(option);
        }
    }

    bool ValueFollows() const { return next_ < words_.size() && words_[next_] != "\n"; }
    bool WordOfValueFollows() const { return ValueFollows() && words_[next_].rfind('-', 0) != 0; }

    // All words up to the next option or the end of the line.
    std::string Value(const std::string& option) {
        if (!WordOfValueFollows()) {
            Refuse(option + " needs a value");
        }
        return Words();
    }

    // The first word may look like an option.
    std::string PassPhrase(const std::string& option) {
        if (!ValueFollows()) {
            Refuse(option + " needs a value");
        }
        secret_in_line_ = true;
        return Words();
    }

    std::string Words() {
        std::string value = words_[next_++];
        while (WordOfValueFollows()) {
            value += " " + words_[next_++];
        }
        return WithVariables(value);
    }

    std::string PlainPassPhrase(const std::string& option) {
        std::string value = PassPhrase(option);
        for (const char* source : {"prompt:", "file:", "env:"}) {
            if (value.rfind(source, 0) == 0) {
                Refuse(option + " takes the pass phrase itself here, not a \"" + source + "\"");
            }
        }
        return value;
    }

    std::string File(const std::string& option) {
        constexpr char kPem[] = "PEM:";
        std::string value = Value(option);
        if (strncasecmp(value.c_str(), kPem, std::strlen(kPem)) == 0) {
            value.erase(0, std::strlen(kPem));
        } else if (strncasecmp(value.c_str(), "ASN1:", 5) == 0) {
            Refuse(option +
                   " names a file in ASN1 form; convert it with the openssl command and write PEM:FILE");
        }
        if (value.empty()) {
            Refuse(option + " names no file");
        }
        return value;
    }

    Authenticate Mode(const std::string& option) {
        const std::string value = Value(option);
        if (Same(value, "NONE")) {
            return Authenticate::kNone;
        }
        if (Same(value, "SERVER")) {
            return Authenticate::kServer;
        }
        if (Same(value, "CLIENT")) {
            return Authenticate::kClient;
        }
        if (Same(value, "SERVER_AND_CLIENT")) {
            return Authenticate::kServerAndClient;
        }
        Refuse(option + " is NONE, SERVER, CLIENT or SERVER_AND_CLIENT and nothing else");
    }

    void TakeInert(const std::string& option) {
        for (const InertOption& inert : kInertOptions) {
            if (Same(option, inert.name)) {
                if (inert.has_value) {
                    Value(option);
                }
                Remark(option + " has no effect: " + inert.reason);
                return;
            }
        }
        TakeUnknown(option);
    }

    // What is no option may be a part of a secret.
    void TakeUnknown(const std::string& option) {
        if (option.rfind('-', 0) != 0) {
            Remark("a word ahead of the first SSL option has no effect");
        } else if (secret_in_line_) {
            Remark(
                "an unknown SSL option in the line of a pass phrase has no effect; a pass phrase of several "
                "words needs quotes");
        } else {
            Remark("the SSL option " + NameIn(option) + " is unknown and has no effect");
        }
        while (WordOfValueFollows()) {
            ++next_;
        }
    }

    static std::string NameIn(const std::string& option) {
        const auto end = std::find_if_not(option.begin(), option.end(), [](unsigned char c) {
            return std::isalnum(c) != 0 || c == '-' || c == '_';
        });
        return std::string(option.begin(), end);
    }

    void Remark(const std::string& what) { config_.remarks.push_back(path_ + ": " + what); }

    [[noreturn]] void Refuse(const std::string& what) const {
        throw SslError("the service configuration file " + path_ + " can't be used: " + what);
    }

    const std::vector<std::string> words_;
    const std::string& path_;
    ServiceConfig& config_;
    std::size_t next_ = 0;
    bool secret_in_line_ = false;  // what follows it may be a part of it
};

bool NamesFactory(const ServiceDirective& directive) {
    const std::vector<std::string> words = SplitOptions(directive.options);
    for (std::size_t i = 0; i + 1 < words.size(); ++i) {
        if (Same(words[i], "-ORBProtocolFactory") && words[i + 1] == kFactory) {
            return true;
        }
    }
    return false;
}

}  // namespace

ServiceConfig ParseServiceConfig(const std::string& text, const std::string& path) {
    ServiceConfig config;
    if (text.find(kFactory) == std::string::npos) {
        return config;  // whatever else it says is for others
    }
    bool named = false;
    for (const ServiceDirective& directive : SplitDirectives(text, path)) {
        if (directive.service == kFactory) {
            OptionReader(SplitOptions(directive.options), path, config).Run();
        }
        named = named || NamesFactory(directive);
    }
    if (config.ssl) {
        config.ssl->protocol_named = named;
    }
    return config;
}

ServiceConfig ReadServiceConfigFile(const std::string& path) {
    std::ostringstream text;
    errno = 0;
    std::ifstream file(path);
    const bool empty = file && file.peek() == std::ifstream::traits_type::eof() && !file.bad();
    if (!empty && !(file && (text << file.rdbuf()))) {
        const int reason = errno;
        throw SslError("the service configuration file " + path +
                       " can't be read: " + (reason != 0 ? std::strerror(reason) : "it is no file"));
    }
    return ParseServiceConfig(text.str(), path);
}

}  // namespace qv_ssl
