// Values that an ORB has trouble with: null strings and large replies.

#include "both_sides.h"

namespace {

using namespace qv_test;

class ValuesTest : public BothSidesTest {};

INSTANTIATE_TEST_SUITE_P(From, ValuesTest, ::testing::Values(true, false), SideName);

constexpr char kRefused[] = "BAD_PARAM 0x00000000 YES";

TEST_P(ValuesTest, NullStringAsResultIsRefused) {
    EXPECT_EQ(Call("null_result"), kRefused);
    EXPECT_TRUE(server.events.Contains("A.exception"));
    EXPECT_FALSE(server.events.Contains("A.reply"));
    EXPECT_EQ(Call("title"), "target");
}

TEST_P(ValuesTest, NullStringInAStructIsRefused) {
    EXPECT_EQ(Call("null_out"), kRefused);
    EXPECT_EQ(Call("title"), "target");
}

TEST_P(ValuesTest, NullStringInAUserExceptionIsRefused) {
    EXPECT_EQ(Call("null_exception"), kRefused);
    EXPECT_EQ(Call("title"), "target");
}

TEST_P(ValuesTest, LargeRepliesGoThrough) {
    EXPECT_EQ(Call("blob", "33554432"), "33554432");
    EXPECT_EQ(Call("items", "50000"), "50000 element-49999");
}

}  // namespace
