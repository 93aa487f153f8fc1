#include "standalone/random_bytes.h"

#include <gtest/gtest.h>

#include <set>

TEST(RandomBytes, FillAllThatTheyAreAskedFor) {
    // Each of 16 bytes takes more than one value in 20 tries, unless something leaves it out.
    std::set<unsigned char> seen[16];
    for (int i = 0; i < 20; ++i) {
        unsigned char bytes[16] = {};
        qv_standalone::FillRandom(bytes, sizeof bytes);
        for (std::size_t at = 0; at < sizeof bytes; ++at) {
            seen[at].insert(bytes[at]);
        }
    }
    for (const auto& values : seen) {
        EXPECT_GT(values.size(), 1U);
    }
}

TEST(RandomBytes, AreShownWithTwoDigitsEach) {
    const unsigned char bytes[] = {0x00, 0x0f, 0xa5, 0xff};
    std::string text = "id ";
    qv_standalone::AppendHex(text, bytes, sizeof bytes);
    EXPECT_EQ(text, "id 000fa5ff");
}
