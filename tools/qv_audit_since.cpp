#include "tools/qv_audit_since.h"

#include <cstdio>
#include <ctime>

namespace qv_tools {
namespace {

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

}  // namespace qv_tools
