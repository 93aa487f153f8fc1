#include "tools/ssl/profile_check.h"

#include <fstream>
#include <iterator>

#include "orb/ssl/service_config_file.h"
#include "orb/ssl/service_directives.h"
#include "orb/ssl/ssl_error.h"
#include "orb/ssl/tls_setup.h"
#include "tools/ssl/agent_view.h"
#include "tools/ssl/file_access.h"

namespace qv_tools {
namespace {

using qv_ssl::Authenticate;
using qv_ssl::SslSettings;

constexpr const char* kProfile = "profile";
constexpr const char* kOption = "option";

std::string Contents(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void CheckForm(const std::string& text, const std::string& profile, Findings& findings) {
    for (const qv_ssl::ServiceDirective& directive : qv_ssl::SplitDirectives(text, profile)) {
        if (directive.options.find('\n') != std::string::npos) {
            findings.Warn(kProfile, profile,
                          "the options of " + directive.service + " in line " +
                              std::to_string(directive.line) +
                              " go over several lines, which this ORB takes and others don't",
                          "Put the whole directive on one line.");
        }
    }
}

std::optional<SslSettings> Parse(const std::string& text, const std::string& profile, Findings& findings) {
    try {
        const qv_ssl::ServiceConfig config = qv_ssl::ParseServiceConfig(text, profile);
        for (const std::string& remark : config.remarks) {
            findings.Warn(kOption, profile, remark,
                          "Take it out, or correct it if it was meant to do something.");
        }
        if (config.ssl) {
            CheckForm(text, profile, findings);
        } else {
            findings.Error(kProfile, profile, "it has no SSLIOP_Factory, so the ORB would speak without SSL",
                           "Write the directive as `qv_ssl make` shows it.");
        }
        return config.ssl;
    } catch (const qv_ssl::SslError& error) {
        findings.Error(kProfile, profile, error.what(), "Correct it; the processes don't start like this.");
        return std::nullopt;
    }
}

void CheckAuthenticate(const SslSettings& settings, Findings& findings) {
    switch (settings.authenticate) {
        case Authenticate::kNone:
            findings.Warn(
                kOption, settings.profile, "-SSLAuthenticate NONE: nobody is asked for a certificate",
                "Write -SSLAuthenticate SERVER_AND_CLIENT, so that only peers with a certificate come in.");
            return;
        case Authenticate::kServer:
            findings.Warn(
                kOption, settings.profile, "-SSLAuthenticate SERVER: clients come in without a certificate",
                "Write -SSLAuthenticate SERVER_AND_CLIENT, so that only peers with a certificate come in.");
            return;
        case Authenticate::kClient:
        case Authenticate::kServerAndClient:
            findings.Ok(kOption, settings.profile, "both sides have to show a certificate");
    }
}

void CheckOptions(const SslSettings& settings, bool serves, Findings& findings) {
    CheckAuthenticate(settings, findings);
    if (settings.no_protection) {
        findings.Warn(kOption, settings.profile,
                      "-SSLNoProtection: requests in clear are served on the plain port, too",
                      "Take it out, unless clients without SSL are wanted.");
    }
    if (!settings.protocol_named) {
        findings.Warn(kOption, settings.profile, "no -ORBProtocolFactory names the SSLIOP_Factory",
                      "Add the line: static Resource_Factory \"-ORBProtocolFactory SSLIOP_Factory\"");
    }
    for (const auto& [option, file] : {std::pair("-SSLPrivateKey", settings.private_key_file),
                                       std::pair("-SSLCertificate", settings.certificate_file),
                                       std::pair("-SSLCAfile", settings.authority_file)}) {
        if (!file.empty() && file.front() != '/') {
            findings.Warn(kOption, settings.profile,
                          std::string(option) + " names " + file +
                              ", which each process looks for in a directory of its own",
                          "Write the whole path.");
        }
    }
    if (!serves && settings.certificate_file.empty()) {
        findings.Warn(kOption, settings.profile,
                      "no -SSLCertificate, so servers that ask for one refuse this client",
                      "Add -SSLCertificate and -SSLPrivateKey.");
    }
    try {
        qv_ssl::RequireComplete(settings, serves);
    } catch (const qv_ssl::SslError& error) {
        findings.Error(kOption, settings.profile, error.what(), "Add the option that is missing.");
    }
}

/// The agent's start and its check for revocation depend on what it reads itself.
void CheckAgentView(const std::string& text, const SslSettings& settings, Findings& findings) {
    const AgentView view = ViewOfAgent(text);
    if (view.endless_line != 0) {
        findings.Error(kProfile, settings.profile,
                       "line " + std::to_string(view.endless_line) +
                           " is longer than 511 characters, and the agent's start would never get past it",
                       "Use shorter paths, or move options to lines of their own.");
        return;
    }
    std::string differing;
    const auto compare = [&differing](const char* option, const std::string& agent, const std::string& orb) {
        if (agent != orb) {
            differing += std::string(differing.empty() ? "" : ", ") + option;
        }
    };
    compare("-SSLPrivateKeyPasswd", view.pass_phrase, settings.pass_phrase.value_or(""));
    compare("-SSLPrivateKey", view.private_key_file, settings.private_key_file);
    compare("-SSLCertificate", view.certificate_file, settings.certificate_file);
    compare("-SSLCAfile", view.authority_file, settings.authority_file);
    if (differing.empty()) {
        findings.Ok(kProfile, settings.profile, "the ORB and the agent read the same out of it");
        return;
    }
    const std::string text_of_it = "the agent, which takes a value to the end of its line, reads " +
                                   differing + " in another way than the ORB";
    const std::string advice =
        "Repeat these options at the end of the file, each as a comment of its own, as `qv_ssl make` writes "
        "them.";
    const bool revocation =
        view.certificate_file != settings.certificate_file || view.authority_file != settings.authority_file;
    if (revocation) {
        findings.Error(kProfile, settings.profile, text_of_it + ", and so would notice no revocation",
                       advice);
    } else {
        findings.Warn(kProfile, settings.profile, text_of_it, advice);
    }
}

}  // namespace

std::optional<SslSettings> CheckProfile(const std::string& profile, bool serves, Findings& findings) {
    if (!CheckReadable(kProfile, profile, findings)) {
        return std::nullopt;
    }
    const std::string text = Contents(profile);
    const bool secret = text.find("-SSLPrivateKeyPasswd") != std::string::npos;
    CheckPermissions(profile, secret ? Secrecy::kSecret : Secrecy::kPublic, findings);
    std::optional<SslSettings> settings = Parse(text, profile, findings);
    if (settings) {
        CheckOptions(*settings, serves, findings);
        CheckAgentView(text, *settings, findings);
    }
    return settings;
}

}  // namespace qv_tools
