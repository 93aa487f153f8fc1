// ExitThread.
#include <thread>

#include "tests/support/wait_for.h"
#include "tests/unit/notification/supplier_fixture.h"

namespace qv_test {
namespace {

constexpr char kSource[] = "channel_connection";

class ExitOfThreads : public SupplierTest {
  protected:
    ExitOfThreads() : SupplierTest({{"bSingleThreadPushEvent", "1"}}) {}
};

TEST_F(ExitOfThreads, DisconnectsDeactivatesAndWaitsForBothThreads) {
    EnterService();
    const CosNotifyComm::StructuredPushSupplier_var supplier = service->Supplier(service->Proxies().at(0));
    EXPECT_FALSE(supplier->_non_existent());
    ASSERT_EQ(0, manager->open());
    ASSERT_TRUE(waits.WaitForResting(2));
    probe->Put(MakeEvent("NT_TCA"));
    int result = 1;
    std::thread exit([&] { result = manager->ExitThread(); });
    EXPECT_TRUE(waits.WaitForResting(1));  // the signal wakes one thread
    EXPECT_TRUE(WaitFor([this] { return manager->thr_count() == 1; }));
    EXPECT_TRUE(probe->Exit());
    waits.Release();  // the other's time is over
    exit.join();
    EXPECT_EQ(0, result);
    EXPECT_EQ(0u, manager->thr_count());
    EXPECT_EQ(1, script().Count("disconnect_structured_push_consumer"));
    EXPECT_TRUE(CORBA::is_nil(probe->Proxy().in()));
    EXPECT_TRUE(supplier->_non_existent());
    EXPECT_EQ(1u, probe->Buffer().size());
    EXPECT_TRUE(m_log->Contains(kDebug, "===[SuppilerMgr::ExitThread] Entering..."));
    EXPECT_TRUE(m_log->Contains(kDebug, "===[SuppilerMgr::ExitThread] Leaved!"));
}

TEST_F(ExitOfThreads, WithoutThreadsEndsAtOnce) {
    EXPECT_EQ(0, manager->ExitThread());
    EXPECT_TRUE(probe->Exit());
}

TEST_F(ExitOfThreads, AProxyThatRaisesDoesNotStopIt) {
    EnterService();
    script().Raise<CORBA::TRANSIENT>("disconnect_structured_push_consumer");
    EXPECT_EQ(0, manager->ExitThread());
    ExpectException("supplier_impl", "Exception during disconnect push consumer failed!");
    EXPECT_FALSE(CORBA::is_nil(probe->Proxy().in()));
}

TEST_F(ExitOfThreads, APoaThatIsGoneEndsItWithoutWaiting) {
    EnterService();
    const PortableServer::POA_var root = Probe::RootPOA();
    const PortableServer::POA_var poa = root->create_POA(
        "gone", PortableServer::POAManager_var(root->the_POAManager()).in(), CORBA::PolicyList());
    probe->Poa() = PortableServer::POA::_duplicate(poa.in());
    poa->destroy(true, true);
    ASSERT_EQ(0, manager->open());
    ASSERT_TRUE(waits.WaitForResting(2));
    EXPECT_EQ(-1, manager->ExitThread());
    EXPECT_NE(0u, manager->thr_count());
    ExpectException(kSource, "[SuppilerMgr::ExitThread] Exception raised during exitthread!");
    EXPECT_FALSE(BufferIsLocked());
    EXPECT_TRUE(probe->Exit());
}

TEST_F(ExitOfThreads, WithoutServantOrPoaOnlyTheThreadsEnd) {
    NS_CORBA::RefCount<NS_CORBA::SuppilerImpl>* const servant = probe->Servant();
    probe->Servant() = nullptr;
    EXPECT_EQ(0, manager->ExitThread());
    probe->Servant() = servant;
    probe->Poa() = PortableServer::POA::_nil();
    EXPECT_EQ(0, manager->ExitThread());
}

}  // namespace
}  // namespace qv_test
