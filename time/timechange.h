#pragma once

#include <ctime>
#include <string>

#include "platform/export.h"

namespace NS_CORBA {

/// Converts between the system's times and the time strings of the northbound interface.
///
/// Times are seconds since 1970-01-01 UTC; a `tm` is taken as it is, without a look at its zone. "By
/// configuration" means: day first ("31/12/2024 23:59:58") when TimeShowAppearance() is 1, otherwise compact
/// ("20241231235958.0"), with a "Z" behind it when TimeZoneRefPoint() is 0, whatever zone the digits are in.
/// Which zone that is stands with each function; clients rely on it.
///
/// Nothing here throws for bad input, and nothing logs: a text that can't be made is empty. Any thread may
/// call any function; the settings are read at each call, without a lock.
class QV_API TimeChange {
  public:
    TimeChange() = delete;

    /// Reads "20241231235958", "20241231235958.0" or "31/12/2024 23:59:58" as local time, and the last two
    /// with a "Z" behind them as UTC. Days and months may be zero or, up to 31, beyond the month's end: they
    /// are normalised. Offsets are refused.
    /// @param invalid true when the text was refused
    /// @return local time; the current one when the text was refused
    static tm str2Time(std::string text, bool& invalid);

    /// Local digits as "20241231235958.0Z"; a single blank when that takes more than 17 characters.
    static std::string UTCtime2str(const long& t);
    /// UTC digits as "20241231235958.0Z".
    static std::string time2UTCStr(const long& t);
    /// The digits of `value` as "20241231235958.0Z".
    static std::string time2UTCStr(tm value);

    /// Seconds west of UTC, without daylight saving.
    static long GetNMTimeZone();

    /// By configuration, the digits of `value`. A text that can't be made still gets its "Z".
    static std::string time2strByConf(tm value);
    /// By configuration, UTC digits when TimeZoneRefPoint() is 0 and local ones otherwise; 0 stands for now.
    /// @{
    static std::string Time2strByConf(const long& t);
    static std::string time2strByConf(const long& t);
    /// @}
    /// By configuration, the local digits of what str2Time reads; empty when it refuses the text.
    static std::string time2strByConf(const std::string& text);
    /// Time2strByConf of `seconds` from now.
    static std::string getEMSTimeByNETime(const unsigned long& seconds);

    /// By configuration, the digits of `value`.
    static std::string time2str(tm value);
    /// By configuration, local digits; 0 stands for 1970.
    static std::string time2str(const long& t);
    /// By configuration, local digits in spite of the names; `value` is local time too.
    /// @{
    static std::string time2GMStr(const long& t);
    static std::string localTime2UTCstr(const long& t);
    static std::string localTime2UTCstr(tm value);
    /// @}

    /// The current time by configuration, local digits.
    static std::string getTime();
    /// The current time by configuration, UTC digits.
    static std::string getUTCTime();
    /// The current time as "20241231235958", local digits, whatever the configuration.
    static std::string getLocalTime();
};

}  // namespace NS_CORBA
