#include "tools/ssl/ssl_report.h"

#include <algorithm>
#include <ostream>

#include "tools/json_text.h"
#include "tools/text.h"

namespace qv_tools {
namespace {

const char* Word(Level level) {
    switch (level) {
        case Level::kWarning:
            return "warning";
        case Level::kError:
            return "error";
        case Level::kOk:
            break;
    }
    return "ok";
}

std::size_t CountOf(const Findings& findings, Level level) {
    return static_cast<std::size_t>(
        std::count_if(findings.all().begin(), findings.all().end(),
                      [level](const Finding& finding) { return finding.level == level; }));
}

/// A sentence that names its file anyhow needs no file ahead of it.
std::string Sentence(const Finding& finding) {
    const bool named = finding.file.empty() || finding.text.find(finding.file) != std::string::npos;
    return named ? finding.text : finding.file + ": " + finding.text;
}

}  // namespace

SslResult ResultOf(const Findings& findings) {
    if (CountOf(findings, Level::kError) != 0) {
        return kSslErrors;
    }
    return CountOf(findings, Level::kWarning) != 0 ? kSslWarnings : kSslGood;
}

void PrintSslCheck(std::ostream& out, const std::string& profile, const Findings& findings) {
    constexpr std::size_t kLevelWidth = 9;
    constexpr std::size_t kCheckWidth = 13;
    for (const Finding& finding : findings.all()) {
        out << Padded(Word(finding.level), kLevelWidth) << Padded(finding.check, kCheckWidth)
            << Printable(Sentence(finding)) << "\n";
        if (!finding.advice.empty()) {
            out << std::string(kLevelWidth + kCheckWidth, ' ') << "-> " << Printable(finding.advice) << "\n";
        }
    }
    out << Printable(profile) << ": " << Counted(CountOf(findings, Level::kError), "error") << ", "
        << Counted(CountOf(findings, Level::kWarning), "warning") << "\n";
}

void PrintSslCheckJson(std::ostream& out, const std::string& profile, const Findings& findings) {
    static constexpr const char* kResults[] = {"ok", "warnings", "errors"};
    Json::Value root(Json::objectValue);
    root["profile"] = profile;
    root["result"] = kResults[ResultOf(findings)];
    root["findings"] = Json::Value(Json::arrayValue);
    for (const Finding& finding : findings.all()) {
        Json::Value entry(Json::objectValue);
        entry["level"] = Word(finding.level);
        entry["check"] = finding.check;
        entry["file"] = finding.file;
        entry["text"] = finding.text;
        entry["advice"] = finding.advice;
        if (finding.days_left) {
            entry["days_left"] = static_cast<Json::Int64>(*finding.days_left);
        }
        root["findings"].append(std::move(entry));
    }
    PrintJson(out, root);
}

}  // namespace qv_tools
