#include "standalone/log_file.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>

#include <filesystem>
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

/// While it lives no file of this process grows beyond so many bytes: what a full disk looks like, and how it
/// ends.
class SmallFilesOnly {
  public:
    explicit SmallFilesOnly(rlim_t bytes) : m_handler(signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &m_former);
        const rlimit limit{bytes, m_former.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~SmallFilesOnly() {
        setrlimit(RLIMIT_FSIZE, &m_former);
        signal(SIGXFSZ, m_handler);
    }
    SmallFilesOnly(const SmallFilesOnly&) = delete;
    SmallFilesOnly& operator=(const SmallFilesOnly&) = delete;

  private:
    rlimit m_former{};
    sighandler_t m_handler;
};

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
    EXPECT_THAT(ReadFile(dir.File("a.log")),
                testing::MatchesRegex(
                    "[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{3}[+-][0-9]{2}:[0-9]{2} "
                    "\\[[0-9]+\\] 1 error agentserver\\.cpp:77 \\[X\\] failed\n"));
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
    const std::string before = " 3 trace f:1 record ";
    for (const std::string& line : Lines(ReadFile(dir.File("a.log")))) {
        const std::size_t at = line.find(before);
        ASSERT_NE(at, std::string::npos) << line;
        EXPECT_THAT(line.substr(at + before.size()), testing::MatchesRegex("[0-9]+ end"));
        seen.insert(line.substr(at + before.size()));
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
    EXPECT_NE(lines[1].find("up to 50 records could not be written"), std::string::npos);
}

TEST(LogFile, BufferedRecordsThatAFullDiskSwallowsAreCounted) {
    const TempDir dir;
    const std::string path = FullDisk(dir);
    testing::internal::CaptureStderr();
    LogFile log(path, {});
    for (int round = 1; round <= 3; ++round) {
        log.Write("f", "", 1, 3, "lost");
        log.Flush();
        EXPECT_EQ(log.Lost(), static_cast<std::uint64_t>(round));
    }
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_EQ(Lines(said).size(), 1U) << said;
}

TEST(LogFile, WritesAgainOnceThereIsRoomAndMarksTheGap) {
    const TempDir dir;
    const LogFileLimits limits;
    testing::internal::CaptureStderr();
    {
        LogFile log(dir.File("a.log"), limits);
        {
            const SmallFilesOnly full(4096);
            log.Write("f", "", 1, 1, "early" + std::string(3000, 'x'));
            log.Write("f", "", 1, 1, "late" + std::string(3000, 'x'));
            log.Write("f", "", 1, 1, "later");
            log.Flush();
            EXPECT_EQ(log.Lost(), 2U);
        }
        log.Flush();
        EXPECT_EQ(log.Lost(), 0U);
        log.Write("f", "", 1, 1, "afterwards");
    }
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_EQ(Lines(said).size(), 2U) << said;
    EXPECT_NE(said.find("writes to " + dir.File("a.log") + " again; up to 2 records were lost"),
              std::string::npos);
    const auto lines = Lines(ReadFile(dir.File("a.log")));
    ASSERT_GE(lines.size(), 4U) << ReadFile(dir.File("a.log"));
    EXPECT_NE(lines[0].find("early"), std::string::npos);
    EXPECT_THAT(lines[lines.size() - 2],
                testing::MatchesRegex("20.* 1 error log_file:0 up to 2 records are missing here"));
    EXPECT_THAT(lines.back(), testing::MatchesRegex("20.* 1 error f:1 afterwards"));
}

TEST(LogFile, BearsThatItsDirectoryTurnsIntoSomethingElse) {
    const TempDir dir;
    LogFileLimits limits;
    limits.max_size = 1000;
    std::filesystem::create_directory(dir.File("logs"));
    testing::internal::CaptureStderr();
    LogFile log(dir.File("logs/a.log"), limits);
    log.Write("f", "", 1, 1, std::string(800, 'x'));
    std::filesystem::remove_all(dir.File("logs"));
    dir.Write("logs", "a file in the way");
    log.Write("f", "", 1, 1, std::string(800, 'x'));  // wants to put the file aside and open a new one
    log.Write("f", "", 1, 1, "small");
    log.Flush();
    EXPECT_EQ(log.Lost(), 2U);
    std::filesystem::remove(dir.File("logs"));
    log.Flush();
    log.Write("f", "", 1, 1, "afterwards");
    testing::internal::GetCapturedStderr();
    EXPECT_NE(ReadFile(dir.File("logs/a.log")).find("afterwards"), std::string::npos);
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

TEST(LogFile, ARecordThatComesOverAndOverIsCountedInsteadOfWritten) {
    const TempDir dir;
    LogFile log(dir.File("a.log"), {});
    for (int i = 0; i < 1000; ++i) {
        log.Write("worker", "", 44, -1, "again");
    }
    log.Write("worker", "", 44, -1, "another");
    const auto lines = Lines(ReadFile(dir.File("a.log")));
    ASSERT_EQ(lines.size(), 5U);
    EXPECT_NE(lines[2].find("-1 record worker:44 again"), std::string::npos) << lines[2];
    EXPECT_NE(lines[3].find("the record above came 997 times more"), std::string::npos) << lines[3];
    EXPECT_NE(lines[4].find("-1 record worker:44 another"), std::string::npos) << lines[4];
}

TEST(LogFile, AFlushTellsHowOftenARecordCameWhileItStillComes) {
    const TempDir dir;
    LogFile log(dir.File("a.log"), {});
    for (int i = 0; i < 10; ++i) {
        log.Write("worker", "", 44, 3, "again");
    }
    log.Flush();
    log.Write("worker", "", 44, 3, "again");
    log.Flush();
    const auto lines = Lines(ReadFile(dir.File("a.log")));
    ASSERT_EQ(lines.size(), 5U);
    EXPECT_NE(lines[3].find("came 7 times more"), std::string::npos) << lines[3];
    EXPECT_NE(lines[4].find("came 1 times more"), std::string::npos) << lines[4];
}

TEST(LogFile, EqualTextsOfDifferentPlacesAreDifferentRecords) {
    const TempDir dir;
    LogFile log(dir.File("a.log"), {});
    for (int line = 0; line < 10; ++line) {
        log.Write("worker", "", line, -1, "again");
    }
    EXPECT_EQ(Lines(ReadFile(dir.File("a.log"))).size(), 10U);
}
