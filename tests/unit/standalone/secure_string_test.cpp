#include "platform/secure_string.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <string>

namespace {

/// A destination with guard bytes behind it.
struct Buffer {
    Buffer() { std::memset(bytes, '#', sizeof(bytes)); }
    bool GuardIntact(std::size_t size) const {
        for (std::size_t i = size; i < sizeof(bytes); ++i) {
            if (bytes[i] != '#') {
                return false;
            }
        }
        return true;
    }
    char bytes[32];
};

int Format(char* dest, std::size_t size, std::size_t count, const char* format, ...)
    __attribute__((format(printf, 4, 5)));
int Format(char* dest, std::size_t size, std::size_t count, const char* format, ...) {
    std::va_list args;
    va_start(args, format);
    const int result = vsnprintf_s(dest, size, count, format, args);
    va_end(args);
    return result;
}

}  // namespace

TEST(SnprintfS, FormatsWhatFits) {
    Buffer buffer;
    EXPECT_EQ(snprintf_s(buffer.bytes, 8, 7, "%s-%d", "ab", 42), 5);
    EXPECT_STREQ(buffer.bytes, "ab-42");
    EXPECT_EQ(snprintf_s(buffer.bytes, 8, 7, "%s", "1234567"), 7);
    EXPECT_STREQ(buffer.bytes, "1234567");
    EXPECT_TRUE(buffer.GuardIntact(8));
}

TEST(SnprintfS, FailsOnWhatIsTooLongAndKeepsThePartThatFits) {
    Buffer buffer;
    EXPECT_EQ(snprintf_s(buffer.bytes, 8, 7, "%s", "12345678"), -1);
    EXPECT_STREQ(buffer.bytes, "1234567");
    EXPECT_EQ(snprintf_s(buffer.bytes, 8, 3, "%s", "1234"), -1);
    EXPECT_STREQ(buffer.bytes, "123");
    EXPECT_EQ(snprintf_s(buffer.bytes, 8, 100, "%s", "12345678"), -1);
    EXPECT_STREQ(buffer.bytes, "1234567");
    EXPECT_TRUE(buffer.GuardIntact(8));
}

TEST(SnprintfS, RefusesUnusableArguments) {
    char one = 'x';
    EXPECT_EQ(Format(nullptr, 8, 7, "a"), -1);
    EXPECT_EQ(Format(&one, 0, 7, "a"), -1);
    EXPECT_EQ(one, 'x');
    EXPECT_EQ(Format(&one, 1, 0, "%s", ""), 0);
    EXPECT_EQ(one, '\0');
}

TEST(VsnprintfS, HasTheLimitOfFourThousandCharactersThatLogsRelyOn) {
    std::string buffer(4096, '#');
    EXPECT_EQ(Format(buffer.data(), 4096, 4095, "%s", std::string(4095, 'x').c_str()), 4095);
    EXPECT_EQ(Format(buffer.data(), 4096, 4095, "%s", std::string(4096, 'x').c_str()), -1);
}

TEST(StrncpyS, CopiesAtMostCountCharacters) {
    Buffer buffer;
    EXPECT_EQ(strncpy_s(buffer.bytes, 8, "abc", 7), 0);
    EXPECT_STREQ(buffer.bytes, "abc");
    EXPECT_EQ(strncpy_s(buffer.bytes, 8, "abcdefghij", 7), 0);
    EXPECT_STREQ(buffer.bytes, "abcdefg");
    EXPECT_EQ(strncpy_s(buffer.bytes, 4, "abc", 3), 0);
    EXPECT_STREQ(buffer.bytes, "abc");
    EXPECT_TRUE(buffer.GuardIntact(8));
}

TEST(StrncpyS, RefusesWhatDoesNotFit) {
    Buffer buffer;
    EXPECT_EQ(strncpy_s(buffer.bytes, 4, "abcd", 4), ERANGE);
    EXPECT_STREQ(buffer.bytes, "");
    EXPECT_TRUE(buffer.GuardIntact(4));
}

TEST(StrncpyS, RefusesUnusableArguments) {
    char one = 'x';
    EXPECT_EQ(strncpy_s(nullptr, 4, "a", 1), EINVAL);
    EXPECT_EQ(strncpy_s(&one, 0, "a", 1), EINVAL);
    EXPECT_EQ(one, 'x');
    EXPECT_EQ(strncpy_s(&one, 1, nullptr, 1), EINVAL);
    EXPECT_EQ(one, '\0');
}
