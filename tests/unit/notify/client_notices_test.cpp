#include "services/notify/delivery/client_notices.h"

#include <gmock/gmock.h>
#include <tao/ORB.h>

#include <vector>

#include "tests/support/wait_for.h"
#include "tests/unit/notify/gate.h"

namespace {

using qv_notify::ClientNotices;
using qv_notify_test::Gate;
using qv_notify_test::OpensAtEnd;
using qv_test::WaitFor;
using testing::ElementsAre;

class ClientNoticesTest : public testing::Test {
  protected:
    ~ClientNoticesTest() override { pool.Stop(); }
    void Post(int number) {
        notices->Post([this, number] {
            const std::lock_guard<std::mutex> guard(mutex);
            told.push_back(number);
        });
    }
    std::vector<int> Told() {
        const std::lock_guard<std::mutex> guard(mutex);
        return told;
    }

    std::mutex mutex;
    std::vector<int> told;
    qv_notify::WorkPool pool{2};
    const std::shared_ptr<ClientNotices> notices = std::make_shared<ClientNotices>(pool);
};

TEST_F(ClientNoticesTest, TellsInOrderAlsoAfterACallThatFails) {
    Post(1);
    notices->Post([] { throw CORBA::TRANSIENT(); });
    Post(2);
    ASSERT_TRUE(WaitFor([&] { return Told().size() == 2; }));
    EXPECT_THAT(Told(), ElementsAre(1, 2));
}

TEST_F(ClientNoticesTest, LeavesTheOldestOutForAClientThatHangs) {
    Gate gate;
    const OpensAtEnd opens(gate);
    std::atomic<bool> hangs{false};
    notices->Post([&] {
        hangs = true;
        gate.Wait();
    });
    ASSERT_TRUE(WaitFor([&] { return hangs.load(); }));
    constexpr int kMost = static_cast<int>(ClientNotices::kMost);
    for (int number = 1; number <= kMost + 3; ++number) {
        Post(number);
    }
    gate.Open();
    ASSERT_TRUE(WaitFor([&] { return Told().size() == ClientNotices::kMost; }));
    EXPECT_EQ(Told().front(), 4);
    EXPECT_EQ(Told().back(), kMost + 3);
}

}  // namespace
