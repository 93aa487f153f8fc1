#include "agent/distributesvcmgrrefpoamgr.h"

#include <cerrno>

#include "agent/persistent_poa.h"
#include "tests/unit/agent/agent_fixture.h"
#include "tests/unit/agent/fake_poa.h"
#include "tests/unit/agent/held_up.h"

namespace qv_test {
namespace {

using NS_CORBA::DistriSvcMgrRefPoaMgr;
using LockProbe = NS_CORBA::DistriSvcMgrRefPoaMgrProbe;

class PoaStore : public AgentTest {
  protected:
    PoaStore() {
        m_orb = MakeOrb();
        CORBA::Object_var object = m_orb->resolve_initial_references("RootPOA");
        m_root = PortableServer::POA::_narrow(object.in());
    }

    DistriSvcMgrRefPoaMgr& Store() { return *DistriSvcMgrRefPoaMgr::Instance(); }

    PortableServer::POA_var MakePoa(const char* name) {
        return NS_CORBA::get_persistent_poa(m_root.in(), name);
    }

    bool Exists(const char* name) {
        try {
            PortableServer::POA_var found = m_root->find_POA(name, false);
            return true;
        } catch (PortableServer::POA::AdapterNonExistent&) {
            return false;
        }
    }

    CORBA::ORB_var m_orb;
    PortableServer::POA_var m_root;
};

TEST_F(PoaStore, SingletonIsMadeOnceAndForgetsOnDestroy) {
    DistriSvcMgrRefPoaMgr* first = DistriSvcMgrRefPoaMgr::Instance();
    EXPECT_EQ(first, DistriSvcMgrRefPoaMgr::Instance());
    PortableServer::POA_var poa = MakePoa("kept");
    std::string uuid;
    Store().SavePoaRef(uuid, poa);
    DistriSvcMgrRefPoaMgr::Destroy();
    DistriSvcMgrRefPoaMgr::Destroy();
    EXPECT_EQ(0u, LockProbe::Size());
    EXPECT_TRUE(Exists("kept")) << "the POA itself lives on";
}

TEST_F(PoaStore, SavingMovesTheReferenceUnderANewUuid) {
    PortableServer::POA_var one = MakePoa("one");
    PortableServer::POA_var two = MakePoa("two");
    std::string first = "old text";
    std::string second;
    Store().SavePoaRef(first, one);
    Store().SavePoaRef(second, two);
    EXPECT_TRUE(CORBA::is_nil(one.in()));
    EXPECT_TRUE(CORBA::is_nil(two.in()));
    EXPECT_NE("old text", first);
    EXPECT_FALSE(second.empty());
    EXPECT_NE(first, second);
    EXPECT_EQ(2u, LockProbe::Size());
}

TEST_F(PoaStore, TakingIsPossibleOnce) {
    PortableServer::POA_var poa = MakePoa("poa");
    std::string uuid;
    Store().SavePoaRef(uuid, poa);
    PortableServer::POA_var taken;
    Store().GetPOAByPoaUUID(uuid, taken);
    ASSERT_FALSE(CORBA::is_nil(taken.in()));
    EXPECT_STREQ("poa", CORBA::String_var(taken->the_name()).in());
    EXPECT_EQ(0u, LockProbe::Size());
    PortableServer::POA_var again;
    Store().GetPOAByPoaUUID(uuid, again);
    EXPECT_TRUE(CORBA::is_nil(again.in()));
}

TEST_F(PoaStore, UnknownUuidLeavesTheCallersPoa) {
    PortableServer::POA_var poa = MakePoa("poa");
    Store().GetPOAByPoaUUID("unknown", poa);
    ASSERT_FALSE(CORBA::is_nil(poa.in()));
    EXPECT_STREQ("poa", CORBA::String_var(poa->the_name()).in());
}

TEST_F(PoaStore, NilReferenceIsKeptAndReported) {
    PortableServer::POA_var nil;
    std::string uuid;
    Store().SavePoaRef(uuid, nil);
    PortableServer::POA_var taken = MakePoa("before");
    Store().GetPOAByPoaUUID(uuid, taken);
    EXPECT_TRUE(CORBA::is_nil(taken.in()));
    EXPECT_EQ(0u, LockProbe::Size());
    ExpectLog(kSys, -1, "distributesvcmgrrefpoamgr", "[DistriSvcMgrRefPoaMgr::GetPOAByPoaUUID] POA is NULL!");
}

TEST_F(PoaStore, ReleasingDestroysThePoa) {
    PortableServer::POA_var poa = MakePoa("poa");
    std::string uuid;
    Store().SavePoaRef(uuid, poa);
    Store().ReleasePOA(uuid);
    EXPECT_FALSE(Exists("poa"));
    EXPECT_EQ(0u, LockProbe::Size());
    EXPECT_EQ(0, LockProbe::Lock().tryacquire_write());
    LockProbe::Lock().release();
}

/// Notes how it is destroyed, and who holds the store's lock meanwhile.
class NotingPoa : public FakePoa {
  public:
    void destroy(CORBA::Boolean etherealize, CORBA::Boolean wait) override {
        destroyed += etherealize ? "etherealized" : "kept";
        destroyed += wait ? ", waited for" : ", not waited for";
        locked = LockProbe::Lock().tryacquire_read() != 0;
        if (!locked) {
            LockProbe::Lock().release();
        }
    }

