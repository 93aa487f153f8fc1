#include "services/notify/store/group_commit.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>

namespace {

using qv_notify::GroupCommit;

/// Stands for a database: what the operations of a transaction add up to, taken back when one fails.
class Sum {
  public:
    Sum()
        : m_group([this](const std::vector<const GroupCommit::Operation*>& operations) {
              const int before = m_value;
              m_largest = std::max(m_largest.load(), operations.size());
              try {
                  for (const GroupCommit::Operation* operation : operations) {
                      (*operation)();
                  }
              } catch (...) {
                  m_value = before;
                  throw;
              }
          }) {}

    void Add(int value) {
        m_group.Run([this, value] { m_value += value; });
    }
    void Fail() {
        m_group.Run([this] {
            m_value += 1'000'000;
            throw std::runtime_error("no");
        });
    }
    int Value() const { return m_value; }
    std::size_t LargestGroup() const { return m_largest; }

  private:
    int m_value = 0;  // under no lock: the group sees to it
    std::atomic<std::size_t> m_largest{0};
    GroupCommit m_group;
};

TEST(GroupCommit, CarriesAnOperationOut) {
    Sum sum;
    sum.Add(5);
    EXPECT_EQ(sum.Value(), 5);
    EXPECT_EQ(sum.LargestGroup(), 1U);
}

TEST(GroupCommit, TellsWhatMadeAnOperationFail) {
    Sum sum;
    sum.Add(5);
    EXPECT_THROW(sum.Fail(), std::runtime_error);
    EXPECT_EQ(sum.Value(), 5);
    sum.Add(1);
    EXPECT_EQ(sum.Value(), 6);
}

TEST(GroupCommit, OneThatFailsTakesNoOtherAlong) {
    constexpr int kThreads = 4;
    Sum sum;
    std::atomic<int> added{0};
    std::atomic<int> failed{0};
    std::atomic<bool> enough{false};
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&, i] {
            while (!enough) {
                try {
                    if (i == 0) {
                        sum.Fail();
                    } else {
                        sum.Add(1);
                        ++added;
                    }
                } catch (const std::runtime_error&) {
                    failed += i == 0 ? 1 : 1'000'000;
                }
            }
        });
    }
    // That several wait together is a matter of luck, of which there is enough.
    while (sum.LargestGroup() < 2 || added < 2000 || failed < 500) {
        std::this_thread::yield();
    }
    enough = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(sum.Value(), added);
    EXPECT_LT(failed, 1'000'000);
}

}  // namespace
