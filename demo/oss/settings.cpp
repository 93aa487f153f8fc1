#include "demo/oss/settings.h"

#include <cstdlib>
#include <fstream>
#include <map>

#include "demo/oss/problem.h"
#include "tools/secrets/secret_input.h"
#include "tools/secrets/wiper.h"
#include "tools/usage.h"

namespace qv_oss {
namespace {

constexpr const char* kPasswordVariable = "QV_OSS_PASSWORD";
constexpr const char* kNewPasswordVariable = "QV_OSS_NEW_PASSWORD";

constexpr const char* kFooter =
    "Exit codes: 0 done, 2 wrong usage, 3 naming service not reachable, 4 name not bound, 5 EMS not "
    "reachable,\n"
    "6 login not accepted, 7 session limit reached, 8 no permission, 9 time-out, 10 session ended by the "
    "EMS,\n"
    "11 no such element, 12 no event channel, or its notification service not reachable, 1 anything else.";

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
    app.add_option("--ssl-profile", settings.ssl_profile,
                   "Service configuration file with certificate, key and authorities: calls go by SSL, and "
                   "the port of --naming is the naming service's SSL port")
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

std::string AssignmentProblem(const std::string& text) {
    const std::size_t equals = text.find('=');
    return equals == std::string::npos || equals == 0 ? "\"" + text + "\" is not of the form NAME=VALUE" : "";
}

void AddElementCommands(CLI::App& app, Settings& settings, Commands& commands) {
    CLI::App* const annotate = app.add_subcommand(
        "annotate", "Set attributes of one element, texts, numbers, true or false; show all of them");
    CLI::App* const info = app.add_subcommand(
        "set-info", "Change the additional info of one element, where NAME=- removes one; show all of it");
    const CLI::Validator assignment(AssignmentProblem, "NAME=VALUE");
    for (CLI::App* const command : {annotate, info}) {
        command->add_option("element", settings.element, "Name of the element")->required();
        command->add_option("assignments", settings.assignments, "What to set")
            ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
            ->check(assignment);
    }
    commands[annotate] = Command::kAnnotate;
    commands[info] = Command::kSetInfo;
    commands[app.add_subcommand("count", "Count the elements that the EMS reaches, and the others")] =
        Command::kCount;
}

void AddEventCommands(CLI::App& app, Settings& settings, Commands& commands) {
    CLI::App* const events =
        app.add_subcommand("events", "Show the events of the EMS as they come, until Ctrl-C");
    events->add_option("--filter", settings.filter,
                       "Condition in the Extended Trader Constraint Language, as \"$perceivedSeverity == "
                       "PS_CRITICAL\" or \"$eventNumber > 10 and 'fan' ~ $additionalText\"");
    events
        ->add_option("--types", settings.types,
                     "Only events of these types, with commas between them, as NT_ALARM,NT_HEARTBEAT")
        ->delimiter(',')
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    events->add_option("--count", settings.event_count, "End after so many events")
        ->check(CLI::Range(std::size_t{1}, std::size_t{1000000000}));
    events
        ->add_option_function<double>(
            "--seconds",
            [&settings](const double& seconds) {
                settings.listen_for = std::chrono::milliseconds(static_cast<long>(seconds * 1000));
            },
            "End after so many seconds")
        ->check(CLI::Range(0.001, 31536000.0));
    commands[events] = Command::kEvents;
    CLI::App* const raise = app.add_subcommand("raise", "Let this demo's EMS raise events");
    raise->add_option("count", settings.raise_count, "How many")->required()->check(CLI::Range(1U, 1000000U));
    raise->add_option("--per-second", settings.raise_rate, "How many of them in a second")
        ->capture_default_str()
        ->check(CLI::Range(1U, 10000U));
    commands[raise] = Command::kRaise;
}

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
    CLI::App* const change = app.add_subcommand("change-password", "Give the user another password");
    change->add_option("--new-password-file", settings.new_password_file,
                       "File whose first line is the new password (default: the environment variable "
                       "QV_OSS_NEW_PASSWORD, else a question at the terminal)");
    commands[change] = Command::kChangePassword;
    AddElementCommands(app, settings, commands);
    AddEventCommands(app, settings, commands);
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

std::string Ask(const std::string& question) {
    try {
        return qv_secrets::ReadSecretLine(question);
    } catch (const std::runtime_error& e) {
        throw Problem(kUsage, e.what());
    }
}

std::string Secret(const std::string& file, const char* variable, const std::string& question) {
    if (!file.empty()) {
        return FirstLine(file);
    }
    const char* const value = std::getenv(variable);
    return value != nullptr ? value : Ask(question);
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
        qv_tools::NameTool(app, "qv_demo_oss");
        app.parse(argc, argv);
        TakeCommand(app, commands, parsed.settings);
        parsed.proceed = true;
    } catch (const CLI::ParseError& e) {
        parsed.exit_code = qv_tools::EndOfUsage(app, e);
    }
    return parsed;
}

std::string ReadPassword(const Settings& settings) {
    return Secret(settings.password_file, kPasswordVariable, "password of " + settings.user);
}

std::string ReadNewPassword(const Settings& settings) {
    const bool asked = settings.new_password_file.empty() && std::getenv(kNewPasswordVariable) == nullptr;
    std::string password =
        Secret(settings.new_password_file, kNewPasswordVariable, "new password of " + settings.user);
    const qv_secrets::Wiper wiper(password);
    if (asked) {
        std::string again = Ask("new password again");
        const qv_secrets::Wiper again_wiper(again);
        if (again != password) {
            throw Problem(kUsage, "the new password was not typed the same way twice");
        }
    }
    return std::string(password);  // a copy: this one is overwritten
}

}  // namespace qv_oss
