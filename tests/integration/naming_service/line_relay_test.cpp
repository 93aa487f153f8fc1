#include "services/naming/line_relay.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace qv_naming {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kStamp = "omniNames: (0) 2024-01-31 12:00:00.000000: ";

class LineRelayTest : public ::testing::Test {
  protected:
    std::vector<std::string> Take(const std::string& text) { return m_relay.Take(text, m_now); }
    std::vector<std::string> Line(const std::string& message) { return Take(kStamp + message + "\n"); }

    LineRelay m_relay;
    LineRelay::Clock::time_point m_now{};
};

TEST_F(LineRelayTest, KeepsRoutineToItself) {
    EXPECT_THAT(Line("Checkpointing Phase 1: Prepare."), IsEmpty());
    EXPECT_THAT(Line("Data file: '/d/omninames.dat'."), IsEmpty());
    EXPECT_EQ(m_relay.LastMessage(), "");
}

TEST_F(LineRelayTest, FindsTheReferenceInPieces) {
    EXPECT_THAT(Take(std::string(kStamp) + "Root context is IOR:01"), IsEmpty());
    EXPECT_EQ(m_relay.RootReference(), "");
    EXPECT_THAT(Take("02\n"), IsEmpty());
    EXPECT_EQ(m_relay.RootReference(), "IOR:0102");
}

TEST_F(LineRelayTest, SeesDamageAndWhere) {
    EXPECT_THAT(Line("Error: parse error in data file '/d/omninames.dat' at line 7."),
                ElementsAre("Error: parse error in data file '/d/omninames.dat' at line 7."));
    EXPECT_TRUE(m_relay.DataDamaged());
    EXPECT_EQ(m_relay.DamagedLine(), "line 7");
}

TEST_F(LineRelayTest, CountsRepeatsInsteadOfFlooding) {
    const std::string message = "I/O error writing data file: No space left on device";
    EXPECT_THAT(Line(message), ElementsAre(message));
    for (int i = 0; i < 3; ++i) {
        m_now += std::chrono::seconds(10);
        EXPECT_THAT(Line(message), IsEmpty());
    }
    m_now += LineRelay::kQuietTime;
    EXPECT_THAT(Line(message), ElementsAre(message + " (and 3 times before)"));
}

TEST_F(LineRelayTest, PassesLinesOfOtherShape) {
    EXPECT_THAT(Take("terminate called\n\nabc\n"), ElementsAre("terminate called", "abc"));
    EXPECT_EQ(m_relay.LastMessage(), "abc");
}

}  // namespace
}  // namespace qv_naming
