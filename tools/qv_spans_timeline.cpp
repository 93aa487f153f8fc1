#include "tools/qv_spans_timeline.h"

#include <algorithm>
#include <ostream>

#include "standalone/record_text.h"
#include "tools/text.h"

namespace qv_tools {
namespace {

constexpr std::size_t kGap = 2;
constexpr std::size_t kShortestBar = 10;
constexpr std::size_t kUsualShare = 4;      // of the width, for the bar
constexpr std::size_t kLongestCaller = 21;  // of IPv4 with its port
constexpr std::size_t kLongestName = 30;
constexpr char kRed[] = "\x1b[31m";
constexpr char kDim[] = "\x1b[2m";
constexpr char kPlain[] = "\x1b[0m";

/// One line in columns.
struct Cells {
    std::string start;
    std::string duration;
    std::string caller;
    std::string operation;
    std::string result;
};

struct Widths {
    std::size_t start = 0;
    std::size_t duration = 0;
    std::size_t caller = 0;
    std::size_t operation = 0;
    std::size_t result = 0;

    std::size_t AllButBar() const { return start + duration + caller + operation + result + 5 * kGap; }
};

/// The middle of a long text is what tells least.
std::string Shortened(std::string text, std::size_t longest) {
    text = qv_standalone::OneLine(text);
    if (text.size() <= longest) {
        return text;
    }
    const std::size_t tail = (longest - 2) / 2;
    return text.substr(0, longest - 2 - tail) + ".." + text.substr(text.size() - tail);
}

std::vector<Cells> Contents(const std::vector<SpanRow>& rows) {
    std::vector<Cells> lines;
    for (const SpanRow& row : rows) {
        const std::int64_t offset = row.begin_ms - rows.front().begin_ms;
        lines.push_back({&row == &rows.front() ? "0" : "+" + Duration(offset), Duration(row.duration_ms),
                         row.caller.empty() ? "-" : row.caller, row.operation.empty() ? "-" : row.operation,
                         row.result.empty() ? "-" : row.result});
    }
    return lines;
}

/// The bar gets what the texts leave; where that is too little, names and callers give way.
Widths Fit(std::vector<Cells>& lines, std::size_t width) {
    Widths widths{5, 4, 6, 9, 6};  // of the headings
    for (Cells& line : lines) {
        line.caller = Shortened(line.caller, kLongestCaller);
        line.operation = Shortened(line.operation, kLongestName);
        line.result = Shortened(line.result, 6);
        widths.start = std::max(widths.start, line.start.size());
        widths.duration = std::max(widths.duration, line.duration.size());
        widths.caller = std::max(widths.caller, line.caller.size());
        widths.operation = std::max(widths.operation, line.operation.size());
    }
    const std::size_t bar = std::max(kShortestBar, width / kUsualShare);
    for (auto [member, shortest] : {std::pair(&Widths::operation, 16U), std::pair(&Widths::caller, 9U)}) {
        const std::size_t wanted = widths.AllButBar() + bar;
        if (wanted > width) {
            const std::size_t excess = wanted - width;
            const std::size_t present = widths.*member;
            widths.*member =
                present > shortest + excess ? present - excess : std::min<std::size_t>(present, shortest);
        }
    }
    for (Cells& line : lines) {
        line.operation = Shortened(line.operation, widths.operation);
        line.caller = Shortened(line.caller, widths.caller);
    }
    return widths;
}

/// Where the span lies in the whole time, in columns; at least a mark.
std::string Bar(const SpanRow& row, std::int64_t begin, std::int64_t whole, std::size_t width, bool utf8) {
    const auto column = [&](std::int64_t time) {
        return static_cast<std::size_t>(static_cast<double>(time - begin) / static_cast<double>(whole) *
                                        static_cast<double>(width));
    };
    const std::size_t from = std::min(column(row.begin_ms), width - 1);
    const std::size_t to = std::clamp(column(row.begin_ms + row.duration_ms), from + 1, width);
    const bool point = to - from == 1;
    std::string bar(from, ' ');
    for (std::size_t i = from; i < to; ++i) {
        bar += utf8 ? (point ? "\u258f" : "\u2588") : (point ? "|" : "=");
    }
    return bar + std::string(width - to, ' ');
}

void PrintHeading(std::ostream& out, const Widths& widths, std::size_t bar, std::int64_t whole, bool colour) {
    const std::string scale = Padded("0", bar - std::min(bar, Duration(whole).size())) + Duration(whole);
    const std::string gap(kGap, ' ');
    out << (colour ? kDim : "") << Padded("START", widths.start, true) << gap << scale << gap
        << Padded("TOOK", widths.duration, true) << gap << Padded("CALLER", widths.caller) << gap
        << Padded("OPERATION", widths.operation) << gap << "RESULT" << (colour ? kPlain : "") << "\n";
}

}  // namespace

void PrintTimeline(std::ostream& out, const std::vector<SpanRow>& rows, const TimelineStyle& style) {
    if (rows.empty()) {
        return;
    }
    const std::int64_t begin = rows.front().begin_ms;
    std::int64_t end = begin;
    for (const SpanRow& row : rows) {
        end = std::max(end, row.begin_ms + row.duration_ms);
    }
    const std::int64_t whole = std::max<std::int64_t>(1, end - begin);
    std::vector<Cells> lines = Contents(rows);
    const Widths widths = Fit(lines, style.width);
    const std::size_t bar =
        style.width > widths.AllButBar() + kShortestBar ? style.width - widths.AllButBar() : kShortestBar;
    const std::string gap(kGap, ' ');
    out << "from " << LocalTime(begin) << Milliseconds(begin) << "\n";
    PrintHeading(out, widths, bar, whole, style.colour);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const Cells& line = lines[i];
        const bool red = style.colour && rows[i].result != "200";
        out << Padded(line.start, widths.start, true) << gap << (red ? kRed : "")
            << Bar(rows[i], begin, whole, bar, style.utf8) << (red ? kPlain : "") << gap
            << Padded(line.duration, widths.duration, true) << gap << Padded(line.caller, widths.caller)
            << gap << Padded(line.operation, widths.operation) << gap << (red ? kRed : "") << line.result
            << (red ? kPlain : "") << "\n";
    }
}

}  // namespace qv_tools
