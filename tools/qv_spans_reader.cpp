#include "tools/qv_spans_reader.h"

#include <json/reader.h>
#include <json/value.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <utility>

namespace qv_tools {
namespace {

namespace fs = std::filesystem;

std::string Caller(const Json::Value& host) {
    const std::string ip = host["ip"].asString();
    const std::string port = host["port"].asString();
    return ip.empty() && port.empty() ? "" : ip + ":" + port;
}

/// Milliseconds since 1970, of the years up to 9999, so that differences and sums of times stay numbers.
std::int64_t Time(const Json::Value& timestamp) {
    constexpr std::int64_t kLatest = 253402300799999;
    return std::clamp<std::int64_t>(timestamp.asInt64(), 0, kLatest);
}

/// Throws Json::Exception when it is no span.
SpanRow Row(const Json::Value& span) {
    SpanRow row;
    const Json::Value& annotations = span["annotations"];
    if (!annotations.isArray() || annotations.size() != 2) {
        throw Json::RuntimeError("no times");
    }
    row.begin_ms = Time(annotations[0]["timestamp"]);
    row.duration_ms = std::max<std::int64_t>(0, Time(annotations[1]["timestamp"]) - row.begin_ms);
    row.caller = Caller(annotations[0]["host"]);
    row.trace = span["traceId"].asString();
    const std::string name = span["name"].asString();
    row.operation = name.substr(name.rfind(':') + 1);
    for (const Json::Value& entry : span["append"]) {
        if (entry["key"].asString() == "resultCode") {
            row.result = entry["value"].asString();
        }
    }
    return row;
}

std::optional<SpanRow> Parse(Json::CharReader& reader, const std::string& line) {
    try {
        Json::Value span;
        if (!reader.parse(line.data(), line.data() + line.size(), &span, nullptr) || !span.isObject()) {
            return std::nullopt;
        }
        return Row(span);
    } catch (const Json::Exception&) {
        return std::nullopt;
    }
}

bool IsWanted(const SpanRow& row, const SpanFilter& filter) {
    const bool ofCaller =
        filter.caller.empty() || row.caller == filter.caller || row.caller.rfind(filter.caller + ":", 0) == 0;
    return ofCaller && (filter.trace.empty() || row.trace == filter.trace);
}

/// The files, the newest first: path, path with ".1" ahead of its extension, and so on up to the first gap.
std::vector<fs::path> Files(const fs::path& path) {
    std::vector<fs::path> files{path};
    for (int number = 1;; ++number) {
        const fs::path older = path.parent_path() / (path.stem().string() + "." + std::to_string(number) +
                                                     path.extension().string());
        std::error_code unreadable;
        if (!fs::exists(older, unreadable)) {
            return files;
        }
        files.push_back(older);
    }
}

bool ReadFile(const fs::path& path, const SpanFilter& filter, SpanRows& found) {
    std::ifstream file(path, std::ios::binary);
    if (!file || fs::is_directory(path)) {
        return false;
    }
    const Json::CharReaderBuilder builder;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    for (std::string line; std::getline(file, line);) {
        if (line.empty()) {
            continue;
        }
        std::optional<SpanRow> row = Parse(*reader, line);
        if (!row) {
            ++found.bad_lines;
        } else if (IsWanted(*row, filter)) {
            row->line = std::move(line);
            found.rows.push_back(std::move(*row));
        }
    }
    return true;
}

void KeepNewest(std::vector<SpanRow>& rows, std::size_t last) {
    std::stable_sort(rows.begin(), rows.end(),
                     [](const SpanRow& a, const SpanRow& b) { return a.begin_ms < b.begin_ms; });
    if (last != 0 && rows.size() > last) {
        rows.erase(rows.begin(), rows.end() - static_cast<std::ptrdiff_t>(last));
    }
}

}  // namespace

SpanRows ReadSpans(const std::string& path, const SpanFilter& filter) {
    std::error_code unreadable;
    if (fs::is_directory(path, unreadable)) {
        throw std::runtime_error(path + ": this is no file");
    }
    SpanRows found;
    bool any = false;
    errno = 0;
    int reason = 0;
    const std::vector<fs::path> files = Files(path);
    // The oldest first: what is put aside meanwhile is then read twice at worst, never missed.
    for (auto file = files.rbegin(); file != files.rend(); ++file) {
        if (ReadFile(*file, filter, found)) {
            any = true;
        } else {
            reason = errno;
        }
    }
    if (!any) {
        throw std::runtime_error(path + " can't be read: " + std::strerror(reason == 0 ? EISDIR : reason) +
                                 ". Is call_chain switched on, and has a request come since?");
    }
    KeepNewest(found.rows, filter.last);
    return found;
}

}  // namespace qv_tools
