#include "demo/oss/text.h"

#include <gtest/gtest.h>

namespace qv_oss {
namespace {

using std::chrono::milliseconds;

TEST(OssText, ControlCharactersCannotSteerTheTerminal) {
    EXPECT_EQ(Printable("a\x1b[2Jb\r\nc\x7f"), "a?[2Jb??c?");
    EXPECT_EQ(Printable("Zürich"), "Zürich");
}

TEST(OssText, SecondsHaveNoMoreDecimalsThanNeeded) {
    EXPECT_EQ(Seconds(milliseconds(10000)), "10");
    EXPECT_EQ(Seconds(milliseconds(1500)), "1.5");
    EXPECT_EQ(Seconds(milliseconds(7)), "0.007");
    EXPECT_EQ(Seconds(milliseconds(0)), "0");
}

TEST(OssText, ColumnsAreAlignedByCharacters) {
    Table table({"NAME", "CITY", "STATE"});
    table.Add({"a", "Köln", "ok"});
    table.Add({"bbbbbb", "X", "down"});
    EXPECT_EQ(table.Take(),
              "NAME    CITY  STATE\n"
              "a       Köln  ok\n"
              "bbbbbb  X     down\n");
}

TEST(OssText, LaterPagesHaveNoTitlesAndColumnsOnlyGrow) {
    Table table({"A", "B"});
    table.Add({"long", "x"});
    table.Take();
    table.Add({"s", "y"});
    EXPECT_EQ(table.Take(), "s     y\n");
    table.Add({"longest", "z"});
    EXPECT_EQ(table.Take(), "longest  z\n");
    EXPECT_EQ(table.Take(), "");
}

TEST(OssText, ARowMayBeShortAndMayHoldAnything) {
    Table table({"A", "B"});
    table.Add({"only\n"});
    EXPECT_EQ(table.Take(), "A      B\nonly?\n");
}

TEST(OssText, AnEmptyTableIsItsTitles) {
    Table table({"A", "B"});
    EXPECT_EQ(table.Take(), "A  B\n");
}

}  // namespace
}  // namespace qv_oss
