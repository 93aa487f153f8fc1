#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "tools/qv_spans_reader.h"

namespace qv_tools {

struct TimelineStyle {
    std::size_t width = 100;  ///< columns of a line, at least 80
    bool colour = false;
    bool utf8 = true;  ///< finer bars
};

/// Prints the rows, the oldest first, as a time line: when each began, a bar that shows where it lies between
/// the first beginning and the last end, how long it took, the caller, the operation and the result.
void PrintTimeline(std::ostream& out, const std::vector<SpanRow>& rows, const TimelineStyle& style);

}  // namespace qv_tools
