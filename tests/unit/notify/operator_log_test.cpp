#include "services/notify/delivery/operator_log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

using qv_notify::OperatorLog;
using testing::ElementsAre;

class OperatorLogTest : public testing::Test {
  protected:
    void TellTimes(int times, const std::string& subject = "c1") {
        for (int i = 0; i < times; ++i) {
            log.Tell(subject, "said");
        }
    }
    std::vector<std::string> lines;
    std::chrono::steady_clock::time_point now{std::chrono::hours(1)};
    OperatorLog log{[this](const std::string& line) { lines.push_back(line); }, [this] { return now; }};
};

TEST_F(OperatorLogTest, PassesASentenceOn) {
    log.Tell("c1", "a consumer is gone");
    EXPECT_THAT(lines, ElementsAre("a consumer is gone"));
}

TEST_F(OperatorLogTest, LeavesOutWhatIsMoreThanABurst) {
    TellTimes(100);
    EXPECT_EQ(lines.size(), OperatorLog::kBurst);
}

TEST_F(OperatorLogTest, TellsInTheNextPeriodHowManyWereLeftOut) {
    TellTimes(12);
    now += OperatorLog::kPeriod;
    lines.clear();
    TellTimes(2);
    EXPECT_THAT(lines, ElementsAre("said (7 lines about c1 were left out)", "said"));
}

TEST_F(OperatorLogTest, TellsTheLastOfWhatWasLeftOutWhenItsPeriodIsOver) {
    TellTimes(7);
    log.Tell("c1", "the last");
    lines.clear();
    log.TellLeftOut();
    EXPECT_THAT(lines, testing::IsEmpty());
    now += OperatorLog::kPeriod;
    log.TellLeftOut();
    log.TellLeftOut();
    EXPECT_THAT(lines, ElementsAre("the last (2 lines about c1 were left out)"));
}

TEST_F(OperatorLogTest, TellsWhatWasLeftOutAtOnceAtTheEnd) {
    TellTimes(6);
    TellTimes(1, "c2");
    lines.clear();
    log.TellLeftOut(true);
    EXPECT_THAT(lines, ElementsAre("said"));
}

TEST_F(OperatorLogTest, APeriodBeginsWithTheFirstLine) {
    TellTimes(1);
    now += OperatorLog::kPeriod - std::chrono::milliseconds(1);
    TellTimes(10);
    EXPECT_EQ(lines.size(), OperatorLog::kBurst);
    now += std::chrono::milliseconds(1);
    TellTimes(10);
    EXPECT_EQ(lines.size(), 2 * OperatorLog::kBurst);
}

TEST_F(OperatorLogTest, LimitsEachSubjectByItself) {
    TellTimes(100);
    lines.clear();
    TellTimes(1, "c2");
    EXPECT_EQ(lines.size(), 1U);
}

TEST_F(OperatorLogTest, ForgetsNoCountForManySubjects) {
    TellTimes(6, "busy");
    now += OperatorLog::kPeriod;
    for (int i = 0; i < 3000; ++i) {
        TellTimes(1, std::to_string(i));
    }
    lines.clear();
    TellTimes(1, "busy");
    EXPECT_THAT(lines, ElementsAre("said (1 lines about busy were left out)"));
}

TEST_F(OperatorLogTest, ManySubjectsInAMomentTakeLittleTime) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < 100000; ++i) {
        TellTimes(1, std::to_string(i));
    }
    EXPECT_EQ(lines.size(), 100000U);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

TEST(OperatorLogThreads, TheSinkGetsOneLineAtATime) {
    int inside = 0;
    int most = 0;
    std::size_t lines = 0;
    OperatorLog log([&](const std::string&) {
        most = std::max(most, ++inside);
        ++lines;
        --inside;
    });
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&log, t] {
            for (int i = 0; i < 100; ++i) {
                log.Tell(std::to_string(t) + "/" + std::to_string(i), "said");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(most, 1);
    EXPECT_EQ(lines, 400U);
}

}  // namespace
