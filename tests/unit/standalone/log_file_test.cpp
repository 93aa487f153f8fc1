#include "standalone/log_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <set>
#include <sstream>
#include <thread>

#include "tests/support/temp_dir.h"

using qv_standalone::LogFile;
using qv_standalone::LogFileLimits;
using qv_test::ReadFile;
using qv_test::TempDir;

namespace {

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

/// Log files whose every write fails for want of room.
std::string FullDisk(const TempDir& dir) {
    std::filesystem::create_symlink("/dev/full", dir.File("full.log"));
    return dir.File("full.log");
}

}  // namespace

TEST(LogFile, WritesTimeThreadLevelPositionAndText) {
    const TempDir dir;
    LogFile log(dir.File("a.log"), {});
    log.Write("agentserver.cpp", "unknown", 77, 1, "[X] failed");
    const std::regex form(
        "\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3}[+-]\\d\\d:\\d\\d \\[\\d+\\] "
        "1 error agentserver\\.cpp:77 \\[X\\] failed\n");
    EXPECT_TRUE(std::regex_match(ReadFile(dir.File("a.log")), form)) << ReadFile(dir.File("a.log"));
}

TEST(LogFile, FailuresAndRecordsWithoutLevelReachTheFileAtOnce) {
    const TempDir dir;
    LogFile log(dir.File("a.log"), {});
    log.Write("f", "", 1, 3, "buffered");
    EXPECT_EQ(ReadFile(dir.File("a.log")), "");
    log.Write("f", "", 1, 0, "gravest");
    EXPECT_EQ(Lines(ReadFile(dir.File("a.log"))).size(), 2U);
    log.Write("f", "", 1, -1, "no level");
    EXPECT_EQ(Lines(ReadFile(dir.File("a.log"))).size(), 3U);
    log.Write("f", "", 1, 2, "buffered again");
    EXPECT_EQ(Lines(ReadFile(dir.File("a.log"))).size(), 3U);
    log.Flush();
    EXPECT_EQ(Lines(ReadFile(dir.File("a.log"))).size(), 4U);
}

TEST(LogFile, LeavesOutLevelsAboveTheLimit) {
    const TempDir dir;
    LogFileLimits limits;
    limits.level = 1;
    LogFile log(dir.File("a.log"), limits);
    for (const int level : {-1, 0, 1, 2, 3}) {
        log.Write("f", "", 1, level, "level " + std::to_string(level));
    }
    log.Flush();
    const std::string text = ReadFile(dir.File("a.log"));
    EXPECT_EQ(Lines(text).size(), 3U);
    EXPECT_NE(text.find("-1 record f:1 level -1"), std::string::npos);
    EXPECT_EQ(text.find("level 2"), std::string::npos);
}

TEST(LogFile, WithTheLowestLimitRecordsWithoutLevelRemain) {
    const TempDir dir;
    LogFileLimits limits;
    limits.level = -1;
    LogFile log(dir.File("a.log"), limits);
    log.Write("f", "", 1, 0, "critical");
    log.Write("f", "", 1, -1, "record");
    EXPECT_EQ(Lines(ReadFile(dir.File("a.log"))).size(), 1U);
}

TEST(LogFile, AMultiLineTextStaysOneRecord) {
    const TempDir dir;
    LogFile log(dir.File("a.log"), {});
    log.Write("f", "", 1, 1, "first\n2024-01-01T00:00:00.000+00:00 [1] 1 error forged:1 line\n");
    const auto lines = Lines(ReadFile(dir.File("a.log")));
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[1].substr(0, 8), "    2024");
}

TEST(LogFile, BearsNulAndNewlineAnywhere) {
    const TempDir dir;
    LogFile log(dir.File("a.log"), {});
    log.Write(std::string("f\0\n", 3), "", -5, 1, std::string("a\0b", 3));
    const std::string text = ReadFile(dir.File("a.log"));
    EXPECT_NE(text.find("1 error f\\x00\\x0a:-5 a\\x00b\n"), std::string::npos) << text;
    EXPECT_EQ(text.find('\0'), std::string::npos);
}

