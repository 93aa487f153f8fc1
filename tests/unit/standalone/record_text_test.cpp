#include "standalone/record_text.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

using qv_standalone::LevelName;
using qv_standalone::OneLine;
using qv_standalone::RecordText;

TEST(RecordText, LeavesPlainTextAlone) {
    EXPECT_EQ(RecordText(""), "");
    EXPECT_EQ(RecordText("[A::B] ok\tdone é"), "[A::B] ok\tdone é");
}

TEST(RecordText, IndentsFurtherLines) {
    EXPECT_EQ(RecordText("a\nb\r\nc"), "a\n    b\n    c");
    EXPECT_EQ(RecordText("a\n\nb"), "a\n    \n    b");
}

TEST(RecordText, DropsLineEndsAtTheEnd) {
    EXPECT_EQ(RecordText("a\n"), "a");
    EXPECT_EQ(RecordText("a\r\n\n"), "a");
    EXPECT_EQ(RecordText("\n"), "");
}

TEST(RecordText, ShowsControlCharacters) {
    EXPECT_EQ(RecordText(std::string("a\0b", 3)), "a\\x00b");
    EXPECT_EQ(RecordText("\x1b[31mred\x7f"), "\\x1b[31mred\\x7f");
    EXPECT_EQ(RecordText("a\rb"), "a\\x0db");
}

TEST(RecordText, FindsAControlCharacterAnywhereInALongText) {
    for (const char plain : {'x', ' ', '~', '\t', '\xc3', '\xff'}) {
        for (const std::size_t length : {1, 15, 16, 17, 31, 32, 33, 50}) {
            for (std::size_t at = 0; at < length; ++at) {
                for (const auto& [control, shown] : std::map<char, std::string>{
                         {'\x01', "\\x01"}, {'\x1f', "\\x1f"}, {'\x7f', "\\x7f"}, {'\0', "\\x00"}}) {
                    std::string text(length, plain);
                    text[at] = control;
                    const std::string expected =
                        std::string(at, plain) + shown + std::string(length - 1 - at, plain);
                    EXPECT_EQ(RecordText(text), expected);
                    EXPECT_EQ(OneLine(text), expected);
                }
            }
            EXPECT_EQ(RecordText(std::string(length, plain)), std::string(length, plain));
        }
    }
}

TEST(RecordText, OneLineKeepsToOneLine) {
    EXPECT_EQ(OneLine("a\nb\r"), "a\\x0ab\\x0d");
}

TEST(LevelName, NamesEachLevel) {
    EXPECT_STREQ(LevelName(-1), "record");
    EXPECT_STREQ(LevelName(0), "critical");
    EXPECT_STREQ(LevelName(1), "error");
    EXPECT_STREQ(LevelName(2), "warning");
    EXPECT_STREQ(LevelName(3), "trace");
    EXPECT_STREQ(LevelName(4), "debug");
}
