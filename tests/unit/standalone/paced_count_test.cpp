#include "standalone/paced_count.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

using qv_standalone::PacedCount;
using testing::ElementsAre;
using namespace std::chrono_literals;

namespace {

struct PacedCountTest : testing::Test {
    PacedCount::Clock::time_point now{1h};
    std::vector<std::uint64_t> told;
    PacedCount count{1min, [this] { return now; }, [this](std::uint64_t number) { told.push_back(number); }};
};

}  // namespace

TEST_F(PacedCountTest, TellsTheFirstAtOnceAndTheRestOncePerInterval) {
    count.Add(3);
    EXPECT_THAT(told, ElementsAre(3));
    now += 30s;
    count.Add(4);
    count.Add(5);
    EXPECT_THAT(told, ElementsAre(3));
    now += 30s;
    count.Add(0);
    EXPECT_THAT(told, ElementsAre(3, 9));
}

TEST_F(PacedCountTest, NothingIsNotTold) {
    count.Add(0);
    count.TellNow();
    EXPECT_THAT(told, ElementsAre());
}

TEST_F(PacedCountTest, AtTheEndTheRestIsTold) {
    count.Add(1);
    count.Add(2);
    count.TellNow();
    count.TellNow();
    EXPECT_THAT(told, ElementsAre(1, 2));
}
