#include "tools/qv_audit_report.h"

#include <json/json.h>

#include <ostream>
#include <string>

#include "tools/qv_audit_caller.h"
#include "tools/qv_audit_query.h"
#include "tools/text.h"

namespace qv_tools {
namespace {

constexpr const char* kIndent = "    ";

std::string ResultWord(const AuditRow& row) {
    if (!row.result) {
        return "open";
    }
    return *row.result == 0 ? "ok" : "failed";
}

/// Times and widths: 19 + 26 + 5 + 25 + 6 + 9, and five times two blanks between.
void PrintCells(std::ostream& out, const std::string& time, const std::string& operation,
                const std::string& risk, const std::string& caller, const std::string& result,
                const std::string& duration) {
    std::string line = Column(time, 19) + "  " + Column(operation, 26) + "  " + Column(risk, 5) + "  " +
                       Column(caller, 25) + "  " + Column(result, 6) + "  " + Column(duration, 9);
    line.erase(line.find_last_not_of(' ') + 1);
    out << line << "\n";
}

void PrintText(std::ostream& out, const std::string& name, const std::string& text) {
    if (!text.empty()) {
        out << kIndent << name << ": " << Printable(text, std::string("\n") + kIndent + kIndent) << "\n";
    }
}

}  // namespace

void PrintAuditHeading(std::ostream& out) {
    PrintCells(out, "TIME", "OPERATION", "RISK", "CALLER", "RESULT", "DURATION");
}

void PrintAuditLine(std::ostream& out, const AuditRow& row) {
    PrintCells(out, LocalTime(row.begin_ms), Printable(row.operation), Printable(row.risk),
               Printable(CallerText(ParseCaller(row.address))), ResultWord(row),
               row.end_ms ? Duration(*row.end_ms - row.begin_ms) : "-");
}

void PrintAuditDetail(std::ostream& out, const AuditRow& row) {
    out << kIndent << "id " << row.id << ", request " << row.request_id << ", process " << row.process
        << ", thread " << row.thread << "\n";
    PrintText(out, "operation", row.operation);
    PrintText(out, "caller", CallerText(ParseCaller(row.address)));
    for (const auto& [name, value] : row.further) {
        PrintText(out, Printable(name), value);
    }
    PrintText(out, "asked", row.info);
    PrintText(out, "answered", row.detail);
    out << "\n";
}

void PrintAuditJson(std::ostream& out, const AuditRow& row) {
    const auto text = [](const std::string& bytes) {
        return Json::Value(bytes.data(), bytes.data() + bytes.size());
    };
    const Caller caller = ParseCaller(row.address);
    Json::Value json;
    json["id"] = Json::Int64(row.id);
    json["request"] = Json::Int64(row.request_id);
    json["process"] = Json::Int64(row.process);
    json["thread"] = Json::Int64(row.thread);
    json["begin"] = UtcTime(row.begin_ms);
    json["end"] = row.end_ms ? Json::Value(UtcTime(*row.end_ms)) : Json::Value();
    json["duration_ms"] = row.end_ms ? Json::Value(Json::Int64(*row.end_ms - row.begin_ms)) : Json::Value();
    json["operation"] = text(row.operation);
    json["risk"] = text(row.risk);
    json["address"] = text(row.address);
    json["user"] = text(caller.user);
    json["host"] = text(caller.host);
    json["port"] = text(caller.port);
    json["result"] = ResultWord(row);
    json["code"] = row.result ? Json::Value(Json::Int64(*row.result)) : Json::Value();
    json["asked"] = text(row.info);
    json["answered"] = text(row.detail);
    json["further"] = Json::Value(Json::objectValue);
    for (const auto& [name, value] : row.further) {
        json["further"][name] = text(value);
    }
    Json::StreamWriterBuilder writer;
    writer["indentation"] = "";
    out << Json::writeString(writer, json);
}

}  // namespace qv_tools