TEST(LogFile, WriteFormatTakesAnyLength) {
    const TempDir dir;
    LogFile log(dir.File("a.log"), {});
    log.WriteFormat("f", "", 9, 1, "%s and %d", std::string(10000, 'x').c_str(), 42);
    EXPECT_NE(ReadFile(dir.File("a.log")).find(std::string(10000, 'x') + " and 42\n"), std::string::npos);
}

TEST(LogFile, AppendsToWhatIsThere) {
    const TempDir dir;
    for (const char* const text : {"one", "two"}) {
        LogFile log(dir.File("a.log"), {});
        log.Write("f", "", 1, 3, text);
    }
    EXPECT_EQ(Lines(ReadFile(dir.File("a.log"))).size(), 2U);
}

TEST(LogFile, RotatesAndKeepsSoManyFiles) {
    const TempDir dir;
    LogFileLimits limits;
    limits.max_size = 1000;
    limits.max_files = 2;
    LogFile log(dir.File("a.log"), limits);
    for (int i = 0; i < 40; ++i) {
        log.Write("f", "", 1, 1, std::string(200, 'x') + std::to_string(i));
    }
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(dir.path())) {
        names.insert(entry.path().filename().string());
        EXPECT_LE(entry.file_size(), 1000U);
    }
    EXPECT_EQ(names, (std::set<std::string>{"a.log", "a.1.log", "a.2.log"}));
    EXPECT_NE(ReadFile(dir.File("a.log")).find("x39\n"), std::string::npos);
}

TEST(LogFile, LosesNothingOfManyThreads) {
    const TempDir dir;
    constexpr int kThreads = 4;
    constexpr int kRecords = 1000;
    {
        LogFile log(dir.File("a.log"), {});
        std::vector<std::thread> threads;
        for (int t = 0; t < kThreads; ++t) {
            threads.emplace_back([&log, t] {
                for (int i = 0; i < kRecords; ++i) {
                    log.Write("f", "", 1, 3, "record " + std::to_string(t * kRecords + i) + " end");
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }
    std::set<std::string> seen;
    const std::regex form(".* 3 trace f:1 (record \\d+ end)");
    for (const std::string& line : Lines(ReadFile(dir.File("a.log")))) {
        std::smatch match;
        ASSERT_TRUE(std::regex_match(line, match, form)) << line;
        seen.insert(match[1]);
    }
    EXPECT_EQ(seen.size(), static_cast<std::size_t>(kThreads * kRecords));
}

TEST(LogFile, AFullDiskIsReportedOnceAndCounted) {
    const TempDir dir;
    const std::string path = FullDisk(dir);
    testing::internal::CaptureStderr();
    {
        LogFile log(path, {});
        for (int i = 0; i < 50; ++i) {
            EXPECT_NO_THROW(log.Write("f", "", 1, 1, "lost"));
        }
        EXPECT_EQ(log.Lost(), 50U);
    }
    const std::string said = testing::internal::GetCapturedStderr();
    const auto lines = Lines(said);
    ASSERT_EQ(lines.size(), 2U) << said;
    EXPECT_NE(lines[0].find("can't write to " + path), std::string::npos);
    EXPECT_NE(lines[0].find("No space left on device"), std::string::npos);
    EXPECT_NE(lines[1].find("50 records could not be written"), std::string::npos);
}

TEST(LogFile, IsClosedInProgramsThatTheProcessStarts) {
    const TempDir dir;
    LogFile log(dir.File("a.log"), {});
    bool found = false;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code error;
        if (std::filesystem::read_symlink(entry.path(), error) == dir.File("a.log")) {
            found = true;
            EXPECT_NE(fcntl(std::stoi(entry.path().filename()), F_GETFD) & FD_CLOEXEC, 0);
        }
    }
    EXPECT_TRUE(found);
}

TEST(LogFile, CantBeOpenedWhereThereIsNoDirectory) {
    const TempDir dir;
    const std::string file = dir.Write("file", "");
    EXPECT_THROW(LogFile(file + "/a.log", {}), std::exception);
}
