#include "demo/oss/settings.h"

#include <CLI/CLI.hpp>
#include <cstdlib>
#include <fstream>
#include <map>

#include "demo/common/secret_input.h"
#include "demo/oss/problem.h"

namespace qv_oss {
namespace {

constexpr const char* kPasswordVariable = "QV_OSS_PASSWORD";

constexpr const char* kFooter =
    "Exit codes: 0 done, 2 wrong usage, 3 naming service not reachable, 4 name not bound, 5 EMS not "
    "reachable,\n"
    "6 login not accepted, 7 session limit reached, 8 no permission, 9 time-out, 10 session ended by the "
    "EMS,\n"
    "11 no such element, 1 anything else.";

constexpr const char* kHostCharacters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._-";
constexpr const char* kAddressCharacters = "0123456789abcdefABCDEF:.";

bool ConsistsOf(const std::string& text, const char* characters) {
    return !text.empty() && text.find_first_not_of(characters) == std::string::npos;
}

/// A name, an IPv4 address, or an IPv6 address in brackets.
bool IsHost(const std::string& host) {
    const bool in_brackets = host.size() > 2 && host.front() == '[' && host.back() == ']';
    return in_brackets ? ConsistsOf(host.substr(1, host.size() - 2), kAddressCharacters)
                       : ConsistsOf(host, kHostCharacters);
}

bool IsPort(const std::string& port) {
    return port.size() <= 5 && ConsistsOf(port, "0123456789") && std::stoi(port) >= 1 &&
           std::stoi(port) <= 65535;
}

/// What is wrong with an address; empty when it is of the form HOST:PORT.
std::string AddressProblem(const std::string& address) {
    const std::size_t colon = address.rfind(':');
    if (colon == std::string::npos || !IsHost(address.substr(0, colon))) {
        return "\"" + address + "\" is not of the form HOST:PORT";
    }
    return IsPort(address.substr(colon + 1)) ? "" : "a port is a number from 1 to 65535";
}

void AddCommonOptions(CLI::App& app, Settings& settings) {
    // Of a repeated option the last one counts, so that a person can add to a line of a script.
    app.option_defaults()->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
    app.add_option("--naming", settings.naming, "Naming service as HOST:PORT")
        ->capture_default_str()
        ->check(CLI::Validator(AddressProblem, "HOST:PORT"));
    app.add_option("--ior", settings.ior_file,
                   "File with the reference of the naming service or of the session factory")
        ->check(CLI::ExistingFile);
    app.add_option("--ems", settings.ems, "Name of the EMS (default: the only one that is bound)");
    app.add_option("--user", settings.user, "User to log in as");
    app.add_option(
        "--password-file", settings.password_file,
        "File whose first line is the password (default: the environment variable QV_OSS_PASSWORD, "
        "else a question at the terminal)");
    app.add_option_function<double>(
           "--timeout",
           [&settings](const double& seconds) {
               settings.timeout = std::chrono::milliseconds(static_cast<long>(seconds * 1000));
           },
           "Longest time in seconds that one call may take (default 10)")
        ->check(CLI::Range(0.001, 86400.0));
}

using Commands = std::map<const CLI::App*, Command>;

Commands AddCommands(CLI::App& app, Settings& settings) {
    Commands commands;
    commands[app.add_subcommand("browse", "Show what is bound in the naming service")] = Command::kBrowse;
    CLI::App* const login = app.add_subcommand("login", "Log in, ask the EMS who it is, log out");
    login->add_option("--hold-ms", settings.hold_ms, "Stay logged in for so many milliseconds");
    commands[login] = Command::kLogin;
    commands[app.add_subcommand("ping", "Log in and measure how fast the EMS answers")] = Command::kPing;
    CLI::App* const list = app.add_subcommand("list", "List the network elements");
    commands[list] = Command::kList;
    CLI::App* const show = app.add_subcommand("show", "Show one network element");
    show->add_option("name", settings.element, "Name of the element")->required();
    commands[show] = Command::kShow;
    CLI::App* const session =
        app.add_subcommand("session", "A whole session: find the EMS, log in, read the inventory, log out");
    commands[session] = Command::kSession;
    for (CLI::App* const command : {list, session}) {
        command->add_option("--page", settings.page, "Elements per reply")
            ->capture_default_str()
            ->check(CLI::Range(1U, 10000000U));
    }
    return commands;
}

void TakeCommand(const CLI::App& app, const Commands& commands, Settings& settings) {
    settings.command = commands.at(app.get_subcommands().front());
    if (settings.command != Command::kBrowse && settings.user.empty()) {
        throw CLI::RequiredError("--user");
    }
}

std::string FirstLine(const std::string& file) {
    std::ifstream in(file);
    std::string line;
    if (!in || !std::getline(in, line)) {
        throw Problem(kUsage, "the password file " + file + " can't be read or is empty");
    }
    return line;
}

}  // namespace

ParsedSettings ParseSettings(int argc, char** argv) {
    ParsedSettings parsed;
    CLI::App app{"An OSS that calls an EMS over the MTNM interfaces."};
    app.footer(kFooter);
    app.fallthrough();
    AddCommonOptions(app, parsed.settings);
    const Commands commands = AddCommands(app, parsed.settings);
    app.require_subcommand(1);
    try {
        app.parse(argc, argv);
        TakeCommand(app, commands, parsed.settings);
        parsed.proceed = true;
    } catch (const CLI::ParseError& e) {
        parsed.exit_code = app.exit(e) == 0 ? kOk : kUsage;
    }
    return parsed;
}

std::string ReadPassword(const Settings& settings) {
    if (!settings.password_file.empty()) {
        return FirstLine(settings.password_file);
    }
    if (const char* const password = std::getenv(kPasswordVariable)) {
        return password;
    }
    try {
        return qv_demo::ReadSecretLine("password of " + settings.user);
    } catch (const std::runtime_error& e) {
        throw Problem(kUsage, e.what());
    }
}

}  // namespace qv_oss
