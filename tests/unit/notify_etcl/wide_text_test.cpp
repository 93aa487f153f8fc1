#include "services/notify/etcl/wide_text.h"

#include <gtest/gtest.h>

namespace {

using namespace std::string_view_literals;
using qv_notify::etcl::Utf8Of;

TEST(WideText, IsBigEndianUnlessAMarkSaysOtherwise) {
    EXPECT_EQ(Utf8Of("\0a\0b"sv), "ab");
    EXPECT_EQ(Utf8Of("\xfe\xff\0a"sv), "a");
    EXPECT_EQ(Utf8Of("\xff\xfe"
                     "a\0"sv),
              "a");
    EXPECT_EQ(Utf8Of(""sv), "");
    EXPECT_EQ(Utf8Of("\xff\xfe"sv), "");
}

TEST(WideText, CharactersTakeOneToFourBytes) {
    EXPECT_EQ(Utf8Of("\0\x7f"sv), "\x7f");
    EXPECT_EQ(Utf8Of("\0\xfc"sv), "\xc3\xbc");
    EXPECT_EQ(Utf8Of("\x20\xac"sv), "\xe2\x82\xac");
    EXPECT_EQ(Utf8Of("\xd8\x3d\xde\x00"sv), "\xf0\x9f\x98\x80");
}

TEST(WideText, WhatIsNoCharacterIsReplaced) {
    EXPECT_EQ(Utf8Of("\xd8\x3d\0a"sv),
              "\xef\xbf\xbd"
              "a");
    EXPECT_EQ(Utf8Of("\xde\x00"sv), "\xef\xbf\xbd");
    EXPECT_EQ(Utf8Of("\xd8\x3d"sv), "\xef\xbf\xbd");
    EXPECT_EQ(Utf8Of("\0ab"sv), "a");
}

}  // namespace
