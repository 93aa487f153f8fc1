#include "demo/agent/options.h"

#include "tools/usage.h"

namespace qv_demo {
ParsedOptions ParseOptions(int argc, char** argv) {
    ParsedOptions parsed;
    Options& options = parsed.options;
    CLI::App app{"A small EMS that serves the MTNM interfaces from a data file."};
    app.footer("It stops on Ctrl-C or SIGTERM; a second one ends it at once.");
    app.add_option("--config", options.config,
                   "Configuration file of the agent (default: the environment variable QV_AGENT_CONFIG)")
        ->check(CLI::ExistingFile);
    app.add_option("--log-dir", options.log_dir, "Directory of the logs (default: as configured)");
    app.add_option("--inventory", options.inventory, "JSON file with the network elements")->required();
    app.add_flag(
        "--events", options.events,
        "Send events through the notification service that the configuration names; each is noted in "
        "events.csv beside the logs");
    const auto code = qv_tools::ReadCommandLine(app, "qv_demo_agent", argc, argv);
    parsed.proceed = !code;
    parsed.exit_code = code.value_or(0);
    return parsed;
}

}  // namespace qv_demo
