#include "standalone/span_id.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <set>
#include <thread>
#include <vector>

using qv_standalone::NewSpanId;

namespace {

std::vector<std::string> Ids(std::size_t count) {
    std::vector<std::string> ids;
    for (std::size_t i = 0; i < count; ++i) {
        ids.push_back(NewSpanId());
    }
    return ids;
}

}  // namespace

TEST(SpanId, Is16LowerCaseHexadecimalDigits) {
    for (const std::string& id : Ids(1000)) {
        EXPECT_EQ(id.size(), 16U);
        EXPECT_EQ(id.find_first_not_of("0123456789abcdef"), std::string::npos) << id;
        EXPECT_NE(id, "0000000000000000");
    }
}

TEST(SpanId, EachDigitVaries) {
    std::vector<std::set<char>> seen(16);
    for (const std::string& id : Ids(2000)) {
        for (std::size_t i = 0; i < id.size(); ++i) {
            seen[i].insert(id[i]);
        }
    }
    for (const std::set<char>& digits : seen) {
        EXPECT_EQ(digits.size(), 16U);
    }
}

TEST(SpanId, NoTwoThreadsHaveTheSame) {
    constexpr std::size_t kThreads = 8;
    constexpr std::size_t kEach = 20000;
    std::vector<std::vector<std::string>> found(kThreads);
    std::vector<std::thread> threads;
    for (auto& ids : found) {
        threads.emplace_back([&ids] { ids = Ids(kEach); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::set<std::string> all;
    for (const auto& ids : found) {
        all.insert(ids.begin(), ids.end());
    }
    EXPECT_EQ(all.size(), kThreads * kEach);
}

TEST(SpanId, AForkedChildHasOthersThanItsParent) {
    Ids(1);  // so that numbers are in store at the fork
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        for (int i = 0; i < 40; ++i) {
            const std::string id = NewSpanId();
            if (write(ends[1], id.data(), id.size()) < 0) {
                _exit(1);
            }
        }
        _exit(0);
    }
    close(ends[1]);
    std::string text;
    char chunk[64];
    for (ssize_t got = 0; (got = read(ends[0], chunk, sizeof chunk)) > 0;) {
        text.append(chunk, static_cast<std::size_t>(got));
    }
    close(ends[0]);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_EQ(text.size(), 40U * 16U);
    const std::vector<std::string> own = Ids(40);
    std::set<std::string> all(own.begin(), own.end());
    for (std::size_t i = 0; i < text.size(); i += 16) {
        all.insert(text.substr(i, 16));
    }
    EXPECT_EQ(all.size(), 80U);
}
