// What LogFile does with records while others are on their way to the file.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "standalone/log_file.h"
#include "tests/support/temp_dir.h"
#include "tests/support/wait_for.h"

using qv_standalone::LogFile;
using qv_standalone::LogFileLimits;
using qv_test::ReadFile;
using qv_test::TempDir;
using qv_test::WaitFor;

namespace {

constexpr std::size_t kMoreThanAPipeHolds = 200'000;

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

/// A log file that takes no more than a pipe holds until somebody reads: what a disk that hangs looks like.
class HangingDisk {
  public:
    explicit HangingDisk(const std::string& path) : m_handler(signal(SIGPIPE, SIG_IGN)) {
        EXPECT_EQ(mkfifo(path.c_str(), 0600), 0);
        m_reader = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        EXPECT_GE(m_reader, 0);
    }
    ~HangingDisk() {
        Break();
        signal(SIGPIPE, m_handler);
    }
    HangingDisk(const HangingDisk&) = delete;
    HangingDisk& operator=(const HangingDisk&) = delete;

    bool IsFull() const {
        int held = 0;
        return ioctl(m_reader, FIONREAD, &held) == 0 && held >= fcntl(m_reader, F_GETPIPE_SZ) - 4096;
    }

    /// Takes what comes until `done`, and the rest.
    void ReadUntil(const std::atomic<bool>& done) {
        while (!done) {
            ReadSome();
            std::this_thread::yield();
        }
        while (ReadSome()) {
        }
    }

    /// Writing fails from now on.
    void Break() {
        if (m_reader >= 0) {
            close(std::exchange(m_reader, -1));
        }
    }

    const std::string& text() const { return m_text; }

  private:
    bool ReadSome() {
        char bytes[64 << 10];
        const ssize_t count = read(m_reader, bytes, sizeof bytes);
        if (count > 0) {
            m_text.append(bytes, static_cast<std::size_t>(count));
        }
        return count > 0;
    }

    sighandler_t m_handler;
    int m_reader = -1;
    std::string m_text;
};

/// A thread that calls `action` once.
class Background {
  public:
    template <class Action>
    explicit Background(Action action)
        : m_thread([this, action] {
              action();
              m_done = true;
          }) {}
    ~Background() {
        if (m_thread.joinable()) {
            m_thread.join();
        }
    }
    const std::atomic<bool>& done() const { return m_done; }
    void Join() { m_thread.join(); }

  private:
    std::atomic<bool> m_done{false};
    std::thread m_thread;
};

}  // namespace

TEST(LogFileWaiting, AFlushIsAskedForOnceUntilItComes) {
    const TempDir dir;
    int asked = 0;
    LogFile log(dir.File("a.log"), {}, [&asked] { ++asked; });
    for (int round = 1; round <= 2; ++round) {
        for (int i = 0; i < 10; ++i) {
            log.Write("f", "", i, -1, "an operation");
        }
        EXPECT_EQ(asked, round);
        EXPECT_EQ(Lines(ReadFile(dir.File("a.log"))).size(), static_cast<std::size_t>(10 * (round - 1)));
        log.FlushWritten();
        EXPECT_EQ(Lines(ReadFile(dir.File("a.log"))).size(), static_cast<std::size_t>(10 * round));
    }
}

TEST(LogFileWaiting, ARecordThatMustBeThereAtOnceTakesTheWaitingOnesAlong) {
    const TempDir dir;
    LogFile log(dir.File("a.log"), {}, [] {});
    log.Write("f", "", 1, -1, "first");
    log.Write("f", "", 2, 3, "second");
    EXPECT_EQ(ReadFile(dir.File("a.log")), "");
    log.Write("f", "", 3, 1, "third");
    const auto lines = Lines(ReadFile(dir.File("a.log")));
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_NE(lines[0].find("first"), std::string::npos);
    EXPECT_NE(lines[1].find("second"), std::string::npos);
    EXPECT_NE(lines[2].find("third"), std::string::npos);
}

