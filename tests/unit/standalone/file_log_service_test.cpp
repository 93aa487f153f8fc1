#include "standalone/file_log_service.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "tests/support/temp_dir.h"
#include "tests/support/wait_for.h"

using qv_standalone::FileLogOptions;
using qv_standalone::FileLogService;
using qv_test::ReadFile;
using qv_test::TempDir;

namespace {

FileLogOptions In(const std::string& directory) {
    FileLogOptions options;
    options.directory = directory;
    return options;
}

}  // namespace

TEST(FileLogService, KeepsOneFilePerCategory) {
    const TempDir dir;
    FileLogService service(In(dir.File("deep/er")));
    auto* const debug = service.OpenLog("b", "m", "corbadebug");
    auto* const alarm = service.OpenLog("b", "m", "corba_alarm");
    ASSERT_NE(debug, nullptr);
    ASSERT_NE(alarm, nullptr);
    EXPECT_NE(debug, alarm);
    debug->Write("f", "", 1, 0, "to debug");
    alarm->Write("f", "", 1, 0, "to alarm");
    EXPECT_NE(ReadFile(dir.File("deep/er/corbadebug.log")).find("to debug"), std::string::npos);
    EXPECT_NE(ReadFile(dir.File("deep/er/corba_alarm.log")).find("to alarm"), std::string::npos);
}

TEST(FileLogService, GivesTheSameHandleAgain) {
    const TempDir dir;
    FileLogService service(In(dir.str()));
    EXPECT_EQ(service.OpenLog("b", "m", "c"), service.OpenLog("other", "other", "c"));
}

TEST(FileLogService, AnUnwritableDirectoryGivesNullAndOneSentence) {
    const TempDir dir;
    const std::string file = dir.Write("file", "");
    FileLogService service(In(file + "/logs"));
    testing::internal::CaptureStderr();
    EXPECT_EQ(service.OpenLog("b", "m", "corbadebug"), nullptr);
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_NE(said.find(file + "/logs/corbadebug.log can't be opened"), std::string::npos) << said;
    EXPECT_NE(said.find("Not a directory"), std::string::npos) << said;
    EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1);
}

TEST(FileLogService, OpensWhatFailedBeforeOnceItCan) {
    const TempDir dir;
    const std::string place = dir.Write("logs", "in the way");
    FileLogService service(In(place));
    testing::internal::CaptureStderr();
    EXPECT_EQ(service.OpenLog("b", "m", "c"), nullptr);
    testing::internal::GetCapturedStderr();
    std::filesystem::remove(place);
    EXPECT_NE(service.OpenLog("b", "m", "c"), nullptr);
}

TEST(FileLogService, ACategoryCantLeadOutOfTheDirectory) {
    const TempDir dir;
    FileLogService service(In(dir.File("logs")));
    testing::internal::CaptureStderr();
    for (const char* const category : {"", "../x", "a/b", ".", "..", ".hidden", "a b", "a\nb"}) {
        EXPECT_EQ(service.OpenLog("b", "m", category), nullptr) << category;
    }
    EXPECT_EQ(service.OpenLog("b", "m", std::string(300, 'a')), nullptr);
    testing::internal::GetCapturedStderr();
    EXPECT_FALSE(std::filesystem::exists(dir.File("x.log")));
}

TEST(FileLogService, FlushesByItself) {
    const TempDir dir;
    FileLogOptions options = In(dir.str());
    options.flush_interval = std::chrono::milliseconds(10);
    FileLogService service(options);
    auto* const log = service.OpenLog("b", "m", "c");
    ASSERT_NE(log, nullptr);
    log->Write("f", "", 1, 3, "later");
    EXPECT_TRUE(
        qv_test::WaitFor([&] { return ReadFile(dir.File("c.log")).find("later") != std::string::npos; }));
}

TEST(FileLogService, RecordsWithoutALevelDoNotWaitForTheInterval) {
    const TempDir dir;
    FileLogOptions options = In(dir.str());
    options.flush_interval = std::chrono::hours(1);
    FileLogService service(options);
    auto* const log = service.OpenLog("b", "m", "c");
    ASSERT_NE(log, nullptr);
    log->Write("f", "", 1, -1, "an operation");
    EXPECT_TRUE(qv_test::WaitFor(
        [&] { return ReadFile(dir.File("c.log")).find("an operation") != std::string::npos; }));
}

TEST(FileLogService, OnceItStopsWaitingEveryRecordIsWrittenAtOnce) {
    const TempDir dir;
    FileLogOptions options = In(dir.str());
    options.flush_interval = std::chrono::hours(1);
    FileLogService service(options);
    auto* const log = service.OpenLog("b", "m", "early");
    ASSERT_NE(log, nullptr);
    log->Write("f", "", 1, 3, "before");
    EXPECT_EQ(ReadFile(dir.File("early.log")), "");
    service.StopWaiting();
    log->Write("f", "", 1, 3, "after");
    auto* const late = service.OpenLog("b", "m", "late");
    ASSERT_NE(late, nullptr);
    late->Write("f", "", 1, 3, "after");
    EXPECT_NE(ReadFile(dir.File("early.log")).find("before"), std::string::npos);
    EXPECT_NE(ReadFile(dir.File("early.log")).find("after"), std::string::npos);
    EXPECT_NE(ReadFile(dir.File("late.log")).find("after"), std::string::npos);
}

TEST(FileLogService, TellsWhetherLogsAreVerbose) {
    const TempDir dir;
    FileLogOptions options = In(dir.str());
    EXPECT_EQ(FileLogService(options).IsVerboseLog(), 0);
    options.verbose = true;
    EXPECT_NE(FileLogService(options).IsVerboseLog(), 0);
}
