// Many events through a persistent channel, while the service is killed and consumers come, hang and go; then
// the account of each consumer has to balance.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <map>

#include "tests/e2e/notify_accounting/account.h"
#include "tests/e2e/notify_accounting/consumers.h"
#include "tests/e2e/notify_accounting/insist.h"
#include "tests/e2e/notify_accounting/service_words.h"
#include "tests/e2e/notify_accounting/suppliers.h"
#include "tests/e2e/notify_accounting/timetable.h"
#include "tests/support/notification/notify_service_run.h"
#include "tests/support/wait_for.h"

namespace qv_accounting {
namespace {

using std::chrono::seconds;

#ifdef QV_FEWER_EVENTS
constexpr std::int32_t kEvents = 10000;
#else
constexpr std::int32_t kEvents = 100000;
#endif
constexpr std::size_t kKills = 10;
constexpr std::int64_t kOverflow = kEvents / 50;
constexpr CORBA::Long kSmallQueue = 50;
// Suppliers go on while something is done, but not so far that what is to come finds no events any more.
constexpr std::int64_t kAhead = kEvents / 250;

class Scene {
  public:
    explicit Scene(std::size_t threads)
        : m_channel(qv_test::MakeChannel(qv_test::FactoryAt(m_service.Corbaloc()).in(), /*persistent=*/true)),
          m_consumer_admin(m_channel->default_consumer_admin()) {
        const CosNotifyChannelAdmin::SupplierAdmin_var admin = m_channel->default_supplier_admin();
        m_suppliers = std::make_unique<Suppliers>(admin.in(), threads, kEvents);
        Join("steady");
    }

    void Play(const std::vector<Deed>& timetable) {
        for (const Deed& deed : timetable) {
            m_suppliers->Allow(deed.at + kAhead);
            ASSERT_TRUE(m_suppliers->WaitForTaken(deed.at)) << m_suppliers->Failure() << m_service.Said();
            m_suppliers->Allow(m_suppliers->Taken() + kAhead);
            Do(deed);
            if (testing::Test::HasFatalFailure()) {
                return;
            }
        }
        m_suppliers->Allow(kEvents);
        ASSERT_TRUE(m_suppliers->WaitForTaken(kEvents)) << m_suppliers->Failure() << m_service.Said();
        for (const auto& [name, consumer] : m_consumers) {
            const Consumer& one = *consumer;
            EXPECT_TRUE(one.Left() ||
                        qv_test::WaitFor([&] { return one.HasTheLast(*m_suppliers); }, seconds(60)))
                << name << " does not get its last events\n"
                << m_service.Said();
        }
        EXPECT_EQ(m_service.Stop(), 0);
    }

    void Balance() {
        const std::string said = m_service.Said();
        for (const auto& [name, consumer] : m_consumers) {
            BalanceOne(*consumer, said);
        }
        EXPECT_GT(m_in_doubt, 0U) << "nobody hung for long enough";
        // An event that comes twice to all was taken twice; one that comes twice to one was delivered twice.
        EXPECT_FALSE(testing::Test::HasFailure()) << m_accounts;
        std::printf(
            "answers lost %lld, pushed again and recognised %zu, repeated %zu (in doubt %zu), "
            "dropped %zu\n",
            static_cast<long long>(m_suppliers->AnswersLost()), CountOf(said, "pushed an event again"),
            m_repeated, m_in_doubt, m_dropped);
    }

  private:
    void Do(const Deed& deed) {
        switch (deed.kind) {
            case Deed::Kind::kKill:
                m_service.Kill();
                m_service.Start();
                break;
            case Deed::Kind::kJoin:
                Join(deed.who);
                break;
            case Deed::Kind::kHang:
                m_consumers.at(deed.who)->Hang();
                break;
            case Deed::Kind::kLetGo:
                LetGo(*m_consumers.at(deed.who));
                break;
            case Deed::Kind::kLeave:
                Leave(*m_consumers.at(deed.who));
                break;
            case Deed::Kind::kOverflow:
                Overflow();
                break;
        }
    }

    Consumer& Join(const std::string& who) {
        auto consumer = std::make_unique<Consumer>(who, m_consumer_admin.in(), *m_suppliers);
        return *m_consumers.emplace(who, std::move(consumer)).first->second;
    }

    // Not before the service has had enough of waiting. One that has all events already isn't called.
    void LetGo(Consumer& consumer) {
        const auto told = [&] { return ServiceWords(m_service.Process().Err(), consumer.Proxy()).in_doubt; };
        qv_test::WaitFor([&] { return told() > 0 || consumer.HasTheLast(*m_suppliers); }, seconds(5));
        consumer.LetGo();
    }

    // One that joined a moment ago gets something first.
    void Leave(Consumer& consumer) {
        EXPECT_TRUE(qv_test::WaitFor([&] { return consumer.HasAny(); })) << m_service.Said();
        consumer.Leave();
    }