TEST(LogFileWaiting, ManyTracesAskForAFlushToo) {
    const TempDir dir;
    int asked = 0;
    LogFile log(dir.File("a.log"), {}, [&asked] { ++asked; });
    log.Write("f", "", 1, 3, "a few");
    EXPECT_EQ(asked, 0);
    log.Write("f", "", 1, 3, std::string(LogFile::kManyWaiting, 'x'));
    EXPECT_EQ(asked, 1);
    log.Write("f", "", 1, 3, "more");
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(ReadFile(dir.File("a.log")), "");
}

TEST(LogFileWaiting, ManyTracesAreWrittenWhereNobodyFlushes) {
    const TempDir dir;
    LogFile log(dir.File("a.log"), {});
    log.Write("f", "", 1, 3, std::string(LogFile::kManyWaiting, 'x'));
    EXPECT_GT(ReadFile(dir.File("a.log")).size(), LogFile::kManyWaiting);
}

TEST(LogFileWaiting, ABatchIsRotatedBetweenItsRecords) {
    const TempDir dir;
    LogFileLimits limits;
    limits.max_size = 1000;
    limits.max_files = 20;
    LogFile log(dir.File("a.log"), limits);
    for (int i = 0; i < 40; ++i) {
        log.Write("f", "", i, 3, std::string(200, 'x') + "\nsecond line");
    }
    log.Flush();
    int records = 0;
    for (const auto& entry : std::filesystem::directory_iterator(dir.path())) {
        EXPECT_LE(entry.file_size(), 1000U);
        const auto lines = Lines(ReadFile(entry.path()));
        ASSERT_EQ(lines.size() % 2, 0U);
        EXPECT_EQ(lines[0].substr(0, 2), "20");
        EXPECT_EQ(lines.back(), "    second line");
        records += static_cast<int>(lines.size() / 2);
    }
    EXPECT_EQ(records, 40);
}

