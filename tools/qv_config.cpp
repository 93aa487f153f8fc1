#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>
#include <string>

#include "standalone/sample_file.h"
#include "standalone/settings_file.h"
#include "tools/config_markdown.h"
#include "tools/config_report.h"
#include "tools/usage.h"

namespace {

int Check(const std::string& path, bool json) {
    const qv_standalone::SettingsFile file = qv_standalone::ReadSettingsFile(path);
    (json ? qv_tools::PrintCheckJson : qv_tools::PrintCheck)(std::cout, file);
    return qv_tools::ResultOf(file);
}

int RunCommand(int argc, char** argv) {
    CLI::App app("Checks and documents the configuration file of the CORBA agent.");
    app.footer(
        "Exit code of --check: 0 nothing found, 1 findings (the file is used in part), 2 the file can't be "
        "used.\nOtherwise: 0 printed, 2 wrong usage or a failure.");
    std::string file;
    bool sample = false;
    bool list = false;
    bool markdown = false;
    bool json = false;
    CLI::Option_group& actions = *app.add_option_group("actions");
    actions.add_option("--check", file, "Check this configuration file")->type_name("FILE");
    actions.add_flag("--sample", sample, "Print an annotated file with all settings and their defaults");
    actions.add_flag("--list", list, "Print a table of all settings");
    actions.add_flag("--markdown", markdown, "Print the reference of all settings as a page of Markdown");
    actions.require_option(1);
    app.add_flag("--json", json, "Print --check or --list as JSON, for scripts");
    if (const auto code = qv_tools::ReadCommandLine(app, "qv_config", argc, argv)) {
        return *code;
    }

    if (sample) {
        std::cout << qv_standalone::SampleFile();
        return 0;
    }
    if (markdown) {
        qv_tools::PrintMarkdown(std::cout);
        return 0;
    }
    if (list) {
        (json ? qv_tools::PrintListJson : qv_tools::PrintList)(std::cout);
        return 0;
    }
    return Check(file, json);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        const int code = RunCommand(argc, argv);
        if (!std::cout.flush()) {
            std::cerr << "qv_config: the output can't be written\n";
            return 2;
        }
        return code;
    } catch (const std::exception& error) {
        std::cerr << "qv_config: " << error.what() << "\n";
        return 2;
    }
}
