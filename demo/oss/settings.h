#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace qv_oss {

enum class Command {
    kBrowse,
    kLogin,
    kPing,
    kList,
    kShow,
    kSession,
    kChangePassword,
    kAnnotate,
    kSetInfo,
    kCount,
    kEvents,
    kRaise
};

/// What the command line asks for.
struct Settings {
    Command command = Command::kBrowse;
    std::string naming = "localhost:12001";  ///< "host:port"
    std::string ior_file;                    ///< goes before `naming`; empty: not given
    std::string ssl_profile;  ///< service configuration file with the SSL options; empty: no SSL
    std::string ems;          ///< empty: the only one that is bound
    std::string user;
    std::string password_file;
    std::string new_password_file;            ///< for kChangePassword
    std::string element;                      ///< for kShow, kAnnotate, kSetInfo
    std::vector<std::string> assignments;     ///< for kAnnotate and kSetInfo, as "name=value"
    unsigned page = 100;                      ///< elements per reply
    unsigned hold_ms = 0;                     ///< for kLogin: keep the session so long
    std::string filter;                       ///< for kEvents: a condition; empty: none
    std::vector<std::string> types;           ///< for kEvents; empty: all
    std::size_t event_count = 0;              ///< for kEvents: end after so many; 0: no limit
    std::chrono::milliseconds listen_for{0};  ///< for kEvents; 0: no limit
    unsigned raise_count = 0;                 ///< for kRaise
    unsigned raise_rate = 10;                 ///< for kRaise, in a second
    std::chrono::milliseconds timeout{10000};
};

/// Either settings, or the exit code after help or a complaint was printed.
struct ParsedSettings {
    bool proceed = false;
    int exit_code = 0;
    Settings settings;
};

ParsedSettings ParseSettings(int argc, char** argv);

/// The password: from the file, else from the environment variable QV_OSS_PASSWORD, else asked for at the
/// terminal. Never from the command line, where everybody on the machine could read it. Raises Problem.
std::string ReadPassword(const Settings& settings);

/// The same for the password that takes its place: --new-password-file, QV_OSS_NEW_PASSWORD, or asked for
/// twice. Raises Problem.
std::string ReadNewPassword(const Settings& settings);

}  // namespace qv_oss
