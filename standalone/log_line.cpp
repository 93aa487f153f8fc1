#include "standalone/log_line.h"

#include <spdlog/details/os.h>

#include <charconv>
#include <cstdio>
#include <cstdlib>

#include "standalone/record_text.h"

namespace qv_standalone {
namespace {

constexpr std::size_t kMillisAt = sizeof("2026-11-21T16:12:01.") - 1;
constexpr std::size_t kRoomForHead = 64;

}  // namespace

LogLine::LogLine(const std::string& file, int line, int level, const std::string& text) {
    m_text.reserve(text.size() + text.size() / 8 + file.size() + kRoomForHead);
    char number[16];
    const auto put = [this, &number](auto value, const char* behind) {
        const auto end = std::to_chars(number, number + sizeof number, value);
        m_text.append(number, static_cast<std::size_t>(end.ptr - number)).append(behind);
    };
    m_text += " [";
    put(static_cast<unsigned>(spdlog::details::os::thread_id()), "] ");
    m_body = m_text.size();
    put(level, " ");
    m_text.append(LevelName(level)).append(" ");
    AppendOneLine(m_text, file);
    m_text += ':';
    put(line, " ");
    AppendRecordText(m_text, text);
    m_text += '\n';
}

std::string_view LogLine::body() const {
    return std::string_view(m_text).substr(m_body);
}

// A stamp of a busy log differs from the one before it in the milliseconds at most, so only these are made
// anew: spdlog's pattern goes through all parts of it for each record.
std::string_view LogStamp::At(std::chrono::system_clock::time_point time) {
    using namespace std::chrono;
    const auto since = floor<milliseconds>(time.time_since_epoch());
    const auto second = floor<seconds>(since);
    if (second.count() != m_second || m_text.empty()) {
        SetSecond(static_cast<std::time_t>(second.count()));
    }
    const auto millis = (since - second).count();
    m_text[kMillisAt] = static_cast<char>('0' + millis / 100);
    m_text[kMillisAt + 1] = static_cast<char>('0' + millis / 10 % 10);
    m_text[kMillisAt + 2] = static_cast<char>('0' + millis % 10);
    return m_text;
}

void LogStamp::SetSecond(std::time_t second) {
    std::tm local{};
    localtime_r(&second, &local);
    const long minutes = std::labs(local.tm_gmtoff) / 60;
    char text[64];
    const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S.000", &local);
    std::snprintf(text + length, sizeof text - length, "%c%02ld:%02ld", local.tm_gmtoff < 0 ? '-' : '+',
                  minutes / 60, minutes % 60);
    m_text = text;
    m_second = second;
}

}  // namespace qv_standalone
