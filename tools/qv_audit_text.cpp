#include "tools/qv_audit_text.h"

#include <cstdio>
#include <ctime>

namespace qv_tools {
namespace {

struct Letter {
    unsigned long code = 0;
    std::size_t size = 0;  // 0: no UTF-8 here
};

bool Continues(char c) {
    return (static_cast<unsigned char>(c) & 0xc0U) == 0x80U;
}

Letter LetterAt(const std::string& text, std::size_t at) {
    const auto first = static_cast<unsigned char>(text[at]);
    if (first < 0x80U) {
        return {first, 1};
    }
    const std::size_t size = first >= 0xf0U ? 4 : first >= 0xe0U ? 3 : 2;
    if (first < 0xc2U || first > 0xf4U || text.size() - at < size) {
        return {};
    }
    unsigned long code = first & (0x7fU >> size);
    for (std::size_t i = 1; i < size; ++i) {
        if (!Continues(text[at + i])) {
            return {};
        }
        code = code << 6U | (static_cast<unsigned char>(text[at + i]) & 0x3fU);
    }
    const bool overlong = (size == 3 && code < 0x800U) || (size == 4 && code < 0x10000U);
    const bool surrogate = code >= 0xd800U && code <= 0xdfffU;
    return overlong || surrogate || code > 0x10ffffU ? Letter{} : Letter{code, size};
}

bool IsControl(unsigned long code) {
    return code < 0x20U || (code >= 0x7fU && code < 0xa0U);
}

bool TurnsDirection(unsigned long code) {
    return (code >= 0x2028U && code <= 0x202eU) || (code >= 0x2066U && code <= 0x2069U) || code == 0x200eU ||
           code == 0x200fU;
}

/// `value` with so many digits at least.
std::string Digits(unsigned long value, unsigned base, std::size_t width) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (; value != 0 || text.size() < width; value /= base) {
        text.insert(text.begin(), kDigits[value % base]);
    }
    return text;
}

std::tm PartsOf(std::int64_t ms, bool utc) {
    const auto seconds = static_cast<std::time_t>(ms / 1000);
    std::tm parts{};
    (utc ? gmtime_r : localtime_r)(&seconds, &parts);
    return parts;
}

std::optional<std::int64_t> Ago(const std::string& text, std::int64_t now_ms) {
    long long count = 0;
    char unit = 0;
    char more = 0;
    if (std::sscanf(text.c_str(), "%9lld%c%c", &count, &unit, &more) != 2 || count < 0) {
        return std::nullopt;
    }
    switch (unit) {
        case 's':
            return now_ms - count * 1000;
        case 'm':
            return now_ms - count * 60 * 1000;
        case 'h':
            return now_ms - count * 3600 * 1000;
        case 'd':
            return now_ms - count * 24 * 3600 * 1000;
        case 'w':
            return now_ms - count * 7 * 24 * 3600 * 1000;
        default:
            return std::nullopt;
    }
}

/// Seconds that the zone is ahead of UTC; nothing when the text is no zone.
std::optional<int> ZoneOffset(const std::string& text) {
    if (text == "Z") {
        return 0;
    }
    char sign = 0;
    int hours = 0;
    int minutes = 0;
    int used = 0;
    if (std::sscanf(text.c_str(), "%c%2d:%2d%n", &sign, &hours, &minutes, &used) != 3 ||
        static_cast<std::size_t>(used) != text.size() || (sign != '+' && sign != '-') || hours < 0 ||
        hours > 23 || minutes < 0 || minutes > 59) {
        return std::nullopt;
    }
    return (sign == '-' ? -60 : 60) * (hours * 60 + minutes);
}

}  // namespace

std::string Printable(const std::string& text, const std::string& newline) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const Letter letter = LetterAt(text, at);
        const std::size_t size = letter.size == 0 ? 1 : letter.size;
        if (text[at] == '\n' && !newline.empty()) {
            out += newline;
        } else if (letter.size == 0 || IsControl(letter.code)) {
            out +=
                "\\x" + Digits(letter.size == 0 ? static_cast<unsigned char>(text[at]) : letter.code, 16, 2);
        } else if (TurnsDirection(letter.code)) {
            out += "\\u" + Digits(letter.code, 16, 4);
        } else {
            out.append(text, at, size);
        }
        at += size;
    }
    return out;
}

std::string Column(const std::string& text, std::size_t width) {
    static const std::string kCut = "...";
    std::size_t letters = 0;
    std::size_t cut = 0;  // where the last letter that stays before kCut ends
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (Continues(text[at])) {
            continue;
        }
        if (letters + kCut.size() == width) {
            cut = at;
        }
        ++letters;
    }
    return letters > width ? text.substr(0, cut) + kCut : text + std::string(width - letters, ' ');
}

std::optional<std::int64_t> ParseSince(const std::string& text, std::int64_t now_ms) {
    if (const auto ago = Ago(text, now_ms)) {
        return ago;
    }
    std::tm parts{};
    parts.tm_isdst = -1;
    const char* rest = strptime(text.c_str(), "%Y-%m-%d", &parts);
    if (rest == nullptr) {
        return std::nullopt;
    }
    if (*rest == 'T' || *rest == ' ') {
        const char* const clock = rest + 1;
        rest = strptime(clock, "%H:%M:%S", &parts);
        if (rest == nullptr) {
            parts.tm_sec = 0;
            rest = strptime(clock, "%H:%M", &parts);
        }
        if (rest == nullptr) {
            return std::nullopt;
        }
    }
    if (*rest == '\0') {
        return static_cast<std::int64_t>(std::mktime(&parts)) * 1000;
    }
    const auto offset = ZoneOffset(rest);
    if (!offset) {
        return std::nullopt;
    }
    return (static_cast<std::int64_t>(timegm(&parts)) - *offset) * 1000;
}

std::string LocalTime(std::int64_t ms) {
    const std::tm parts = PartsOf(ms, false);
    char text[64];
    return std::string(text, std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &parts));
}

std::string UtcTime(std::int64_t ms) {
    const std::tm parts = PartsOf(ms, true);
    char text[64];
    const std::size_t size = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &parts);
    return std::string(text, size) + "." + Digits(static_cast<unsigned long>(ms < 0 ? 0 : ms % 1000), 10, 3) +
           "Z";
}

std::string Duration(std::int64_t ms) {
    constexpr std::int64_t kSecond = 1000;
    constexpr std::int64_t kMinute = 60 * kSecond;
    constexpr std::int64_t kHour = 60 * kMinute;
    if (ms < kSecond) {
        return std::to_string(ms) + " ms";
    }
    if (ms < kMinute) {
        return std::to_string(ms / kSecond) + "." + Digits(static_cast<unsigned long>(ms % kSecond), 10, 3) +
               " s";
    }
    if (ms < kHour) {
        return std::to_string(ms / kMinute) + " min " + std::to_string(ms % kMinute / kSecond) + " s";
    }
    return std::to_string(ms / kHour) + " h " + std::to_string(ms % kHour / kMinute) + " min";
}

}  // namespace qv_tools
