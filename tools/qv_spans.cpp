#include <langinfo.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <clocale>
#include <csignal>
#include <cstring>
#include <exception>
#include <iostream>
#include <string>

#include "tools/configured_files.h"
#include "tools/qv_spans_reader.h"
#include "tools/qv_spans_timeline.h"
#include "tools/usage.h"

namespace {

struct Wanted {
    std::string file;
    qv_tools::SpanFilter filter;
    std::size_t width = 0;
    bool json = false;
};

void AddOptions(CLI::App& app, Wanted& wanted) {
    wanted.filter.last = 40;
    app.add_option("FILE", wanted.file, "The file of spans; without it, that of the configuration");
    app.add_option("--last", wanted.filter.last, "So many of the newest, 0 for all")->capture_default_str();
    app.add_option("--caller", wanted.filter.caller, "Only of this caller: ip or ip:port")
        ->type_name("CALLER");
    app.add_option("--trace", wanted.filter.trace, "Only of this trace")->type_name("ID");
    app.add_option("--width", wanted.width, "Columns of a line; without it, 100 or those of the terminal")
        ->check(CLI::Range(80, 1000));
    app.add_flag("--json", wanted.json,
                 "Print the spans as they stand in the file, one per line, for scripts");
}

bool OnTerminal() {
    return isatty(STDOUT_FILENO) == 1;
}

std::size_t Width(const Wanted& wanted) {
    if (wanted.width != 0) {
        return wanted.width;
    }
    winsize size{};
    const bool known = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col >= 80;
    return known ? size.ws_col : 100;
}

void Show(const qv_tools::SpanRows& found, const Wanted& wanted) {
    if (wanted.json) {
        for (const qv_tools::SpanRow& row : found.rows) {
            std::cout << row.line << "\n";
        }
        return;
    }
    if (found.rows.empty()) {
        std::cout << "no such span\n";
        return;
    }
    qv_tools::TimelineStyle style;
    style.width = Width(wanted);
    style.colour = OnTerminal();
    style.utf8 = std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0;
    qv_tools::PrintTimeline(std::cout, found.rows, style);
}

int RunCommand(int argc, char** argv) {
    CLI::App app("Shows the requests that an agent has served as a time line. The agent may run meanwhile.");
    app.footer("Times are local ones. Exit code: 0 shown, 2 wrong usage, or the file can't be read.");
    Wanted wanted;
    AddOptions(app, wanted);
    if (const auto code = qv_tools::ReadCommandLine(app, "qv_spans", argc, argv)) {
        return *code;
    }
    const auto found = qv_tools::ReadSpans(wanted.file.empty() ? qv_tools::ConfiguredSpanFile() : wanted.file,
                                           wanted.filter);
    Show(found, wanted);
    if (found.bad_lines > 0) {
        std::cout.flush();
        std::cerr << "qv_spans: " << found.bad_lines << " line(s) are no spans and were left out\n";
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_DFL);  // as in "qv_spans | head"
    std::setlocale(LC_CTYPE, "");
    try {
        const int code = RunCommand(argc, argv);
        if (!std::cout.flush()) {
            std::cerr << "qv_spans: the output can't be written\n";
            return 2;
        }
        return code;
    } catch (const std::exception& error) {
        std::cout.flush();
        std::cerr << "qv_spans: " << error.what() << "\n";
        return 2;
    }
}
