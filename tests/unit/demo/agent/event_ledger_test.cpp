#include "demo/agent/core/event_ledger.h"

#include <gtest/gtest.h>

#include "tests/support/temp_dir.h"

namespace qv_demo {
namespace {

PlannedEvent Alarm() {
    PlannedEvent event;
    event.number = 12;
    event.kind = EventKind::kAlarm;
    event.severity = EventSeverity::kMajor;
    event.element = "NE-00003";
    return event;
}

TEST(EventLedger, ALineTellsOfAnEventAndItsOutcome) {
    EXPECT_EQ(LedgerLine(Alarm(), "01020304051", true),
              "event,12,01020304051,NT_ALARM,PS_MAJOR,NE-00003,sent");
    EXPECT_EQ(LedgerLine(PlanHeartbeat(13), "01020304052", false),
              "event,13,01020304052,NT_HEARTBEAT,,,held");
}

TEST(EventLedger, LinesAreInTheFileAtOnceAndBehindThoseOfAnEarlierRun) {
    const qv_test::TempDir dir;
    const std::string path = dir.Write("events.csv", "cleared,before\n");
    EventLedger ledger(path);
    EXPECT_TRUE(ledger.NoteEvent(Alarm(), "7", true));
    EXPECT_TRUE(ledger.NoteLoss("20250102030405.0Z", "8"));
    EXPECT_TRUE(ledger.NoteCleared("20250102030406.0Z"));
    EXPECT_EQ(qv_test::ReadFile(path),
              "cleared,before\nevent,12,7,NT_ALARM,PS_MAJOR,NE-00003,sent\nloss,20250102030405.0Z,8\n"
              "cleared,20250102030406.0Z\n");
}

TEST(EventLedger, AFileThatCanNotBeMadeIsAnErrorThatNamesIt) {
    try {
        EventLedger ledger("/does/not/exist/events.csv");
        FAIL() << "nothing was raised";
    } catch (const LedgerError& e) {
        EXPECT_NE(std::string(e.what()).find("/does/not/exist/events.csv"), std::string::npos);
    }
}

TEST(EventLedger, AFullDiskIsNoticed) {
    EventLedger ledger("/dev/full");
    EXPECT_FALSE(ledger.NoteCleared("20250102030406.0Z"));
}

}  // namespace
}  // namespace qv_demo
