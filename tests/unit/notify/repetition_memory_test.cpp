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

    RepetitionMemory m_memory;
    SteadyTime m_now = SteadyTime() + seconds(1000);
};

TEST_F(RepetitionMemoryTest, ComparesNothingWhereNothingWasKept) {
    EXPECT_FALSE(m_memory.Compares(m_now));
    m_memory.Restore({}, m_now);
    EXPECT_FALSE(m_memory.Compares(m_now));
}

TEST_F(RepetitionMemoryTest, TakesEachEventOnce) {
    m_memory.Restore({{1, "one"}, {2, "two"}, {3, "three"}}, m_now);
    EXPECT_TRUE(Repeats("two"));
    EXPECT_FALSE(Repeats("two"));
    EXPECT_TRUE(Repeats("one"));
    EXPECT_FALSE(Repeats("one"));
    EXPECT_FALSE(Repeats("four"));
}

TEST_F(RepetitionMemoryTest, FindsTheThreadThatComesLateWhileOthersPushMuch) {
    m_memory.Restore({{1, "late"}}, m_now);
    for (int i = 0; i < 100000; ++i) {
        ASSERT_FALSE(Repeats("new " + std::to_string(i)));
    }
    m_now += RepetitionMemory::kWindow - milliseconds(1);
    EXPECT_TRUE(Repeats("late"));
}

TEST_F(RepetitionMemoryTest, ComparesForAWhileAfterTheStartOnly) {
    m_memory.Restore({{1, "one"}}, m_now);
    m_now += RepetitionMemory::kWindow;
    EXPECT_FALSE(Repeats("one")) << "the first push, and yet too late to be a repetition";
    m_now -= seconds(1);
    EXPECT_FALSE(m_memory.Compares(m_now));
}

TEST_F(RepetitionMemoryTest, AHeartbeatIsNoRepetition) {
    m_memory.Restore({{1, "beat"}, {2, "one"}, {3, "beat"}, {4, "beat"}}, m_now);
    EXPECT_FALSE(Repeats("beat"));
    EXPECT_FALSE(Repeats("beat"));
    EXPECT_TRUE(Repeats("one"));
}

}  // namespace
}  // namespace qv_notify
