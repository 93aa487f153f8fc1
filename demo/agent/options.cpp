#include "demo/agent/options.h"

#include <CLI/CLI.hpp>

namespace qv_demo {
namespace {

constexpr int kUsageError = 2;

}  // namespace

ParsedOptions ParseOptions(int argc, char** argv) {
    ParsedOptions parsed;
    Options& options = parsed.options;
    CLI::App app{"A small EMS that serves the MTNM interfaces from a data file."};
    app.footer("It stops on Ctrl-C or SIGTERM; a second one ends it at once.");
    CLI::Option* const hash = app.add_flag("--hash-password", options.hash_password,
                                           "Read a password from standard input, print its hash and end");
    app.add_option("--config", options.config,
                   "Configuration file of the agent (default: the environment variable QV_AGENT_CONFIG)")
        ->check(CLI::ExistingFile)
        ->excludes(hash);
    app.add_option("--log-dir", options.log_dir, "Directory of the logs (default: as configured)")
        ->excludes(hash);
    app.add_option("--inventory", options.inventory, "JSON file with the network elements")->excludes(hash);
    app.add_option("--users", options.users, "TOML file with the users and the hashes of their passwords")
        ->excludes(hash);
    try {
        app.parse(argc, argv);
        if (!options.hash_password && (options.inventory.empty() || options.users.empty())) {
            throw CLI::ValidationError("qv_demo_agent", "--inventory FILE and --users FILE are needed");
        }
        parsed.proceed = true;
    } catch (const CLI::ParseError& e) {
        parsed.exit_code = app.exit(e) == 0 ? 0 : kUsageError;
    }
    return parsed;
}

}  // namespace qv_demo
