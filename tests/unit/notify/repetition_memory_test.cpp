#include "services/notify/model/repetition_memory.h"

#include <gtest/gtest.h>

#include <string>

namespace qv_notify {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

class RepetitionMemoryTest : public testing::Test {
  protected:
    bool Repeats(const std::string& digest) { return m_memory.Compares(m_now) && m_memory.Take(digest); }

    void PushOthers(int count) {
        for (int i = 0; i < count; ++i) {
            ASSERT_FALSE(Repeats("new " + std::to_string(i)));
        }
    }

    RepetitionMemory m_memory;
    SteadyTime m_now = SteadyTime() + seconds(1000);
};

TEST_F(RepetitionMemoryTest, ComparesNothingWhereNothingWasKept) {
    EXPECT_FALSE(m_memory.Compares(m_now));
}

TEST_F(RepetitionMemoryTest, TakesEachEventOnce) {
    m_memory.Restore({{1, "one"}, {2, "two"}, {3, "two"}, {4, "three"}});
    EXPECT_TRUE(Repeats("two"));
    EXPECT_TRUE(Repeats("two"));
    EXPECT_FALSE(Repeats("two"));
    EXPECT_TRUE(Repeats("one"));
    EXPECT_FALSE(Repeats("one"));
    EXPECT_FALSE(Repeats("four"));
}

TEST_F(RepetitionMemoryTest, FindsTheThreadThatComesLateWhileOthersPushMuch) {
    m_memory.Restore({{1, "late"}});
    PushOthers(100000);
    m_now += RepetitionMemory::kWindow - milliseconds(1);
    EXPECT_TRUE(Repeats("late"));
}

TEST_F(RepetitionMemoryTest, ComparesForAWhileOnly) {
    m_memory.Restore({{1, "one"}, {2, "two"}});
    PushOthers(RepetitionMemory::kFewestPushes);
    m_now += RepetitionMemory::kWindow;
    EXPECT_FALSE(Repeats("one"));
    m_now -= seconds(1);
    EXPECT_FALSE(Repeats("two"));
}

TEST_F(RepetitionMemoryTest, TheWhileBeginsWithTheFirstPush) {
    m_memory.Restore({{1, "one"}});
    m_now += seconds(3600);
    PushOthers(RepetitionMemory::kFewestPushes);
    EXPECT_TRUE(Repeats("one"));
}

TEST_F(RepetitionMemoryTest, ComparesTheFirstPushesHoweverSlowlyTheyCome) {
    m_memory.Restore({{1, "one"}, {2, "two"}});
    for (int i = 0; i < RepetitionMemory::kFewestPushes - 1; ++i) {
        ASSERT_FALSE(Repeats("new"));
        m_now += seconds(60);
    }
    EXPECT_TRUE(Repeats("one"));
    EXPECT_FALSE(Repeats("two"));
}

}  // namespace
}  // namespace qv_notify
