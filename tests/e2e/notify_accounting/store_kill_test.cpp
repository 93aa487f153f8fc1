// The service killed at any point, in the midst of what it writes too: what is left has to open, and to hold
// what it had answered for.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <random>
#include <thread>

#include "tests/e2e/notify_accounting/account.h"
#include "tests/e2e/notify_accounting/consumers.h"
#include "tests/e2e/notify_accounting/service_words.h"
#include "tests/e2e/notify_accounting/suppliers.h"
#include "tests/e2e/notify_accounting/timetable.h"
#include "tests/support/notification/notify_service_run.h"
#include "tests/support/wait_for.h"

namespace qv_accounting {
namespace {

constexpr int kKills = 30;
constexpr std::int32_t kMoreThanWanted = 900000;

TEST(NotifyStore, OpensAfterEachKill) {
    const std::uint64_t seed = Seed();
    std::printf("QV_ACCOUNTING_SEED=%llu\n", static_cast<unsigned long long>(seed));
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    std::uniform_int_distribution<std::int64_t> pushes(0, 60);
    std::uniform_int_distribution<int> microseconds(0, 2000);

    qv_test::NotifyServiceRun service;
    const auto channel = qv_test::MakeChannel(qv_test::FactoryAt(service.Corbaloc()).in(), true);
    const CosNotifyChannelAdmin::ConsumerAdmin_var consumers = channel->default_consumer_admin();
    const CosNotifyChannelAdmin::SupplierAdmin_var admin = channel->default_supplier_admin();
    Suppliers suppliers(admin.in(), 2, kMoreThanWanted);
    suppliers.Allow(kMoreThanWanted);
    Consumer consumer("consumer", consumers.in(), suppliers);
    for (int kill = 0; kill < kKills; ++kill) {
        ASSERT_TRUE(suppliers.WaitForTaken(suppliers.Taken() + pushes(random))) << suppliers.Failure();
        std::this_thread::sleep_for(std::chrono::microseconds(microseconds(random)));
        service.Kill();
        ASSERT_NO_THROW(service.Start()) << "kill " << kill;
    }
    suppliers.Pause();
    ASSERT_TRUE(qv_test::WaitFor([&] { return consumer.HasTheLast(suppliers); })) << service.Said();
    EXPECT_EQ(service.Stop(), 0);

    const ServiceWords words(service.Said(), consumer.Proxy());
    const Account account = consumer.Close(suppliers);
    EXPECT_EQ(account.missing, 0U) << account.text;
    EXPECT_EQ(account.reordered, 0U) << account.text;
    EXPECT_LE(account.repeated, words.in_doubt + words.in_doubt_after_start) << service.Said();
    std::printf(
        "%zu events over %d kills; answers lost %lld, pushed again and recognised %zu, repeated %zu "
        "(in doubt %zu)\n",
        account.got, kKills, static_cast<long long>(suppliers.AnswersLost()),
        CountOf(service.Said(), "pushed an event again"), account.repeated,
        words.in_doubt + words.in_doubt_after_start);
}

}  // namespace
}  // namespace qv_accounting
