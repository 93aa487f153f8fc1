// Kills a process in the middle of its work with a store, again and again, and looks at what is left.

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <sstream>

#include "services/notify/store/store.h"
#include "tests/support/child_process.h"
#include "tests/support/temp_dir.h"
#include "tests/support/wait_for.h"

namespace {

using qv_notify::Store;
using qv_notify::StoredEvent;

/// What the processes said that they had done.
struct Said {
    std::set<std::string> objects;
    std::map<std::int64_t, std::string> events;      // with the number that ends the octets
    std::map<std::int64_t, std::string> dispatched;  // to whom
    std::set<std::int64_t> begun;
    std::set<std::int64_t> done;
    std::set<std::int64_t> numbers;
    int repeated = 0;

    void Line(const std::string& line) {
        std::istringstream words(line);
        std::string what;
        words >> what;
        if (what == "object") {
            std::string path;
            words >> path;
            objects.insert(path);
            return;
        }
        std::int64_t number = 0;
        words >> number;
        if (what == "number") {
            repeated += numbers.insert(number).second ? 0 : 1;
        } else if (what == "event") {
            std::string content;
            words >> content;
            repeated += events.emplace(number, content).second ? 0 : 1;
        } else if (what == "dispatched") {
            words >> dispatched[number];
        } else {
            (what == "done" ? done : begun).insert(number);
        }
    }

    void All(const std::string& text) {
        std::istringstream lines(text);
        std::string line;
        while (std::getline(lines, line)) {
            Line(line);
        }
    }
};

void ExpectObjects(Store& store, const Said& said) {
    std::map<std::string, std::string> kept;
    for (const auto& object : store.Objects()) {
        kept[object.path] = object.description;
    }
    for (const std::string& path : said.objects) {
        ASSERT_EQ(kept.count(path), 1U) << path;
        EXPECT_EQ("c1/f" + kept[path], path);
    }
}

void ExpectEvents(Store& store, const Said& said) {
    std::map<std::int64_t, StoredEvent> kept;
    for (const StoredEvent& event : store.Events()) {
        kept[event.sequence] = event;
    }
    for (const auto& [sequence, content] : said.events) {
        const auto found = kept.find(sequence);
        if (said.done.count(sequence) > 0) {
            EXPECT_EQ(found, kept.end()) << sequence << " was done";
        } else if (said.begun.count(sequence) == 0) {
            ASSERT_NE(found, kept.end()) << sequence << " is lost";
            EXPECT_EQ(found->second.octets, std::string(1500, 'e') + content);
        }
    }
    for (const auto& [sequence, consumer] : said.dispatched) {
        const auto found = kept.find(sequence);
        if (found != kept.end()) {
            EXPECT_EQ(found->second.consumers, std::vector<std::string>{consumer});
        }
    }
}

TEST(StoreCrash, NothingCommittedIsLostHoweverOftenTheProcessIsKilled) {
    constexpr int kRounds = 8;
    const qv_test::TempDir dir;
    const std::string path = dir.File("events.db");
    Said said;
    for (int round = 0; round < kRounds; ++round) {
        qv_test::ChildProcess child({STORE_CHILD, "load", path});
        const std::size_t enough = 4000U + static_cast<std::size_t>(round) * 7919;
        ASSERT_TRUE(qv_test::WaitFor([&] { return child.Out().size() > enough || !child.Running(); }));
        child.Kill();
        EXPECT_EQ(child.Wait(), 128 + SIGKILL) << child.Out();
        const std::string out = child.Out();
        said.All(out.substr(0, out.rfind('\n') + 1));
        Store store(path);
        ExpectObjects(store, said);
        ExpectEvents(store, said);
        EXPECT_EQ(said.repeated, 0);
        if (HasFatalFailure()) {
            return;
        }
    }
    EXPECT_GT(said.done.size(), 100U);
    EXPECT_GT(said.numbers.size(), said.done.size());
}

}  // namespace
