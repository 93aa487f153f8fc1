#include "services/notify/store/store.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <memory>
#include <set>
#include <thread>

#include "tests/support/temp_dir.h"

namespace {

using qv_notify::Store;
using qv_notify::StoredEvent;
using qv_notify::StoreError;
using qv_notify::Time;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

const Time kArrived = Time(std::chrono::microseconds(1'700'000'000'123'456));

class StoreTest : public ::testing::Test {
  protected:
    StoreTest() {
        for (const char* path : {"c1", "c1/sa1", "c1/sa1/p1", "c1/ca1", "c1/ca1/p2", "c1/ca1/p3"}) {
            store().Put(path, "about " + std::string(path));
        }
    }

    Store& store() {
        if (!m_store) {
            m_store = std::make_unique<Store>(path());
        }
        return *m_store;
    }
    std::string path() const { return m_dir.File("events.db"); }
    void Reopen() { m_store.reset(); }

    std::int64_t Add(const std::string& octets) {
        return store().AddEvent("c1", "c1/sa1/p1", octets, kArrived);
    }
    std::vector<std::string> Paths() {
        std::vector<std::string> paths;
        for (const auto& object : store().Objects()) {
            paths.push_back(object.path);
        }
        return paths;
    }
    /// "octets: consumers" of each event.
    std::vector<std::string> Kept() {
        std::vector<std::string> kept;
        for (const StoredEvent& event : store().Events()) {
            std::string text = event.octets + ":";
            for (const std::string& consumer : event.consumers) {
                text += " " + consumer;
            }
            EXPECT_EQ(event.dispatched, !event.consumers.empty());
            kept.push_back(text);
        }
        return kept;
    }
    std::vector<std::int64_t> LastOf(const std::string& supplier, std::size_t count) {
        std::vector<std::int64_t> sequences;
        for (const auto& digest : store().LastEventsOf(supplier, count)) {
            sequences.push_back(digest.sequence);
        }
        return sequences;
    }

  private:
    qv_test::TempDir m_dir;
    std::unique_ptr<Store> m_store;
};

TEST_F(StoreTest, KeepsObjectsInTheOrderOfTheirPaths) {
    store().Put("c10", "ten");
    store().Put("c1/f3", "filter");
    store().Put("c1", "anew");
    for (int round = 0; round < 2; ++round) {
        EXPECT_THAT(Paths(), ElementsAre("c1", "c1/ca1", "c1/ca1/p2", "c1/ca1/p3", "c1/f3", "c1/sa1",
                                         "c1/sa1/p1", "c10"));
        EXPECT_EQ(store().Objects().front().description, "anew");
        Reopen();
    }
}

TEST_F(StoreTest, RemovesAnObjectWithWhatIsBelow) {
    store().Put("c10", "ten");
    store().Put("c1/ca10", "ten");
    store().Remove("c1/ca1");
    store().Remove("c1/none");
    EXPECT_THAT(Paths(), ElementsAre("c1", "c1/ca10", "c1/sa1", "c1/sa1/p1", "c10"));
    store().Remove("c1");
    EXPECT_THAT(Paths(), ElementsAre("c10"));
}

TEST_F(StoreTest, KeepsAnEventUntilAllHaveIt) {
    const std::int64_t first = Add("first");
    const std::int64_t second = Add("second");
    const std::int64_t third = Add("third");
    EXPECT_LT(first, second);
    EXPECT_LT(second, third);
    store().Dispatch({{first, {"c1/ca1/p3", "c1/ca1/p2"}}, {second, {}}});
    EXPECT_THAT(Kept(), ElementsAre("first: c1/ca1/p2 c1/ca1/p3", "third:"));
    store().Done("c1/ca1/p2", {first, second, third});
    Reopen();
    EXPECT_THAT(Kept(), ElementsAre("first: c1/ca1/p3", "third:"));
    store().Done("c1/ca1/p2", {first});
    store().Done("c1/none", {first});
    EXPECT_THAT(Kept(), ElementsAre("first: c1/ca1/p3", "third:"));
    store().Done("c1/ca1/p3", {first});
    EXPECT_THAT(Kept(), ElementsAre("third:"));
}

TEST_F(StoreTest, AnOrderlyEndIsKnownOnce) {
    EXPECT_FALSE(store().TakeOrderlyEnd());
    store().NoteOrderlyEnd();
    store().NoteOrderlyEnd();
    Reopen();
    EXPECT_TRUE(store().TakeOrderlyEnd());
    EXPECT_FALSE(store().TakeOrderlyEnd());
    Reopen();
    EXPECT_FALSE(store().TakeOrderlyEnd());
}

TEST_F(StoreTest, KeepsAllOfAnEvent) {
    const std::string odd("\0\xff\x80 'x\"\0", 8);
    const std::string large(5'000'000, 'l');
    Add(odd);
    Add("");
    Add(large);
    Reopen();
    const std::vector<StoredEvent> events = store().Events();
    ASSERT_EQ(events.size(), 3U);
    EXPECT_EQ(events[0].octets, odd);
    EXPECT_EQ(events[1].octets, "");
    EXPECT_EQ(events[2].octets, large);
    EXPECT_EQ(events[0].channel, "c1");
    EXPECT_EQ(events[0].supplier, "c1/sa1/p1");
    EXPECT_EQ(events[0].arrived, kArrived);
}

TEST_F(StoreTest, EventsGoWithTheLastConsumer) {
    store().Dispatch({{Add("both"), {"c1/ca1/p2", "c1/ca1/p3"}}, {Add("one"), {"c1/ca1/p2"}}});
    Add("new");
    store().Remove("c1/ca1/p2");
    EXPECT_THAT(Kept(), ElementsAre("both: c1/ca1/p3", "new:"));
    store().Remove("c1/ca1");
    EXPECT_THAT(Kept(), ElementsAre("new:"));
}

TEST_F(StoreTest, EventsOutliveTheirSupplier) {
    store().Dispatch({{Add("one"), {"c1/ca1/p2"}}});
    store().Remove("c1/sa1");
    store().Put("c1/sa1", "");
    store().Put("c1/sa1/p1", "");
    const std::vector<StoredEvent> events = store().Events();
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0].supplier, "");
    EXPECT_THAT(LastOf("c1/sa1/p1", 16), IsEmpty());
    EXPECT_GT(store().AddEvent("c1", "c1/gone", "two", kArrived), 0);
}

TEST_F(StoreTest, EventsGoWithTheirChannel) {
    store().Put("c2", "");
    store().Put("c2/ca1/p1", "");
    const std::int64_t other = store().AddEvent("c2", "", "other", kArrived);
    store().Dispatch({{Add("one"), {"c1/ca1/p2"}}, {other, {"c2/ca1/p1"}}});
    Add("new");
    store().Remove("c1");
    EXPECT_THAT(Kept(), ElementsAre("other: c2/ca1/p1"));
    EXPECT_THROW(Add("late"), StoreError);
    EXPECT_THAT(Kept(), ElementsAre("other: c2/ca1/p1"));
}

TEST_F(StoreTest, WhatHasGoneIsNotDispatched) {
    const std::int64_t sequence = Add("one");
    store().Dispatch({{sequence, {"c1/gone"}}, {sequence + 1000, {"c1/ca1/p2"}}});
    EXPECT_THAT(Kept(), IsEmpty());
    const std::int64_t other = Add("other");
    store().Dispatch({{other, {"c1/gone", "c1/ca1/p2", "c1/ca1/p2"}}});
    store().Dispatch({{other, {"c1/ca1/p2"}}});
    EXPECT_THAT(Kept(), ElementsAre("other: c1/ca1/p2"));
}

TEST_F(StoreTest, CountersNeverRepeat) {
    EXPECT_EQ(store().NextNumber("a"), 1);
    EXPECT_EQ(store().NextNumber("a"), 2);
    EXPECT_EQ(store().NextNumber("b"), 1);
    std::int64_t last = 2;
    for (int i = 0; i < 100; ++i) {
        if (i % 7 == 0) {
            Reopen();
        }
        const std::int64_t number = store().NextNumber("a");
        EXPECT_GT(number, last);
        last = number;
    }
}

TEST_F(StoreTest, SequencesAscendAcrossRestartsEvenWhenNothingIsLeft) {
    std::int64_t last = 0;
    for (int i = 0; i < 5; ++i) {
        const std::int64_t sequence = Add("one");
        EXPECT_GT(sequence, last);
        last = sequence;
        store().Dispatch({{sequence, {}}});
        Reopen();
    }
}

TEST_F(StoreTest, RemembersTheLastEventsOfASupplier) {
    store().Put("c1/sa1/p9", "");
    std::vector<std::int64_t> added;
    constexpr int kEvents = Store::kRemembered + 86;  // the last ones take the places of the first
    for (int i = 0; i < kEvents; ++i) {
        if (i == 80 || i == kEvents - 10) {
            Reopen();
        }
        added.push_back(Add("event " + std::to_string(i)));
        store().Dispatch({{added.back(), {}}});
    }
    store().AddEvent("c1", "c1/sa1/p9", "another's", kArrived);
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(LastOf("c1/sa1/p1", 10000),
                  std::vector<std::int64_t>(added.end() - Store::kRemembered, added.end()));
        EXPECT_THAT(LastOf("c1/sa1/p1", 2), ElementsAre(added[kEvents - 2], added[kEvents - 1]));
        EXPECT_EQ(store().LastEventsOf("c1/sa1/p1", 1).front().digest, qv_notify::DigestOf("event " + std::to_string(kEvents - 1)));
        EXPECT_THAT(LastOf("c1/none", 16), IsEmpty());
        Reopen();
    }
    EXPECT_NE(qv_notify::DigestOf("event 38"), qv_notify::DigestOf("event 39"));
    EXPECT_NE(qv_notify::DigestOf(""), qv_notify::DigestOf(std::string(1, '\0')));
}

