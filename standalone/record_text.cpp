#include "standalone/record_text.h"

#include <cstdint>
#include <cstring>

namespace qv_standalone {
namespace {

constexpr const char* kContinuation = "\n    ";
constexpr std::size_t kRoomForContinuations = 64;

void AppendEscaped(std::string& out, char c) {
    static constexpr char kDigits[] = "0123456789abcdef";
    const auto byte = static_cast<unsigned char>(c);
    out += "\\x";
    out += kDigits[byte >> 4];
    out += kDigits[byte & 15];
}

bool IsControl(char c) {
    return (static_cast<unsigned char>(c) < ' ' && c != '\t') || c == '\x7f';
}

/// Whether all of eight bytes are from ' ' on and none is 0x7f: what nearly all text of a log consists of.
bool IsPlain(const char* bytes) {
    constexpr std::uint64_t kOnes = 0x0101010101010101;
    constexpr std::uint64_t kHighBits = 0x80 * kOnes;
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    const std::uint64_t below = (word - ' ' * kOnes) & ~word;
    const std::uint64_t differs = word ^ (0x7f * kOnes);
    const std::uint64_t del = (differs - kOnes) & ~differs;
    return ((below | del) & kHighBits) == 0;
}

/// The first control character from `at` on; `end` when there is none.
std::size_t FindControl(const std::string& text, std::size_t at, std::size_t end) {
    while (at < end && !IsControl(text[at])) {
        at += end - at >= 8 && IsPlain(text.data() + at) ? 8 : 1;
    }
    return at;
}

}  // namespace

void AppendRecordText(std::string& out, const std::string& text) {
    std::size_t length = text.size();
    while (length > 0 && (text[length - 1] == '\n' || text[length - 1] == '\r')) {
        --length;
    }
    for (std::size_t i = 0; i < length; ++i) {
        const std::size_t plain = i;
        i = FindControl(text, i, length);
        out.append(text, plain, i - plain);
        if (i == length) {
            break;
        }
        const char c = text[i];
        if (c == '\r' && text[i + 1] == '\n') {
            continue;
        }
        if (c == '\n') {
            out += kContinuation;
        } else {
            AppendEscaped(out, c);
        }
    }
}

std::string RecordText(const std::string& text) {
    std::string out;
    out.reserve(text.size() + kRoomForContinuations);
    AppendRecordText(out, text);
    return out;
}

void AppendOneLine(std::string& out, const std::string& text) {
    for (const char c : text) {
        if (IsControl(c)) {
            AppendEscaped(out, c);
        } else {
            out += c;
        }
    }
}

std::string OneLine(const std::string& text) {
    std::string out;
    out.reserve(text.size());
    AppendOneLine(out, text);
    return out;
}

const char* LevelName(int level) {
    switch (level) {
        case 0:
            return "critical";
        case 1:
            return "error";
        case 2:
            return "warning";
        case 3:
            return "trace";
        default:
            return level < 0 ? "record" : "debug";
    }
}

}  // namespace qv_standalone
