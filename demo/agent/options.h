#pragma once

#include <string>

namespace qv_demo {

/// What the command line asks for.
struct Options {
    std::string config;     ///< empty: as the environment says
    std::string log_dir;    ///< empty: as the configuration says
    std::string inventory;  ///< data file
    bool events = false;    ///< send events through the notification service
};

/// What a parsed command line means: go on with the options, or end the process with an exit code after CLI's
/// own text (help, version, a wrong option).
struct ParsedOptions {
    bool proceed = false;
    int exit_code = 0;
    Options options;
};

ParsedOptions ParseOptions(int argc, char** argv);

}  // namespace qv_demo
