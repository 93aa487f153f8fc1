// The manager itself: construction, singleton, threads, registered types, buffer and its lock.
#include "notification/supplier.h"

#include <thread>

#include "tests/support/wait_for.h"
#include "tests/unit/notification/counted_semaphore.h"
#include "tests/unit/notification/supplier_fixture.h"

namespace qv_test {
namespace {

using SupplierCore = SupplierTest;

TEST_F(SupplierCore, StartsOutOfServiceAndEmpty) {
    EXPECT_EQ("out of service", State());
    EXPECT_EQ(3, probe->RestoreCount());
    EXPECT_FALSE(probe->Exit());
    EXPECT_TRUE(probe->Types().empty());
    EXPECT_TRUE(manager->IsBufEmpty());
    EXPECT_TRUE(CORBA::is_nil(CosNotifyChannelAdmin::EventChannel_var(manager->getChannel()).in()));
    EXPECT_TRUE(CORBA::is_nil(probe->Admin().in()));
    EXPECT_TRUE(CORBA::is_nil(probe->Proxy().in()));
    EXPECT_EQ(nullptr, SuppilerMgr().m_pCallBackObj);
    const ACE_Time_Value moment(0, 1);
    EXPECT_NE(0, probe->WakeEvent().wait(&moment, 0));
}

TEST_F(SupplierCore, ItsServantLivesInTheRootPoa) {
    const PortableServer::POA_var poa = probe->Servant()->_default_POA();
    EXPECT_TRUE(poa->_is_equivalent(Probe::RootPOA().in()));
}

TEST_F(SupplierCore, TracesTheBirthAndDeathOfItsServant) {
    { const SuppilerMgr other; }
    const std::vector<LogEntry> entries = m_log->Entries(kDebug);
    ASSERT_EQ(2u, entries.size());
    EXPECT_EQ("[ RefCount]  ref_count!", entries[0].text);
    EXPECT_EQ("[ ~RefCount]  Reference count associated object destroyed!", entries[1].text);
    for (const LogEntry& entry : entries) {
        EXPECT_EQ(3, entry.level);
        EXPECT_EQ("ref_count", entry.file);
    }
}

TEST_F(SupplierCore, TheServantOutlivesItsManagerWhileTheOrbHoldsIt) {
    EnterService();
    const PortableServer::ObjectId_var id = Probe::RootPOA()->servant_to_id(probe->Servant());
    manager.reset();
    EXPECT_FALSE(m_log->Contains(kDebug, "~RefCount"));
    Probe::RootPOA()->deactivate_object(id.in());
    EXPECT_TRUE(WaitFor([&] { return m_log->Contains(kDebug, "~RefCount"); }));
    manager = std::make_unique<SuppilerMgr>();
}

TEST_F(SupplierCore, ThereIsOneInstanceForAllThreads) {
    std::vector<SuppilerMgr*> seen(8);
    std::vector<std::thread> threads;
    for (SuppilerMgr*& instance : seen) {
        threads.emplace_back([&instance] { instance = SuppilerMgr::Instance(); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    ASSERT_NE(nullptr, seen[0]);
    EXPECT_EQ(std::vector<SuppilerMgr*>(8, SuppilerMgr::m_pInstance), seen);
}

TEST_F(SupplierCore, DestroyOnlyTraces) {
    SuppilerMgr* const instance = SuppilerMgr::Instance();
    Forget();
    SuppilerMgr::Destroy();
    EXPECT_EQ(instance, SuppilerMgr::m_pInstance);
    EXPECT_EQ(instance, SuppilerMgr::Instance());
    const std::vector<LogEntry> entries = m_log->Entries();
    ASSERT_EQ(2u, entries.size());
    EXPECT_EQ("===[SuppilerMgr::Destroy] Entering...", entries[0].text);
    EXPECT_EQ("===[SuppilerMgr::Destroy] Leaved!", entries[1].text);
}

TEST_F(SupplierCore, OpenStartsTwoThreadsOnce) {
    EXPECT_EQ(0, manager->open(nullptr));
    EXPECT_TRUE(waits.WaitForResting(2));
    EXPECT_EQ(2u, manager->thr_count());
    EXPECT_EQ(1, manager->open(nullptr));
    EXPECT_EQ(2u, manager->thr_count());
}

TEST_F(SupplierCore, CloseDoesNothing) {
    EXPECT_EQ(0, manager->close(0));
    EXPECT_EQ(0, manager->close(1));
    EXPECT_TRUE(m_log->Entries().empty());
}

TEST_F(SupplierCore, TypesComeAndGoTheSameHoweverOften) {
    EXPECT_EQ(0, manager->regist("NT_OWN"));
    EXPECT_EQ(0, manager->regist("NT_OWN"));
    EXPECT_EQ((std::set<std::string>{"NT_OWN"}), probe->Types());
    EXPECT_EQ(0, manager->unRegist("NT_OWN"));
    EXPECT_EQ(0, manager->unRegist("NT_OWN"));
    EXPECT_TRUE(probe->Types().empty());
    EXPECT_TRUE(m_log->Entries().empty());
}

TEST_F(SupplierCore, HandsOutItsChannel) {
    EnterService();
    const CosNotifyChannelAdmin::EventChannel_var channel = manager->getChannel();
    const CosNotifyChannelAdmin::EventChannel_var expected = service->Channel(1);
    EXPECT_TRUE(channel->_is_equivalent(expected.in()));
}

TEST_F(SupplierCore, TellsWhetherTheBufferIsEmpty) {
    probe->Put(MakeEvent("NT_TCA"));
    EXPECT_FALSE(manager->IsBufEmpty());
    probe->ClearBuffer();
    EXPECT_TRUE(manager->IsBufEmpty());
}

TEST_F(SupplierCore, LooksIntoTheBufferUnderItsLock) {
    CountedSemaphore semaphore;
    manager->IsBufEmpty();
    EXPECT_EQ(1, semaphore.Taken());
    EXPECT_EQ(1, semaphore.Given());
}

TEST_F(SupplierCore, GoesOnWithoutALockThatCantBeTakenAndReleasesNothing) {
    CountedSemaphore semaphore;
    semaphore.FailNext(EINVAL, 2);
    manager->regist("NT_TCA");
    StructuredEvent event = MakeEvent("NT_TCA");
    EXPECT_TRUE(manager->IsBufEmpty());
    EXPECT_EQ(-1, manager->PushEvent(event));
    EXPECT_EQ(2, semaphore.Taken());
    EXPECT_EQ(0, semaphore.Given());
    EXPECT_EQ(1u, probe->Buffer().size());
}

TEST_F(SupplierCore, AnInterruptedWaitForTheLockIsWaitedOn) {
    CountedSemaphore semaphore;
    semaphore.FailNext(EINTR, 3);
    EXPECT_TRUE(manager->IsBufEmpty());
    EXPECT_EQ(4, semaphore.Taken());
    EXPECT_EQ(1, semaphore.Given());
}

TEST_F(SupplierCore, APusherNeverMissesATypeWhileTheChannelIsMadeAnew) {
    EnterService();
    std::atomic<bool> stop{false};
    std::atomic<int> filtered{0};
    std::thread pusher([&] {
        StructuredEvent event = MakeEvent("NT_TCA");
        StructuredEvent own = MakeEvent("NT_OWN");
        while (!stop) {
            EXPECT_EQ(0, manager->PushEvent(own));
            event.filterable_data.length(0);  // -1 for a registered type, 0 for another
            filtered += manager->PushEvent(event) == 0 ? 1 : 0;
        }
    });
    for (int i = 0; i < 50; ++i) {
        EXPECT_EQ(0, manager->NotifyServiceInit());
        EXPECT_EQ(0, manager->regist("NT_ELSE"));
    }
    stop = true;
    pusher.join();
    EXPECT_EQ(0, filtered);
}

}  // namespace
}  // namespace qv_test
