#include "tools/text.h"

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

std::string TimeText(std::int64_t ms, bool utc) {
    const auto seconds = static_cast<std::time_t>(ms / 1000);
    std::tm parts{};
    char text[64];
    if ((utc ? gmtime_r : localtime_r)(&seconds, &parts) == nullptr) {
        return "(no time)";
    }
    return std::string(text, utc ? std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &parts)
                                 : std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &parts));
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

std::string Padded(const std::string& text, std::size_t width, bool right) {
    const std::string blanks(width > text.size() ? width - text.size() : 0, ' ');
    return right ? blanks + text : text + blanks;
}

std::string Counted(std::size_t number, const std::string& what) {
    return std::to_string(number) + " " + what + (number == 1 ? "" : "s");
}

std::string LocalTime(std::int64_t ms) {
    return TimeText(ms, false);
}

std::string Milliseconds(std::int64_t ms) {
    return "." + Digits(static_cast<unsigned long>(ms < 0 ? 0 : ms % 1000), 10, 3);
}

std::string UtcTime(std::int64_t ms) {
    return TimeText(ms, true) + Milliseconds(ms) + "Z";
}

std::string Duration(std::int64_t ms) {
    char text[40];
    if (ms < 1000) {
        return std::to_string(ms) + " ms";
    }
    const std::int64_t seconds = ms / 1000;
    if (seconds < 60) {
        const std::int64_t hundredths = ms / 10;  // cut: 59.999 s are not a minute yet
        std::snprintf(text, sizeof text, "%.2f s", static_cast<double>(hundredths) / 100.0);
    } else if (seconds < 3600) {
        std::snprintf(text, sizeof text, "%d min %02d s", static_cast<int>(seconds / 60),
                      static_cast<int>(seconds % 60));
    } else {
        std::snprintf(text, sizeof text, "%lld h %02d min", static_cast<long long>(seconds / 3600),
                      static_cast<int>(seconds / 60 % 60));
    }
    return text;
}

}  // namespace qv_tools
