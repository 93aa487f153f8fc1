#include "standalone/nearest_key.h"

#include <gtest/gtest.h>

using qv_standalone::EditDistance;
using qv_standalone::NearestKey;
using qv_standalone::NearestTable;

TEST(EditDistance, CountsEdits) {
    EXPECT_EQ(EditDistance("", ""), 0U);
    EXPECT_EQ(EditDistance("abc", ""), 3U);
    EXPECT_EQ(EditDistance("abc", "abc"), 0U);
    EXPECT_EQ(EditDistance("abc", "abd"), 1U);
    EXPECT_EQ(EditDistance("abc", "acb"), 1U);
    EXPECT_EQ(EditDistance("kitten", "sitting"), 3U);
}

TEST(NearestKey, ForgivesSlipsOfThePen) {
    EXPECT_EQ(NearestKey("ORBThreadNm"), "ORBThreadNum");
    EXPECT_EQ(NearestKey("sslmode"), "SSLMode");
    EXPECT_EQ(NearestKey("bLogAlarm"), "bLogAlaram");
    EXPECT_EQ(NearestKey("logdir"), "log_dir");
    EXPECT_EQ(NearestKey("TimeInterval"), "TimerInterval");
}

TEST(NearestKey, NamesNothingForSomethingElse) {
    EXPECT_EQ(NearestKey("completely_different"), "");
    EXPECT_EQ(NearestKey(std::string(100000, 'x')), "");
}

TEST(NearestTable, KnowsBothTables) {
    EXPECT_EQ(NearestTable("Agnet"), "agent");
    EXPECT_EQ(NearestTable("platfrom"), "platform");
    EXPECT_EQ(NearestTable("orb"), "");
}
