#include <cstdlib>

#include "platform/text.h"
#include "time/time_text.h"

namespace NS_CORBA {

namespace {

constexpr std::size_t kDigits = 14;
constexpr std::size_t kMaxLength = 22;
constexpr std::size_t kDayFirstLength = 19;

long Number(const std::string& text, std::size_t position, std::size_t length) {
    return std::strtol(text.substr(position, length).c_str(), nullptr, 10);
}

bool HasDayFirstSeparators(const std::string& text) {
    return text[2] == '/' && text[5] == '/' && text[10] == ' ' && text[13] == ':' && text[16] == ':';
}

/// Brings the day-first forms into the compact ones and leaves everything else as it is.
void Normalise(std::string& text) {
    const bool zulu = text.size() == kDayFirstLength + 1 && text[kDayFirstLength] == 'Z';
    if ((text.size() != kDayFirstLength && !zulu) || !HasDayFirstSeparators(text)) {
        return;
    }
    text = text.substr(6, 4) + text.substr(3, 2) + text.substr(0, 2) + text.substr(11, 2) +
           text.substr(14, 2) + text.substr(17, 2) + (zulu ? ".0Z" : ".0");
}

bool BeginsWithDigits(const std::string& text) {
    for (std::size_t i = 0; i < kDigits; ++i) {
        if (text[i] < '0' || text[i] > '9') {
            return false;
        }
    }
    return true;
}

/// Upper bounds only: mktime makes something of day 0, month 0 and 31 February.
bool ReadFields(const std::string& text, tm& value) {
    const long year = Number(text, 0, 4);
    const long month = Number(text, 4, 2);
    value.tm_year = static_cast<int>(year) - 1900;
    value.tm_mon = static_cast<int>(month) - 1;
    value.tm_mday = static_cast<int>(Number(text, 6, 2));
    value.tm_hour = static_cast<int>(Number(text, 8, 2));
    value.tm_min = static_cast<int>(Number(text, 10, 2));
    value.tm_sec = static_cast<int>(Number(text, 12, 2));
    return year <= 9999 && month <= 12 && value.tm_mday <= 31 && value.tm_hour <= 23 && value.tm_min <= 59 &&
           value.tm_sec <= 59;
}

/// What stands behind the digits. Without a "Z" any character passes as the tenth of a second, with one only
/// a digit does. The forms with an offset, of 21 and 22 characters, are refused like those that nobody knows.
bool HasValidTail(const std::string& text, bool& zulu) {
    zulu = false;
    switch (text.size()) {
        case 14:
            return true;
        case 16:
            return text[14] == '.' && Number(text, 15, 1) <= 9;
        case 17:
            zulu = true;
            return text[14] == '.' && text[16] == 'Z' && NS_UTIL::IsDigit(text.substr(15, 1));
        default:
            return false;
    }
}

}  // namespace

bool ReadTimeText(std::string text, time_t& t) {
    Normalise(text);
    tm value{};
    bool zulu = false;
    if (text.size() < kDigits || text.size() > kMaxLength || !BeginsWithDigits(text) ||
        !ReadFields(text, value) || !HasValidTail(text, zulu)) {
        return false;
    }
    value.tm_isdst = zulu ? 0 : -1;
    t = mktime(&value);
    if (zulu) {
        tzset();
        t -= timezone;
    }
    return true;
}

}  // namespace NS_CORBA
