#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>

namespace qv_tools {

/// Exit code of a program whose command line can't be carried out.
constexpr int kWrongUsage = 2;

/// Names the program, and gives it `--version`.
void NameTool(CLI::App& app, const std::string& tool);

/// Ends what the parser began: prints the help or the version that was asked for, or on standard error one
/// line that names the program and what is wrong, a word that it doesn't know ahead of what is missing.
/// @return the exit code: 0, or kWrongUsage
int EndOfUsage(const CLI::App& app, const CLI::ParseError& error);

/// Names the program and reads its command line; the exit code when there is nothing left to do.
std::optional<int> ReadCommandLine(CLI::App& app, const std::string& tool, int argc, char** argv);

}  // namespace qv_tools
