#include <CLI/CLI.hpp>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>

#include "standalone/config_file_path.h"
#include "standalone/settings_file.h"
#include "tools/ssl/ssl_check.h"
#include "tools/ssl/ssl_report.h"
#include "tools/ssl/trial_credentials.h"
#include "tools/usage.h"

namespace {

using qv_tools::CheckTime;
using qv_tools::Findings;
using qv_tools::SslSetUp;
using qv_tools::TrialOptions;

struct CheckOptions {
    std::string profile;
    std::string config;
    std::string share;
    long warn_days = CheckTime().warn_days;
    bool client = false;
    bool json = false;
};

/// The profile that the agent's configuration file names; notes what that file says besides.
std::string ConfiguredProfile(std::string path, Findings& findings) {
    if (path.empty()) {
        path = qv_standalone::ConfigFilePath();
    }
    if (path.empty()) {
        throw std::runtime_error(
            "which profile? Name it with --profile, or the agent's configuration file with --config");
    }
    const qv_standalone::SettingsFile file = qv_standalone::ReadSettingsFile(path);
    if (!file.usable) {
        throw std::runtime_error(file.findings.empty() ? path + " can't be used"
                                                       : FindingText(path, file.findings.front()));
    }
    std::string profile;
    std::string mode = "0";
    for (const auto& item : file.items) {
        if (item.name == "SSL_Profile") {
            profile = item.value;
        } else if (item.name == "SSLMode") {
            mode = item.value;
        }
    }
    if (profile.empty()) {
        throw std::runtime_error(path + " has no SSL_Profile; set it, or name the profile with --profile");
    }
    if (mode == "0") {
        findings.Warn("config", path, "SSLMode is 0, so SSL isn't used",
                      "Set SSLMode = 1 once the other findings are settled.");
    }
    return profile;
}

int Check(const CheckOptions& options) {
    Findings findings;
    SslSetUp setUp{options.profile, options.share, !options.client};
    if (setUp.profile.empty()) {
        setUp.profile = ConfiguredProfile(options.config, findings);
    }
    qv_tools::CheckSsl(setUp, {std::time(nullptr), options.warn_days}, findings);
    (options.json ? qv_tools::PrintSslCheckJson : qv_tools::PrintSslCheck)(std::cout, setUp.profile,
                                                                           findings);
    return ResultOf(findings);
}

int Make(TrialOptions options) {
    options.now = std::time(nullptr);
    for (const std::string& profile : MakeTrialCredentials(options)) {
        std::cout << profile << "\n";
    }
    return 0;
}

void AddCheck(CLI::App& app, CheckOptions& options) {
    CLI::App& check = *app.add_subcommand("check", "Check an SSL set-up before a start");
    auto* const profile =
        check.add_option("--profile", options.profile, "The ORB's service configuration file")
            ->type_name("FILE");
    check
        .add_option("--config", options.config,
                    "Take the profile from this configuration file of the agent, by default the one of "
                    "QV_AGENT_CONFIG")
        ->type_name("FILE")
        ->excludes(profile);
    check.add_option("--share", options.share, "Directory above etc/ssl/nbi/crl with the revocation lists")
        ->type_name("DIR")
        ->envname("_APP_SHARE_DIR");
    check
        .add_option("--warn-days", options.warn_days,
                    "Warn of a certificate that ends in less than this many days")
        ->capture_default_str()
        ->check(CLI::Range(0L, 36500L));
    check.add_flag("--client", options.client,
                   "The profile is for a client, which may do without a certificate");
    check.add_flag("--json", options.json, "Print the findings as JSON, for scripts");
    check.footer(
        "Exit code: 0 nothing found, 1 warnings, 2 errors: SSL won't work, or isn't safe.\n"
        "Run it as the user that the agent runs as.");
}

void AddMake(CLI::App& app, TrialOptions& options) {
    CLI::App& make = *app.add_subcommand("make", "Make an authority, certificates and profiles for a trial");
    make.add_option("--dir", options.directory, "The directory to make; one that is there must be empty")
        ->type_name("DIR")
        ->required();
    make.add_option("--host", options.hosts, "Names and addresses of the servers' host")
        ->type_name("NAME")
        ->capture_default_str();
    make.add_option("--days", options.days, "How many days certificates and revocation list hold")
        ->capture_default_str()
        ->check(CLI::Range(1L, 36500L));
    make.add_flag("--refused", options.refused,
                  "Also make clients to be refused: stranger (of another authority), expired, nameless "
                  "(without a certificate)");
    make.footer(
        "Prints the paths of the profiles. The authority's key lies in clear beside them: for trials only.");
}

int RunCommand(int argc, char** argv) {
    CLI::App app("Checks an SSL set-up of the CORBA agent, and makes one for a trial.");
    app.require_subcommand(1);
    app.footer(
        "Exit code of check: 0 nothing found, 1 warnings, 2 errors; of make: 0 made, 2 not made. 2 as well "
        "for "
        "wrong\nusage. \"qv_ssl check --help\" and \"qv_ssl make --help\" have the options.");
    CheckOptions check;
    TrialOptions make;
    make.hosts = {"localhost", "127.0.0.1"};
    AddCheck(app, check);
    AddMake(app, make);
    if (const auto code = qv_tools::ReadCommandLine(app, "qv_ssl", argc, argv)) {
        return *code;
    }
    return app.got_subcommand("check") ? Check(check) : Make(make);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        const int code = RunCommand(argc, argv);
        if (!std::cout.flush()) {
            std::cerr << "qv_ssl: the output can't be written\n";
            return 2;
        }
        return code;
    } catch (const std::exception& error) {
        std::cerr << "qv_ssl: " << error.what() << "\n";
        return 2;
    }
}
