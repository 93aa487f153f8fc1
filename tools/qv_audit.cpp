#include <CLI/CLI.hpp>
#include <chrono>
#include <csignal>
#include <exception>
#include <iostream>
#include <string>

#include "tools/configured_files.h"
#include "tools/qv_audit_query.h"
#include "tools/qv_audit_report.h"
#include "tools/qv_audit_since.h"
#include "tools/text.h"
#include "tools/usage.h"

namespace {

using qv_tools::AuditRow;

struct Wanted {
    std::string file;
    std::string since;
    qv_tools::AuditFilter filter;
    bool detail = false;
    bool json = false;
};

std::int64_t NowMilliseconds() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

void AddOptions(CLI::App& app, Wanted& wanted) {
    wanted.filter.limit = 20;
    app.add_option("FILE", wanted.file, "The audit file; without it, that of the configuration");
    app.add_option("--operation", wanted.filter.operation, "Only this operation; * stands for any letters")
        ->type_name("NAME");
    app.add_option("--address", wanted.filter.address, "Only this caller: host, host:port or user@host:port")
        ->type_name("ADDRESS");
    app.add_option("--since", wanted.since,
                   "Only what began then or later: 30m, 2h, 3d, or 2026-01-31T08:00 (local time; Z or "
                   "+01:00 at the end for another)")
        ->type_name("TIME");
    app.add_flag("--open", wanted.filter.open, "Only operations without an end: under way, or cut off");
    app.add_flag("--failed", wanted.filter.failed,
                 "Only operations that failed; with --open, those of both kinds");
    app.add_option("--limit", wanted.filter.limit, "So many at most, 0 for all")->capture_default_str();
    app.add_flag("--detail", wanted.detail, "Show what was asked and answered in full");
    app.add_flag("--json", wanted.json, "Print a JSON array with all there is, for scripts");
}

void ShowTable(qv_tools::AuditQuery& query, const Wanted& wanted) {
    bool any = false;
    const bool more = query.Run(wanted.filter, [&](const AuditRow& row) {
        if (!any) {
            qv_tools::PrintAuditHeading(std::cout);
        }
        any = true;
        qv_tools::PrintAuditLine(std::cout, row);
        if (wanted.detail) {
            qv_tools::PrintAuditDetail(std::cout, row);
        }
    });
    if (!any) {
        std::cout << "no such operation in the audit\n";
    } else if (more) {
        std::cout << "(the newest " << wanted.filter.limit << "; --limit shows more)\n";
    }
}

void ShowJson(qv_tools::AuditQuery& query, const Wanted& wanted) {
    const char* before = "[\n";
    query.Run(wanted.filter, [&](const AuditRow& row) {
        std::cout << before;
        qv_tools::PrintAuditJson(std::cout, row);
        before = ",\n";
    });
    std::cout << (*before == '[' ? "[]\n" : "\n]\n");
}

int RunCommand(int argc, char** argv) {
    CLI::App app("Shows the audited operations of an agent, newest first. The agent may run meanwhile.");
    app.footer(
        "Times of the table are local ones, those of JSON UTC.\n"
        "Exit code: 0 shown, 2 wrong usage, or the file can't be read, 3 no such file, 4 no audit database, "
        "5 locked.");
    Wanted wanted;
    AddOptions(app, wanted);
    if (const auto code = qv_tools::ReadCommandLine(app, "qv_audit", argc, argv)) {
        return *code;
    }
    if (!wanted.since.empty()) {
        wanted.filter.since_ms = qv_tools::ParseSince(wanted.since, NowMilliseconds());
        if (!wanted.filter.since_ms) {
            throw std::runtime_error("--since " + qv_tools::Printable(wanted.since) +
                                     ": write a time as 30m, 2h, 3d or 2026-01-31T08:00");
        }
    }
    qv_tools::AuditQuery query(wanted.file.empty() ? qv_tools::ConfiguredAuditFile() : wanted.file);
    (wanted.json ? ShowJson : ShowTable)(query, wanted);
    return 0;
}

int Told(const std::exception& error, int code) {
    std::cout.flush();
    std::cerr << "qv_audit: " << error.what() << "\n";
    return code;
}

}  // namespace

int main(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_DFL);  // as in "qv_audit | head"
    try {
        const int code = RunCommand(argc, argv);
        if (!std::cout.flush()) {
            std::cerr << "qv_audit: the output can't be written\n";
            return 2;
        }
        return code;
    } catch (const qv_tools::AuditFault& fault) {
        return Told(fault, fault.kind());
    } catch (const std::exception& error) {
        return Told(error, 2);
    }
}