    // A consumer with a small queue pauses for longer than that holds. The service's end in order has it say
    // how much was lost in all.
    void Overflow() {
        m_suppliers->Allow(m_suppliers->Taken() + kOverflow);
        Consumer& small = Join("small");
        Consumer& watcher = Join("watcher");
        // What is lost from now on is lost between events that it gets.
        ASSERT_TRUE(qv_test::WaitFor([&] { return small.HasOneOfEach(); })) << m_service.Said();
        const auto proxy = small.Servant().Proxy();
        Insist([&] {
            proxy->set_qos(qv_test::Properties({qv_test::PropertyOf("MaxEventsPerConsumer", kSmallQueue)}));
        });
        Insist([&] { proxy->suspend_connection(); });
        const std::int64_t begin = m_suppliers->Taken();
        m_suppliers->Allow(begin + kOverflow + kAhead);
        ASSERT_TRUE(m_suppliers->WaitForTaken(begin + kOverflow)) << m_service.Said();
        // The service takes events before it hands them to the queues; the watcher never hangs.
        m_suppliers->Pause();
        ASSERT_TRUE(qv_test::WaitFor([&] { return watcher.HasTheLast(*m_suppliers); })) << m_service.Said();
        m_suppliers->GoOn();
        // Nothing is lost any more, and each supplier thread pushes once again: then the last of each
        // arrives.
        Insist([&] {
            proxy->set_qos(qv_test::Properties({qv_test::PropertyOf("MaxEventsPerConsumer", kEvents)}));
        });
        Insist([&] { proxy->resume_connection(); });
        ASSERT_TRUE(PushOneMoreOfEach()) << m_suppliers->Failure();
        m_suppliers->Pause();
        ASSERT_TRUE(qv_test::WaitFor([&] { return small.HasTheLast(*m_suppliers); })) << m_service.Said();
        small.Leave();
        watcher.Leave();
        ASSERT_EQ(m_service.Stop(), 0);
        m_service.Start();
        m_suppliers->GoOn();
    }

    bool PushOneMoreOfEach() {
        m_suppliers->Allow(m_suppliers->Taken() + kOverflow);
        for (std::size_t thread = 0; thread < m_suppliers->Threads(); ++thread) {
            // The next one may have been under way already.
            const std::int32_t enough = m_suppliers->TakenOf(thread) + 2;
            if (!qv_test::WaitFor([&] { return m_suppliers->TakenOf(thread) >= enough; })) {
                return false;
            }
        }
        return true;
    }

    void BalanceOne(const Consumer& consumer, const std::string& said) {
        const Account account = consumer.Close(*m_suppliers);
        const ServiceWords words(said, consumer.Proxy());
        const std::size_t in_doubt = words.in_doubt + words.in_doubt_after_start;
        m_accounts += consumer.Name() + " (proxy " + std::to_string(consumer.Proxy()) + "), " +
                      std::to_string(account.got) + " events, in doubt " + std::to_string(in_doubt) + "\n" +
                      account.text;
        SCOPED_TRACE(consumer.Name());
        EXPECT_EQ(account.reordered, 0U);
        EXPECT_LE(account.repeated, in_doubt);
        EXPECT_LE(words.in_doubt_after_start, kKills + 1);
        // One that was dropped while it was in doubt may have come.
        EXPECT_LE(account.missing, words.dropped);
        EXPECT_LE(words.dropped, account.missing + words.in_doubt);
        EXPECT_GT(account.got, 0U);
        if (consumer.Name() == "small") {
            EXPECT_GT(words.dropped, static_cast<std::size_t>(kOverflow) / 2);
        } else {
            EXPECT_EQ(words.dropped, 0U);
        }
        m_repeated += account.repeated;
        m_in_doubt += in_doubt;
        m_dropped += words.dropped;
    }

    qv_test::NotifyServiceRun m_service{{"--call-timeout", "700"}};
    const CosNotifyChannelAdmin::EventChannel_var m_channel;
    const CosNotifyChannelAdmin::ConsumerAdmin_var m_consumer_admin;
    std::unique_ptr<Suppliers> m_suppliers;
    std::map<std::string, std::unique_ptr<Consumer>> m_consumers;
    std::string m_accounts;
    std::size_t m_repeated = 0;
    std::size_t m_in_doubt = 0;
    std::size_t m_dropped = 0;
};

class NotifyAccounting : public testing::TestWithParam<std::size_t> {};

TEST_P(NotifyAccounting, BalancesForEachConsumer) {
    const std::uint64_t seed = Seed();
    std::printf("QV_ACCOUNTING_SEED=%llu\n", static_cast<unsigned long long>(seed));
    SCOPED_TRACE("seed " + std::to_string(seed));
    Scene scene(GetParam());
    const auto begin = std::chrono::steady_clock::now();
    scene.Play(MakeTimetable(seed, kEvents, kKills, kOverflow));
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
    scene.Balance();
    std::printf("%d events in %.1f s, %.0f per second\n", kEvents, took.count(), kEvents / took.count());
}

INSTANTIATE_TEST_SUITE_P(SupplierThreads, NotifyAccounting, testing::Values(1U, 4U),
                         testing::PrintToStringParamName());

}  // namespace
}  // namespace qv_accounting
