#include "time/time_text.h"

#include "platform/secure_string.h"

namespace NS_CORBA {

namespace {

constexpr std::size_t kTextSize = 128;
constexpr int kFirstYear = 1900;

// The format has to be a literal for the compiler to check it, hence no table of formats.
template <class Print>
std::string Printed(Print print) {
    char text[kTextSize] = {};
    return print(text) < 0 ? std::string() : std::string(text);
}

int YearOf(const tm& value) {
    // As it is for every year that a time_t of ours can hold, and without an overflow for the others.
    return static_cast<int>(static_cast<unsigned>(value.tm_year) + kFirstYear);
}

int MonthOf(const tm& value) {
    return static_cast<int>(static_cast<unsigned>(value.tm_mon) + 1);
}

}  // namespace

std::string UtcText(const tm& value) {
    return Printed([&](char* text) {
        return snprintf_s(text, kTextSize, kTextSize - 1, "%04d%02d%02d%02d%02d%02d.0Z", YearOf(value),
                          MonthOf(value), value.tm_mday, value.tm_hour, value.tm_min, value.tm_sec);
    });
}

std::string CompactText(const tm& value) {
    return Printed([&](char* text) {
        return snprintf_s(text, kTextSize, kTextSize - 1, "%04d%02d%02d%02d%02d%02d.0", YearOf(value),
                          MonthOf(value), value.tm_mday, value.tm_hour, value.tm_min, value.tm_sec);
    });
}

std::string DayFirstText(const tm& value) {
    return Printed([&](char* text) {
        return snprintf_s(text, kTextSize, kTextSize - 1, "%02d/%02d/%04d %02d:%02d:%02d", value.tm_mday,
                          MonthOf(value), YearOf(value), value.tm_hour, value.tm_min, value.tm_sec);
    });
}

std::string PlainText(const tm& value) {
    return Printed([&](char* text) {
        return snprintf_s(text, kTextSize, kTextSize - 1, "%04d%02d%02d%02d%02d%02d", YearOf(value),
                          MonthOf(value), value.tm_mday, value.tm_hour, value.tm_min, value.tm_sec);
    });
}

}  // namespace NS_CORBA