TEST_F(StoreTest, OnlyTheOwnerMayReadTheFiles) {
    Add("one");
    for (const char* suffix : {"", "-wal", ".lock"}) {
        struct stat about = {};
        ASSERT_EQ(stat((path() + suffix).c_str(), &about), 0) << suffix;
        EXPECT_EQ(about.st_mode & 0777U, 0600U) << suffix;
    }
    Reopen();
    chmod(path().c_str(), 0666);
    store();
    struct stat about = {};
    ASSERT_EQ(stat(path().c_str(), &about), 0);
    EXPECT_EQ(about.st_mode & 0777U, 0600U);
}

TEST_F(StoreTest, ManyThreadsUseItAtOnce) {
    constexpr int kThreads = 4;
    constexpr int kEvents = 200;
    std::vector<std::vector<std::int64_t>> numbers(kThreads);
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([this, i, &numbers] {
            const std::string consumer = i % 2 == 0 ? "c1/ca1/p2" : "c1/ca1/p3";
            for (int k = 0; k < kEvents; ++k) {
                const std::int64_t sequence = Add(std::to_string(i));
                store().Dispatch({{sequence, {consumer}}});
                if (k % 10 != 0) {
                    store().Done(consumer, {sequence});
                }
                numbers[static_cast<std::size_t>(i)].push_back(sequence);
                numbers[static_cast<std::size_t>(i)].push_back(-store().NextNumber("n"));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::set<std::int64_t> distinct;
    for (const auto& some : numbers) {
        distinct.insert(some.begin(), some.end());
    }
    EXPECT_EQ(distinct.size(), std::size_t{2} * kThreads * kEvents);
    Reopen();
    EXPECT_EQ(store().Events().size(), std::size_t{kThreads} * kEvents / 10);
}

}  // namespace