    std::string destroyed;
    bool locked = false;
};

TEST_F(PoaStore, ReleasingEtherealizesWithoutWaiting) {
    NotingPoa* noting = new NotingPoa;
    const PortableServer::POA_var owner(noting);
    PortableServer::POA_var given = PortableServer::POA::_duplicate(noting);
    std::string uuid;
    Store().SavePoaRef(uuid, given);
    Store().ReleasePOA(uuid);
    EXPECT_EQ("etherealized, not waited for", noting->destroyed);
    EXPECT_TRUE(noting->locked);
}

TEST_F(PoaStore, ReleasingAnUnknownUuidHasNoEffect) {
    PortableServer::POA_var poa = MakePoa("poa");
    std::string uuid;
    Store().SavePoaRef(uuid, poa);
    Store().ReleasePOA("unknown");
    EXPECT_EQ(1u, LockProbe::Size());
    EXPECT_TRUE(Exists("poa"));
    EXPECT_EQ(0, LockProbe::Lock().tryacquire_write());
    LockProbe::Lock().release();
}

TEST_F(PoaStore, PoaThatCannotBeDestroyedStaysForAnotherTry) {
    PortableServer::POA_var poa = MakePoa("poa");
    poa->destroy(true, true);
    std::string uuid;
    Store().SavePoaRef(uuid, poa);
    for (int attempt = 0; attempt < 2; ++attempt) {
        m_log->Clear();
        Store().ReleasePOA(uuid);
        EXPECT_EQ(1u, LockProbe::Size());
        ExpectLogPrefix(kDebug, 1, "distributesvcmgrrefpoamgr",
                        "[DistriSvcMgrRefPoaMgr::ReleasePOA] Exception caught in destroy POA, ex=system "
                        "exception, ID 'IDL:",
                        "Exception caught in destroy POA, ex=%s");
    }
    PortableServer::POA_var taken;
    Store().GetPOAByPoaUUID(uuid, taken);
    EXPECT_FALSE(CORBA::is_nil(taken.in()));
}

TEST_F(PoaStore, SavesWithoutTheLockWhenItFails) {
    PortableServer::POA_var poa = MakePoa("poa");
    Store();
    ASSERT_EQ(0, LockProbe::Lock().acquire_write());  // this thread can't take it a second time
    errno = 0;
    std::string uuid;
    Store().SavePoaRef(uuid, poa);
    EXPECT_EQ(EDEADLK, errno);
    EXPECT_EQ(1u, LockProbe::Size());
    errno = 0;
    Store().ReleasePOA(uuid);
    EXPECT_EQ(EDEADLK, errno);
    EXPECT_EQ(0u, LockProbe::Size());
    EXPECT_EQ(0, LockProbe::Lock().release());
    EXPECT_EQ(0, LockProbe::Lock().tryacquire_write());  // the failed attempts left nothing locked
    LockProbe::Lock().release();
}

TEST_F(PoaStore, SavingAndReleasingWaitForReaders) {
    PortableServer::POA_var poa = MakePoa("poa");
    Store();
    std::string uuid;
    const auto release = [] { LockProbe::Lock().release(); };
    ASSERT_EQ(0, LockProbe::Lock().acquire_read());
    EXPECT_TRUE(IsHeldUpUntil(release, [&] { Store().SavePoaRef(uuid, poa); }));
    EXPECT_EQ(1u, LockProbe::Size());
    ASSERT_EQ(0, LockProbe::Lock().acquire_read());
    EXPECT_TRUE(IsHeldUpUntil(release, [&] { Store().ReleasePOA(uuid); }));
    EXPECT_EQ(0u, LockProbe::Size());
}

TEST_F(PoaStore, TakingNeedsNoLock) {
    PortableServer::POA_var poa = MakePoa("poa");
    std::string uuid;
    Store().SavePoaRef(uuid, poa);
    ASSERT_EQ(0, LockProbe::Lock().acquire_write());
    errno = 0;
    PortableServer::POA_var taken;
    Store().GetPOAByPoaUUID(uuid, taken);
    EXPECT_EQ(0, errno);
    EXPECT_FALSE(CORBA::is_nil(taken.in()));
    LockProbe::Lock().release();
}

}  // namespace
}  // namespace qv_test
