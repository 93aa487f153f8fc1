#include "tools/usage.h"

#include <iostream>
#include <vector>

namespace qv_tools {
namespace {

std::string WhatIsWrong(const CLI::App& app, const CLI::ParseError& error) {
    // A misspelled option or command is why another one is missing.
    const std::vector<std::string> unknown = app.remaining(true);
    return unknown.empty() ? error.what() : "the argument \"" + unknown.front() + "\" is unknown";
}

}  // namespace

void NameTool(CLI::App& app, const std::string& tool) {
    app.name(tool);
    app.set_version_flag("--version", tool + " " QV_VERSION, "Print the version");
}

int EndOfUsage(const CLI::App& app, const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) {
        return app.exit(error);
    }
    const std::string& tool = app.get_name();
    std::cerr << tool << ": " << WhatIsWrong(app, error) << "; see " << tool << " --help\n";
    return kWrongUsage;
}

std::optional<int> ReadCommandLine(CLI::App& app, const std::string& tool, int argc, char** argv) {
    NameTool(app, tool);
    try {
        app.parse(argc, argv);
        return std::nullopt;
    } catch (const CLI::ParseError& error) {
        return EndOfUsage(app, error);
    }
}

}  // namespace qv_tools
