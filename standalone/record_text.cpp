#include "standalone/record_text.h"

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

}  // namespace

std::string RecordText(const std::string& text) {
    std::size_t length = text.size();
    while (length > 0 && (text[length - 1] == '\n' || text[length - 1] == '\r')) {
        --length;
    }
    std::string out;
    out.reserve(length + kRoomForContinuations);
    for (std::size_t i = 0; i < length; ++i) {
        const std::size_t plain = i;
        while (i < length && !IsControl(text[i])) {
            ++i;
        }
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
    return out;
}

std::string OneLine(const std::string& text) {
    std::string out;
    out.reserve(text.size());
    for (const char c : text) {
        if (IsControl(c)) {
            AppendEscaped(out, c);
        } else {
            out += c;
        }
    }
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
