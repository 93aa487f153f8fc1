#include "time/timechange.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <iomanip>
#include <limits>
#include <optional>
#include <regex>
#include <sstream>
#include <thread>
#include <vector>

#include "agent/corbabaseagentconfig.h"
#include "tests/support/config_items.h"
#include "tests/support/scoped_env.h"
#include "tests/unit/time/failing_snprintf.h"

namespace {

using NS_CORBA::CorbaBaseAgentConfig;
using NS_CORBA::TimeChange;

constexpr long kInstant = 1735660798;  // 2024-12-31 15:59:58 UTC
constexpr long kBeyond = std::numeric_limits<long>::max();

/// A zone nine hours east of UTC, unless a test sets another one.
class TimeChangeTest : public ::testing::Test {
  protected:
    TimeChangeTest() {
        CorbaBaseAgentConfig::Destroy();
        tzset();
    }
    ~TimeChangeTest() override { CorbaBaseAgentConfig::Destroy(); }

    void Configure(int appearance, int refPoint) {
        m_items.Set("TimeShowAppearance", std::to_string(appearance));
        m_items.Set("TimeZoneRefPoint", std::to_string(refPoint));
        ASSERT_TRUE(CorbaBaseAgentConfig::Instance()->CorbaBaseAgentReConfig());
    }
    void SetZone(const char* zone) {
        m_zone.emplace("TZ", zone);
        tzset();
    }

    /// What `make` yields, at a moment that `expected` yields the same second for.
    static void ExpectNow(const std::function<std::string()>& make,
                          const std::function<std::string(time_t)>& expected) {
        for (;;) {
            const time_t before = time(nullptr);
            const std::string text = make();
            if (time(nullptr) == before) {
                EXPECT_EQ(text, expected(before));
                return;
            }
        }
    }

