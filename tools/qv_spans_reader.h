#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace qv_tools {

/// One request as its span tells it.
struct SpanRow {
    std::int64_t begin_ms = 0;  ///< since the epoch
    std::int64_t duration_ms = 0;
    std::string trace;
    std::string caller;     ///< "ip:port"; empty when it isn't known
    std::string operation;  ///< the last part of the span's name
    std::string result;     ///< "200" for a success
    std::string line;       ///< the span as it stands in the file
};

/// Which spans are wanted.
struct SpanFilter {
    std::string caller;    ///< an ip, an "ip:port", or empty for all
    std::string trace;     ///< empty for all
    std::size_t last = 0;  ///< so many of the newest at most; 0 for all
};

struct SpanRows {
    std::vector<SpanRow> rows;  ///< by the time of their beginning
    std::uint64_t bad_lines = 0;
};

/// Reads the spans of `path` and of the older files put aside beside it ("callchain.1.jsonl" and so on). A
/// line that is no span is counted and skipped. The agent may write meanwhile. Throws std::runtime_error with
/// a sentence when none of the files can be read.
SpanRows ReadSpans(const std::string& path, const SpanFilter& filter);

}  // namespace qv_tools
