#include "standalone/log_batch.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using qv_standalone::LogBatch;

namespace {

std::vector<std::string> RecordsOf(const LogBatch& batch) {
    std::vector<std::string> records;
    batch.ForEachPart(1, [&records](std::string_view text) { records.emplace_back(text); });
    return records;
}

}  // namespace

TEST(LogBatch, GivesTheRecordsInTheirOrder) {
    LogBatch batch;
    EXPECT_TRUE(batch.empty());
    batch.Append("1", " one\n    more\n");
    batch.Append("", "");
    batch.Append("2", " two\n");
    EXPECT_EQ(RecordsOf(batch), (std::vector<std::string>{"1 one\n    more\n", "2 two\n"}));
    EXPECT_EQ(batch.records(), 3U);
    EXPECT_EQ(batch.bytes(), 21U);
    EXPECT_FALSE(batch.empty());
}

TEST(LogBatch, GivesAsManyRecordsAtOnceAsFit) {
    LogBatch batch;
    for (const char* const text : {"aa", "bb", "c", "ddddd", "", "ee", "f"}) {
        batch.Append("", text);
    }
    std::vector<std::string> parts;
    batch.ForEachPart(4, [&parts](std::string_view text) { parts.emplace_back(text); });
    EXPECT_EQ(parts, (std::vector<std::string>{"aabb", "c", "ddddd", "eef"}));
    batch.Clear();
    batch.ForEachPart(4, [](std::string_view) { FAIL() << "there is nothing"; });
}

TEST(LogBatch, IsEmptyOnceCleared) {
    for (const std::size_t size : {std::size_t{10}, std::size_t{8} << 20}) {
        LogBatch batch;
        batch.Append("", std::string(size, 'x'));
        batch.Clear();
        EXPECT_TRUE(batch.empty());
        EXPECT_EQ(batch.bytes(), 0U);
        batch.Append("a", "b");
        EXPECT_EQ(RecordsOf(batch), std::vector<std::string>{"ab"});
    }
}

TEST(LogBatch, ChangesPlacesWithAnother) {
    LogBatch full;
    LogBatch other;
    full.Append("a", "b");
    full.swap(other);
    EXPECT_TRUE(full.empty());
    EXPECT_EQ(RecordsOf(other), std::vector<std::string>{"ab"});
}