TEST(LogFileWaiting, ThreadsKeepTheirOrderAndTimeDoesNotGoBack) {
    const TempDir dir;
    constexpr int kThreads = 4;
    constexpr int kRecords = 3000;
    {
        LogFile log(dir.File("a.log"), {}, [] {});
        std::atomic<bool> done{false};
        std::thread flusher([&] {
            while (!done) {
                log.FlushWritten();
                std::this_thread::yield();
            }
        });
        std::vector<std::thread> threads;
        for (int t = 0; t < kThreads; ++t) {
            threads.emplace_back([&log, t] {
                for (int i = 0; i < kRecords; ++i) {
                    const int level = i % 100 == 0 ? 1 : (i % 2 == 0 ? 3 : -1);
                    log.Write("f", "", t, level, std::to_string(i));
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        done = true;
        flusher.join();
    }
    std::map<int, int> next;
    std::string time;
    for (const std::string& line : Lines(ReadFile(dir.File("a.log")))) {
        EXPECT_LE(time, line.substr(0, 23));
        time = line.substr(0, 23);
        const std::size_t at = line.rfind(" f:");
        ASSERT_NE(at, std::string::npos) << line;
        std::istringstream in(line.substr(at + 3));
        int thread = -1;
        int number = -1;
        in >> thread >> number;
        ASSERT_EQ(number, next[thread]++) << line;
    }
    ASSERT_EQ(next.size(), static_cast<std::size_t>(kThreads));
    for (const auto& [thread, count] : next) {
        EXPECT_EQ(count, kRecords) << thread;
    }
}

TEST(LogFileWaiting, WhoLogsDoesNotWaitForTheOneWhoWrites) {
    const TempDir dir;
    HangingDisk disk(dir.File("a.log"));
    LogFile log(dir.File("a.log"), {}, [] {});
    log.Write("f", "", 1, 3, "large " + std::string(kMoreThanAPipeHolds, 'x'));
    Background flusher([&log] { log.FlushWritten(); });
    ASSERT_TRUE(WaitFor([&disk] { return disk.IsFull(); }));
    for (int i = 0; i < 1000; ++i) {
        log.Write("f", "", i, i % 2 == 0 ? -1 : 3, "meanwhile");
    }
    EXPECT_FALSE(flusher.done());
    disk.ReadUntil(flusher.done());
    Background rest([&log] { log.FlushWritten(); });
    disk.ReadUntil(rest.done());
    const auto lines = Lines(disk.text());
    ASSERT_EQ(lines.size(), 1001U);
    EXPECT_NE(lines[0].find("f:1 large x"), std::string::npos);
    EXPECT_NE(lines[1000].find("f:999 meanwhile"), std::string::npos);
    EXPECT_EQ(log.Lost(), 0U);
}

TEST(LogFileWaiting, WhileADiskHangsSoMuchWaitsAndNoMore) {
    const TempDir dir;
    constexpr int kRecords = 100;
    constexpr std::size_t kSize = 64 << 10;
    constexpr int kFit = LogFile::kMaxWaiting / kSize;
    HangingDisk disk(dir.File("a.log"));
    std::atomic<int> written{0};
    LogFile log(dir.File("a.log"), {}, [] {});
    log.Write("f", "", 1, 3, "large " + std::string(kMoreThanAPipeHolds, 'x'));
    Background flusher([&log] { log.FlushWritten(); });
    ASSERT_TRUE(WaitFor([&disk] { return disk.IsFull(); }));
    Background writer([&] {
        for (int i = 0; i < kRecords; ++i) {
            log.Write("f", "", i, -1, std::string(kSize, 'x'));
            ++written;
        }
        log.FlushWritten();
    });
    EXPECT_TRUE(WaitFor([&written] { return written >= kFit - 1; }));
    EXPECT_EQ(written, kFit - 1);  // the next one waits for the disk
    disk.ReadUntil(writer.done());
    EXPECT_EQ(Lines(disk.text()).size(), static_cast<std::size_t>(1 + kRecords));
    EXPECT_EQ(log.Lost(), 0U);
}

TEST(LogFileWaiting, WhatComesWhileAWriteFailsIsKept) {
    const TempDir dir;
    HangingDisk disk(dir.File("a.log"));
    testing::internal::CaptureStderr();
    LogFile log(dir.File("a.log"), {}, [] {});
    log.Write("f", "", 1, 3, "large " + std::string(kMoreThanAPipeHolds, 'x'));
    Background flusher([&log] { log.FlushWritten(); });
    ASSERT_TRUE(WaitFor([&disk] { return disk.IsFull(); }));
    log.Write("f", "", 2, -1, "meanwhile");
    disk.Break();
    flusher.Join();
    EXPECT_EQ(log.Lost(), 1U);
    log.Write("f", "", 3, -1, "while there is no file");
    EXPECT_EQ(log.Lost(), 2U);
    std::filesystem::remove(dir.File("a.log"));
    log.Flush();
    EXPECT_EQ(log.Lost(), 0U);
    log.Write("f", "", 4, 1, "afterwards");
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_NE(said.find("up to 2 records were lost"), std::string::npos) << said;
    const auto lines = Lines(ReadFile(dir.File("a.log")));
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[0], "");
    EXPECT_NE(lines[1].find("up to 2 records are missing here"), std::string::npos);
    EXPECT_NE(lines[2].find("f:2 meanwhile"), std::string::npos);
    EXPECT_NE(lines[3].find("f:4 afterwards"), std::string::npos);
}

TEST(LogFileWaiting, AtTheEndOfTheProcessNothingWaitsAnyMore) {
    const TempDir dir;
    LogFile log(dir.File("a.log"), {}, [] {});
    log.Write("f", "", 1, 3, "before");
    log.StopWaiting();
    EXPECT_EQ(Lines(ReadFile(dir.File("a.log"))).size(), 1U);
    log.Write("f", "", 2, 3, "after");
    EXPECT_EQ(Lines(ReadFile(dir.File("a.log"))).size(), 2U);
    log.Write("f", "", 2, -1, "last");
    EXPECT_EQ(Lines(ReadFile(dir.File("a.log"))).size(), 3U);
}
