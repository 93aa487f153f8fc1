#include "demo/oss/event_line.h"

#include <gtest/gtest.h>

namespace qv_oss {
namespace {

EventFields Alarm() {
    return {"20250102030405.0Z", "NT_ALARM", "01020304051", "CRITICAL", "NE-00003", "loss of signal"};
}

TEST(EventLine, HasItsColumnsInOrder) {
    EXPECT_EQ(
        EventLine(Alarm(), false),
        "20250102030405.0Z  NT_ALARM                   01020304051   CRITICAL  NE-00003  loss of signal");
}

TEST(EventLine, ShowsADashForWhatIsMissing) {
    EXPECT_EQ(EventLine({}, false),
              "-                  -                          -             -         -         -");
}

TEST(EventLine, GrowsWithALongName) {
    EventFields event = Alarm();
    event.object = "a name beyond its column";
    EXPECT_NE(EventLine(event, false).find("  a name beyond its column  loss of signal"), std::string::npos);
}

TEST(EventLine, ColoursTheSeverityAlone) {
    const std::string line = EventLine(Alarm(), true);
    EXPECT_NE(line.find("\033[1;31mCRITICAL  \033[0mNE-00003"), std::string::npos) << line;
    EventFields unknown = Alarm();
    unknown.severity = "INDETERMINATE";
    EXPECT_EQ(EventLine(unknown, true).find('\033'), std::string::npos);
}

TEST(EventLine, LetsNoControlCharacterThrough) {
    EventFields event = Alarm();
    event.text = "two\nlines";
    event.object = "\033[2J";
    const std::string line = EventLine(event, false);
    EXPECT_EQ(line.find('\n'), std::string::npos);
    EXPECT_EQ(line.find('\033'), std::string::npos);
}

}  // namespace
}  // namespace qv_oss
