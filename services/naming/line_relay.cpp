#include "services/naming/line_relay.h"

#include <array>
#include <utility>

namespace qv_naming {
namespace {

constexpr std::size_t kMaxDistinctMessages = 100;

const std::string kRootContext = "Root context is ";
const std::string kParseError = "parse error in data file";

// What the name server says on every healthy start and at every checkpoint.
constexpr std::array<const char*, 9> kRoutine{"-ORBendPoint option overriding",
                                              "Data file: ",
                                              "Starting omniNames for the first time",
                                              "Wrote initial data file",
                                              "Read data file",
                                              "Root context is ",
                                              "Checkpointing Phase",
                                              "Checkpointing completed",
                                              "omniNames shutting down"};

bool StartsWith(const std::string& text, const char* prefix) {
    return text.rfind(prefix, 0) == 0;
}

bool IsRoutine(const std::string& message) {
    for (const char* prefix : kRoutine) {
        if (StartsWith(message, prefix)) {
            return true;
        }
    }
    return false;
}

// "omniNames: (0) 2024-01-31 12:00:00.000000: text" becomes "text", so that repeats can be recognised.
std::string WithoutStamp(const std::string& line) {
    if (!StartsWith(line, "omni")) {
        return line;
    }
    const auto stamp = line.find(": (");
    const auto end = stamp == std::string::npos ? stamp : line.find(": ", stamp + 2);
    return end == std::string::npos ? line : line.substr(end + 2);
}

}  // namespace

std::vector<std::string> LineRelay::Take(const std::string& output, Clock::time_point now) {
    std::vector<std::string> lines;
    rest_ += output;
    std::size_t begin = 0;
    for (auto end = rest_.find('\n'); end != std::string::npos; end = rest_.find('\n', begin)) {
        const std::string message = WithoutStamp(rest_.substr(begin, end - begin));
        begin = end + 1;
        if (message.empty()) {
            continue;
        }
        Understand(message);
        if (!IsRoutine(message)) {
            last_message_ = message;
            std::string shown = Filter(message, now);
            if (!shown.empty()) {
                lines.push_back(std::move(shown));
            }
        }
    }
    rest_.erase(0, begin);
    return lines;
}

void LineRelay::Understand(const std::string& message) {
    if (StartsWith(message, kRootContext.c_str())) {
        root_reference_ = message.substr(kRootContext.size());
    } else if (message.find(kParseError) != std::string::npos) {
        data_damaged_ = true;
        const auto line = message.rfind("line ");
        damaged_line_ =
            line == std::string::npos ? "" : message.substr(line, message.find_last_not_of('.') + 1 - line);
    }
}

std::string LineRelay::Filter(const std::string& message, Clock::time_point now) {
    if (seen_.size() >= kMaxDistinctMessages && seen_.count(message) == 0) {
        seen_.clear();
    }
    const auto [entry, first] = seen_.try_emplace(message, Repeats{now, 0});
    Repeats& repeats = entry->second;
    if (first) {
        return message;
    }
    if (now - repeats.shown < kQuietTime) {
        ++repeats.held_back;
        return {};
    }
    const unsigned long held_back = std::exchange(repeats.held_back, 0);
    repeats.shown = now;
    return held_back == 0 ? message : message + " (and " + std::to_string(held_back) + " times before)";
}

}  // namespace qv_naming
