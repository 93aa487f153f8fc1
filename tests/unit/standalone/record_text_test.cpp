#include "standalone/record_text.h"

#include <gtest/gtest.h>

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
        for (std::size_t at = 0; at < 20; ++at) {
            for (const char control : {'\x01', '\x1f', '\x7f', '\0'}) {
                std::string text(20, plain);
                text[at] = control;
                const std::string escaped = OneLine(std::string(1, control));
                EXPECT_EQ(RecordText(text), std::string(at, plain) + escaped + std::string(19 - at, plain));
            }
        }
        EXPECT_EQ(RecordText(std::string(20, plain)), std::string(20, plain));
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
