#include "time/timechange.h"

#include "agent/corbabaseagentconfig.h"
#include "time/time_text.h"

namespace NS_CORBA {

namespace {

using Convert = tm* (*)(const time_t*, tm*);

constexpr std::size_t kUtcTextLength = 17;

time_t Now() {
    return ::time(nullptr);
}

/// Breaks `t` down, or the current time where `t` can't be. False when that can't be either.
bool BreakDown(Convert convert, time_t t, tm& value) {
    if (convert(&t, &value)) {
        return true;
    }
    const time_t now = Now();
    return convert(&now, &value) != nullptr;
}

}  // namespace

tm TimeChange::str2Time(std::string text, bool& invalid) {
    time_t t = Now();
    invalid = !ReadTimeText(std::move(text), t);
    tm value{};
    localtime_r(&t, &value);
    return value;
}

std::string TimeChange::UTCtime2str(const long& t) {
    tm value{};
    if (!BreakDown(&localtime_r, t, value)) {
        return "";
    }
    std::string text = UtcText(value);
    return text.size() == kUtcTextLength ? text : " ";
}

std::string TimeChange::time2UTCStr(const long& t) {
    tm value{};
    return BreakDown(&gmtime_r, t, value) ? UtcText(value) : "";
}

std::string TimeChange::time2UTCStr(tm value) {
    return UtcText(value);
}

long TimeChange::GetNMTimeZone() {
    tzset();
    return timezone;
}

std::string TimeChange::time2strByConf(tm value) {
    const CorbaBaseAgentConfig& config = *CorbaBaseAgentConfig::Instance();
    std::string text = config.TimeShowAppearance() == 1 ? DayFirstText(value) : CompactText(value);
    if (config.TimeZoneRefPoint() == 0) {
        text += 'Z';
    }
    return text;
}

std::string TimeChange::Time2strByConf(const long& t) {
    const bool utc = CorbaBaseAgentConfig::Instance()->TimeZoneRefPoint() == 0;
    tm value{};
    return BreakDown(utc ? &gmtime_r : &localtime_r, t == 0 ? Now() : t, value) ? time2strByConf(value) : "";
}

std::string TimeChange::time2strByConf(const long& t) {
    return Time2strByConf(t);
}

std::string TimeChange::time2strByConf(const std::string& text) {
    bool invalid = false;
    const tm value = str2Time(text, invalid);
    return invalid ? "" : time2strByConf(value);
}

std::string TimeChange::getEMSTimeByNETime(const unsigned long& seconds) {
    return Time2strByConf(static_cast<long>(static_cast<unsigned long>(Now()) + seconds));
}

std::string TimeChange::time2str(tm value) {
    return time2strByConf(value);
}

std::string TimeChange::time2str(const long& t) {
    tm value{};
    return BreakDown(&localtime_r, t, value) ? time2strByConf(value) : "";
}

std::string TimeChange::time2GMStr(const long& t) {
    tm probe{};
    return time2str(gmtime_r(&t, &probe) ? t : Now());
}

std::string TimeChange::localTime2UTCstr(const long& t) {
    return time2GMStr(t);
}

std::string TimeChange::localTime2UTCstr(tm value) {
    return time2GMStr(mktime(&value));
}

std::string TimeChange::getTime() {
    const time_t now = Now();
    tm value{};
    localtime_r(&now, &value);
    return time2strByConf(value);
}

std::string TimeChange::getUTCTime() {
    tm value{};
    BreakDown(&gmtime_r, Now(), value);
    return time2strByConf(value);
}

std::string TimeChange::getLocalTime() {
    const time_t now = Now();
    tm value{};
    localtime_r(&now, &value);
    return PlainText(value);
}

}  // namespace NS_CORBA