  private:
    struct ResetZone {
        ~ResetZone() { tzset(); }
    } m_reset;
    std::optional<qv_test::ScopedEnv> m_zone{std::in_place, "TZ", "JST-9"};
    qv_test::ScopedConfigItems m_items;
};

tm Broken(int year, int month, int day, int hour, int minute, int second) {
    tm value{};
    value.tm_year = year - 1900;
    value.tm_mon = month - 1;
    value.tm_mday = day;
    value.tm_hour = hour;
    value.tm_min = minute;
    value.tm_sec = second;
    return value;
}

const tm kEve = Broken(2024, 12, 31, 23, 59, 58);

std::string Format(const char* format, const tm& value) {
    std::ostringstream text;
    text << std::put_time(&value, format);
    return text.str();
}

std::string Local(const char* format, time_t t) {
    tm value{};
    return Format(format, *localtime_r(&t, &value));
}

std::string Utc(const char* format, time_t t) {
    tm value{};
    return Format(format, *gmtime_r(&t, &value));
}

constexpr char kCompact[] = "%Y%m%d%H%M%S.0";
constexpr char kPlain[] = "%Y%m%d%H%M%S";

/// The local time that `text` stands for; "refused" when it is refused.
std::string Read(const std::string& text) {
    bool invalid = true;
    const tm value = TimeChange::str2Time(text, invalid);
    return invalid ? "refused" : Format(kPlain, value);
}

TEST_F(TimeChangeTest, ReadsCompactFormsAsLocalTime) {
    EXPECT_EQ(Read("20241231235958"), "20241231235958");
    EXPECT_EQ(Read("20241231235958.0"), "20241231235958");
    EXPECT_EQ(Read("20241231235958.9"), "20241231235958");
}

TEST_F(TimeChangeTest, ReadsACompactFormWithZAsUtc) {
    EXPECT_EQ(Read("20241231155958.0Z"), "20250101005958");
    EXPECT_EQ(Read("20241231155958.9Z"), "20250101005958");
}

TEST_F(TimeChangeTest, ReadsDayFirstForms) {
    EXPECT_EQ(Read("31/12/2024 23:59:58"), "20241231235958");
    EXPECT_EQ(Read("31/12/2024 15:59:58Z"), "20250101005958");
}

TEST_F(TimeChangeTest, ReadsUtcInAZoneWithDaylightSaving) {
    SetZone("CET-1CEST,M3.5.0,M10.5.0/3");
    EXPECT_EQ(Read("20240701120000.0Z"), "20240701140000");
    EXPECT_EQ(Read("20240101120000.0Z"), "20240101130000");
    EXPECT_EQ(Read("20240701120000.0"), "20240701120000");
}

TEST_F(TimeChangeTest, TheTenthMayBeAnythingUnlessAZFollows) {
    EXPECT_EQ(Read("20241231235958.x"), "20241231235958");
    EXPECT_EQ(Read("20241231235958.-"), "20241231235958");
    EXPECT_EQ(Read("20241231235958.xZ"), "refused");
    EXPECT_EQ(Read("20241231235958,0"), "refused");
    EXPECT_EQ(Read("20241231235958,0Z"), "refused");
    EXPECT_EQ(Read("20241231235958.0z"), "refused");
}

TEST_F(TimeChangeTest, RefusesOffsets) {
    for (const char* text : {"20241231235958.0+0800", "20241231235958.0-0800", "20241231235958.0Z+0800",
                             "20241231235958.0Z-0800", "20241231235958.0+0000"}) {
        EXPECT_EQ(Read(text), "refused") << text;
    }
}

TEST_F(TimeChangeTest, ARefusedTextGivesTheCurrentLocalTime) {
    for (const char* text : {"20241231235958.0+0800", "20241231235958.0Z+0800", "", "20241301120000"}) {
        bool invalid = false;
        ExpectNow([&] { return Format(kPlain, TimeChange::str2Time(text, invalid)); },
                  [](time_t now) { return Local(kPlain, now); });
        EXPECT_TRUE(invalid) << text;
    }
}

TEST_F(TimeChangeTest, DaysBeyondTheMonthAndZeroesAreNormalised) {
    EXPECT_EQ(Read("20240231120000"), "20240302120000");
    EXPECT_EQ(Read("20240001120000"), "20231201120000");
    EXPECT_EQ(Read("20240100120000"), "20231231120000");
}

TEST_F(TimeChangeTest, RefusesFieldsOverTheirBounds) {
    for (const char* text :
         {"20241301120000", "20241232120000", "20241231240000", "20241231236000", "20241231235960"}) {
        EXPECT_EQ(Read(text), "refused") << text;
    }
    EXPECT_EQ(Read("99991231235959"), "99991231235959");
}

TEST_F(TimeChangeTest, RefusesOtherLengths) {
    const std::string digits(30, '1');
    for (std::size_t length = 0; length <= 30; ++length) {
        EXPECT_EQ(Read(digits.substr(0, length)), length == 14 ? "11111111111111" : "refused") << length;
    }
    EXPECT_EQ(Read("20241231235958.00"), "refused");
    EXPECT_EQ(Read("20241231235958.0ZZ"), "refused");
}

TEST_F(TimeChangeTest, RefusesWhatIsNoDigit) {
    const std::string good = "20241231235958";
    for (std::size_t i = 0; i < good.size(); ++i) {
        for (const char c : {'x', ' ', '-', '+', '\0', '/', ':', '\xb2'}) {
            std::string text = good;
            text[i] = c;
            EXPECT_EQ(Read(text), "refused") << i;
        }
    }
}

TEST_F(TimeChangeTest, ADayFirstFormNeedsItsSeparators) {
    for (const char* text :
         {"31-12/2024 23:59:58", "31/12-2024 23:59:58", "31/12/2024T23:59:58", "31/12/2024 23.59:58",
          "31/12/2024 23:59.58", "31/12/2024 23:59:58z", "31/12/2024 23:59:58 ", "1/12/2024 23:59:58",
          "3x/12/2024 23:59:58", "32/12/2024 23:59:58"}) {
        EXPECT_EQ(Read(text), "refused") << text;
    }
}

TEST_F(TimeChangeTest, UTCtime2strShowsLocalDigitsWithAZ) {
    EXPECT_EQ(TimeChange::UTCtime2str(kInstant), "20250101005958.0Z");
    EXPECT_EQ(TimeChange::UTCtime2str(0), "19700101090000.0Z");
}

TEST_F(TimeChangeTest, UTCtime2strOfAYearOfFiveDigitsIsABlank) {
    SetZone("UTC0");
    EXPECT_EQ(TimeChange::UTCtime2str(253402300799), "99991231235959.0Z");
    EXPECT_EQ(TimeChange::UTCtime2str(253402300800), " ");
    const qv_test::FailingSnprintf failing;
    EXPECT_EQ(TimeChange::UTCtime2str(kInstant), " ");
}

TEST_F(TimeChangeTest, Time2UTCStrShowsUtcDigits) {
    EXPECT_EQ(TimeChange::time2UTCStr(kInstant), "20241231155958.0Z");
    EXPECT_EQ(TimeChange::time2UTCStr(0l), "19700101000000.0Z");
    EXPECT_EQ(TimeChange::time2UTCStr(253402300800), "100000101000000.0Z");
    EXPECT_EQ(TimeChange::time2UTCStr(kEve), "20241231235958.0Z");
    const qv_test::FailingSnprintf failing;
    EXPECT_EQ(TimeChange::time2UTCStr(kInstant), "");
    EXPECT_EQ(TimeChange::time2UTCStr(kEve), "");
}

TEST_F(TimeChangeTest, ATimeBeyondTheCalendarCountsAsNow) {
    Configure(0, 1);
    const auto local = [](time_t now) { return Local(kCompact, now); };
    ExpectNow([] { return TimeChange::UTCtime2str(kBeyond); }, [&](time_t now) { return local(now) + "Z"; });
    ExpectNow([] { return TimeChange::time2UTCStr(kBeyond); },
              [](time_t now) { return Utc(kCompact, now) + "Z"; });
    ExpectNow([] { return TimeChange::time2str(kBeyond); }, local);
    ExpectNow([] { return TimeChange::time2GMStr(kBeyond); }, local);
    ExpectNow([] { return TimeChange::Time2strByConf(kBeyond); }, local);
}

TEST_F(TimeChangeTest, GetNMTimeZoneIsSecondsWestOfUtc) {
    EXPECT_EQ(TimeChange::GetNMTimeZone(), -9 * 3600);
    const qv_test::ScopedEnv zone("TZ", "EST5EDT");
    EXPECT_EQ(TimeChange::GetNMTimeZone(), 5 * 3600);
}

TEST_F(TimeChangeTest, TheConfigurationChoosesTheForm) {
    EXPECT_EQ(TimeChange::time2strByConf(kEve), "20241231235958.0Z");  // both keys at their defaults
    Configure(1, 0);
    EXPECT_EQ(TimeChange::time2strByConf(kEve), "31/12/2024 23:59:58Z");
    Configure(1, 1);
    EXPECT_EQ(TimeChange::time2strByConf(kEve), "31/12/2024 23:59:58");
    Configure(0, 0);
    EXPECT_EQ(TimeChange::time2strByConf(kEve), "20241231235958.0Z");
    Configure(2, 2);
    EXPECT_EQ(TimeChange::time2strByConf(kEve), "20241231235958.0");
    EXPECT_EQ(TimeChange::time2str(kEve), "20241231235958.0");
}

TEST_F(TimeChangeTest, AFailedFormatStillGetsItsZ) {
    const qv_test::FailingSnprintf failing;
    Configure(0, 0);
    EXPECT_EQ(TimeChange::time2strByConf(kEve), "Z");
    Configure(1, 0);
    EXPECT_EQ(TimeChange::time2strByConf(kEve), "Z");
    Configure(0, 1);
    EXPECT_EQ(TimeChange::time2strByConf(kEve), "");
    EXPECT_EQ(TimeChange::getLocalTime(), "");
}

TEST_F(TimeChangeTest, Time2strByConfFollowsTheReferencePoint) {
    Configure(0, 0);
    EXPECT_EQ(TimeChange::Time2strByConf(kInstant), "20241231155958.0Z");
    EXPECT_EQ(TimeChange::time2strByConf(kInstant), "20241231155958.0Z");
    Configure(1, 1);
    EXPECT_EQ(TimeChange::Time2strByConf(kInstant), "01/01/2025 00:59:58");
    EXPECT_EQ(TimeChange::time2strByConf(kInstant), "01/01/2025 00:59:58");
}

TEST_F(TimeChangeTest, ZeroIsNowByConfigurationAndTheEpochElsewhere) {
    Configure(0, 0);
    ExpectNow([] { return TimeChange::Time2strByConf(0); },
              [](time_t now) { return Utc(kCompact, now) + "Z"; });
    ExpectNow([] { return TimeChange::time2strByConf(0l); },
              [](time_t now) { return Utc(kCompact, now) + "Z"; });
    EXPECT_EQ(TimeChange::time2str(0l), "19700101090000.0Z");
    EXPECT_EQ(TimeChange::time2GMStr(0), "19700101090000.0Z");
}

TEST_F(TimeChangeTest, TextsAreBroughtIntoTheConfiguredForm) {
    Configure(1, 1);
    EXPECT_EQ(TimeChange::time2strByConf(std::string("20241231155958.0Z")), "01/01/2025 00:59:58");
    Configure(0, 0);
    EXPECT_EQ(TimeChange::time2strByConf(std::string("31/12/2024 23:59:58")), "20241231235958.0Z");
}

TEST_F(TimeChangeTest, ARefusedTextBecomesAnEmptyOne) {
    EXPECT_EQ(TimeChange::time2strByConf(std::string("20241231235958.0+0800")), "");
    EXPECT_EQ(TimeChange::time2strByConf(std::string()), "");
}

TEST_F(TimeChangeTest, GetEMSTimeByNETimeCountsFromNow) {
    Configure(0, 0);
    ExpectNow([] { return TimeChange::getEMSTimeByNETime(0); },
              [](time_t now) { return Utc(kCompact, now) + "Z"; });
    ExpectNow([] { return TimeChange::getEMSTimeByNETime(86400); },
              [](time_t now) { return Utc(kCompact, now + 86400) + "Z"; });
    ExpectNow([] { return TimeChange::getEMSTimeByNETime(static_cast<unsigned long>(-3600)); },
              [](time_t now) { return Utc(kCompact, now - 3600) + "Z"; });
}

TEST_F(TimeChangeTest, Time2GMStrEqualsTime2str) {
    for (const int refPoint : {0, 1}) {
        Configure(0, refPoint);
        for (const long t : {kInstant, 1l, -1l}) {
            EXPECT_EQ(TimeChange::time2GMStr(t), TimeChange::time2str(t));
            EXPECT_EQ(TimeChange::localTime2UTCstr(t), TimeChange::time2str(t));
        }
    }
    EXPECT_EQ(TimeChange::time2str(kInstant), "20250101005958.0");
}

TEST_F(TimeChangeTest, LocalTime2UTCstrOfABrokenDownTimeKeepsItsDigits) {
    Configure(0, 0);
    EXPECT_EQ(TimeChange::localTime2UTCstr(kEve), "20241231235958.0Z");
    EXPECT_EQ(TimeChange::localTime2UTCstr(Broken(2024, 2, 31, 12, 0, 0)), "20240302120000.0Z");
}

TEST_F(TimeChangeTest, TheCurrentTimeKeepsItsDigitsWhateverItsZ) {
    for (const int refPoint : {0, 1}) {
        Configure(0, refPoint);
        const std::string z = refPoint == 0 ? "Z" : "";
        ExpectNow([] { return TimeChange::getTime(); }, [&](time_t now) { return Local(kCompact, now) + z; });
        ExpectNow([] { return TimeChange::getUTCTime(); },
                  [&](time_t now) { return Utc(kCompact, now) + z; });
        ExpectNow([] { return TimeChange::getLocalTime(); }, [](time_t now) { return Local(kPlain, now); });
    }
    Configure(1, 1);
    EXPECT_TRUE(std::regex_match(TimeChange::getTime(), std::regex("../../.... ..:..:..")));
    ExpectNow([] { return TimeChange::getLocalTime(); }, [](time_t now) { return Local(kPlain, now); });
}

TEST_F(TimeChangeTest, ThreadsMayConvertAtOnce) {
    Configure(0, 0);
    std::vector<std::thread> threads;
    std::atomic<int> wrong{0};
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&wrong] {
            for (int n = 0; n < 200; ++n) {
                wrong += Read("20241231155958.0Z") != "20250101005958";
                wrong += TimeChange::Time2strByConf(kInstant) != "20241231155958.0Z";
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
}

}  // namespace
