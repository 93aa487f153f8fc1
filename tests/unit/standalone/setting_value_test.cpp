#include "standalone/setting_value.h"

#include <gtest/gtest.h>

using qv_standalone::Converted;
using qv_standalone::ConvertValue;
using qv_standalone::FindSetting;
using qv_standalone::RawValue;

namespace {

RawValue Boolean(bool on) {
    return {RawValue::kBoolean, on ? 1 : 0, "", on ? "true" : "false"};
}
RawValue Integer(long long n) {
    return {RawValue::kInteger, n, "", "a number"};
}
RawValue String(const std::string& text) {
    return {RawValue::kString, 0, text, "a text"};
}
RawValue List() {
    return {RawValue::kOther, 0, "", "a list"};
}

Converted For(const char* key, const RawValue& raw) {
    return ConvertValue(*FindSetting("agent", key), raw);
}

}  // namespace

TEST(SettingValue, DeliversFlagsAsDigits) {
    const char* const key = "ORBThreadPoolEnable";
    EXPECT_EQ(For(key, Boolean(true)).value, "1");
    EXPECT_EQ(For(key, Boolean(false)).value, "0");
    EXPECT_EQ(For(key, Integer(1)).value, "1");
    EXPECT_EQ(For(key, Integer(0)).value, "0");
    EXPECT_EQ(For(key, String("true")).value, "1");
    EXPECT_EQ(For(key, String("0")).value, "0");
}

TEST(SettingValue, RefusesWhatIsNoFlag) {
    const char* const key = "bLogOperation";
    EXPECT_EQ(For(key, Integer(2)).problem, "2 is neither true nor false");
    EXPECT_EQ(For(key, String("yes")).problem, "\"yes\" is neither true nor false");
    EXPECT_EQ(For(key, List()).problem, "wants true or false, not a list");
}

TEST(SettingValue, DeliversNumbersAsDecimalDigits) {
    EXPECT_EQ(For("CORBAAgent_Port", Integer(12003)).value, "12003");
    EXPECT_EQ(For("CORBAAgent_Port", String("12003")).value, "12003");
    EXPECT_EQ(For("CORBAAgent_Port", String("00080")).value, "80");
    EXPECT_EQ(For("AlarmTimeout", Integer(4294967295)).value, "4294967295");
}

TEST(SettingValue, RefusesNumbersOutOfRange) {
    EXPECT_EQ(For("CORBAAgent_Port", Integer(70000)).problem, "70000 is out of range, 0 to 65535");
    EXPECT_EQ(For("CORBAAgent_Port", Integer(-1)).problem, "-1 is out of range, 0 to 65535");
    EXPECT_NE(For("AlarmTimeout", String("99999999999999999999")).problem, "");
}

TEST(SettingValue, RefusesWhatIsNoWholeNumber) {
    EXPECT_EQ(For("TimeOut", String("abc")).problem, "\"abc\" is not a whole number");
    EXPECT_NE(For("TimeOut", String("")).problem, "");
    EXPECT_NE(For("TimeOut", String("12s")).problem, "");
    EXPECT_NE(For("TimeOut", String(" 12")).problem, "");
    EXPECT_EQ(For("TimeOut", Boolean(true)).problem, "wants a whole number, not true");
}

TEST(SettingValue, DeliversTextsAsTheyAre) {
    EXPECT_EQ(For("EmsName", String("a \"b\" % é")).value, "a \"b\" % é");
    EXPECT_EQ(For("EmsName", String("")).problem, "");
    EXPECT_EQ(For("IDLVersion", Integer(2)).problem, "wants a text in quotes, not a number");
}

TEST(SettingValue, RefusesControlCharactersInTexts) {
    EXPECT_EQ(For("EmsName", String(std::string("a\0b", 3))).problem, "holds a control character (code 0)");
    EXPECT_EQ(For("EmsName", String("a\nb")).problem, "holds a control character (code 10)");
}
