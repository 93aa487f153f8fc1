#include <stdexcept>

#include "agent/manager_registry.h"
#include "tests/support/open_hooks.h"
#include "tests/support/sanitized.h"
#include "tests/unit/agent/agent_fixture.h"
#include "tests/unit/agent/held_up.h"

namespace qv_test {
namespace {

class Factory : public NS_CORBA::MgrFactory {
  public:
    CORBA::Object* CreateMgr(PortableServer::POA*) override { return CORBA::Object::_nil(); }
};

class Module : public NS_CORBA::CorbaI {
  public:
    bool Init() override { return true; }
    bool Start() override { return true; }
    void Stop() override {}
};

class Registry : public AgentTest {
  protected:
    std::list<NS_CORBA::CorbaI*> Modules() {
        std::list<NS_CORBA::CorbaI*>* modules = config().GetMGRList();
        const std::list<NS_CORBA::CorbaI*> copy(*modules);
        config().FreeMGRList();
        return copy;
    }
};

TEST_F(Registry, UnknownManagerIsNull) {
    EXPECT_EQ(nullptr, config().GetNorthMgr("EMS"));
    EXPECT_EQ(0, Probe::RefCount());
}

TEST_F(Registry, RegisteredManagerIsFoundByNameAlone) {
    Factory ems;
    Factory inventory;
    config().RegisterMgr("EMS", &ems);
    config().RegisterMgr("ManagedElement", &inventory);
    EXPECT_EQ(&ems, config().GetNorthMgr("EMS"));
    EXPECT_EQ(&inventory, config().GetNorthMgr("ManagedElement"));
    EXPECT_EQ(nullptr, config().GetNorthMgr("ems"));
    EXPECT_EQ(2, Probe::RefCount());
    EXPECT_EQ(2u, config().GetNorthMgrMap().size());
}

TEST_F(Registry, ManagerMapIsTheRegistryItself) {
    Factory ems;
    config().GetNorthMgrMap()["EMS"] = &ems;
    EXPECT_EQ(&ems, config().GetNorthMgr("EMS"));
    EXPECT_EQ(0, Probe::RefCount());
}

TEST_F(Registry, SecondRegistrationOfANameReplacesAndCountsAgain) {
    Factory first;
    Factory second;
    config().RegisterMgr("EMS", &first);
    config().RegisterMgr("EMS", &second);
    EXPECT_EQ(&second, config().GetNorthMgr("EMS"));
    EXPECT_EQ(2, Probe::RefCount());
    config().UnregisterMgr("EMS");
    EXPECT_EQ(nullptr, config().GetNorthMgr("EMS"));
    EXPECT_EQ(1, Probe::RefCount());
}

TEST_F(Registry, UnregisteringAnUnknownManagerStillCounts) {
    config().UnregisterMgr("EMS");
    EXPECT_EQ(-1, Probe::RefCount());
}

TEST_F(Registry, NullManagerNameRaises) {
    Factory ems;
    EXPECT_THROW(config().RegisterMgr(nullptr, &ems), std::logic_error);
    EXPECT_THROW(config().UnregisterMgr(nullptr), std::logic_error);
    EXPECT_THROW(config().GetNorthMgr(nullptr), std::logic_error);
    EXPECT_EQ(0, Probe::RefCount());
}

TEST_F(Registry, RemoveRefGoesBelowZero) {
    NS_CORBA::CorbaBaseAgentConfig* before = Probe::RawInstance();
    config()._remove_ref();
    EXPECT_EQ(-1, Probe::RefCount());
    EXPECT_EQ(before, Probe::RawInstance());
    config()._add_ref();
    EXPECT_EQ(0, Probe::RefCount());
}

TEST_F(Registry, ModulesEnterAndLeaveInOrder) {
    Module first;
    {
        Module second;
        EXPECT_EQ((std::list<NS_CORBA::CorbaI*>{&first, &second}), Modules());
        EXPECT_EQ(2, Probe::RefCount());
    }
    EXPECT_EQ(std::list<NS_CORBA::CorbaI*>{&first}, Modules());
    EXPECT_EQ(1, Probe::RefCount());
}

TEST_F(Registry, ModuleRegisteredTwiceLeavesAtOnceAndCountsOnce) {
    Module module;
    EXPECT_EQ(0, config().RegisterModule(&module));
    EXPECT_EQ(2u, Modules().size());
    EXPECT_EQ(2, Probe::RefCount());
    config().UnRegisterModule(&module);
    EXPECT_TRUE(Modules().empty());
    EXPECT_EQ(1, Probe::RefCount());
}

TEST_F(Registry, UnregisteringAnUnknownModuleStillCounts) {
    config().UnRegisterModule(nullptr);
    EXPECT_EQ(-1, Probe::RefCount());
}

TEST_F(Registry, ModuleMadeFirstBringsTheSingletonIntoBeing) {
    NS_CORBA::CorbaBaseAgentConfig::Destroy();
    ASSERT_EQ(nullptr, Probe::RawInstance());
    Module module;
    ASSERT_NE(nullptr, Probe::RawInstance());
    EXPECT_EQ(std::list<NS_CORBA::CorbaI*>{&module}, Modules());
}

TEST_F(Registry, ModuleListIsLockedUntilItIsFreed) {
    ASSERT_NE(nullptr, config().GetMGRList());
    EXPECT_EQ(-1, Probe::Mutex().tryacquire());
    config().FreeMGRList();
    EXPECT_EQ(0, Probe::Mutex().tryacquire());
    Probe::Mutex().release();
}

TEST_F(Registry, TheCountIsGuardedByTheLockOfTheModuleList) {
    const auto free = [this] { config().FreeMGRList(); };
    ASSERT_NE(nullptr, config().GetMGRList());
    EXPECT_TRUE(IsHeldUpUntil(free, [this] { config()._add_ref(); }));
    EXPECT_EQ(1, Probe::RefCount());
    ASSERT_NE(nullptr, config().GetMGRList());
    EXPECT_TRUE(IsHeldUpUntil(free, [this] { config()._remove_ref(); }));
    EXPECT_EQ(0, Probe::RefCount());
}

TEST_F(Registry, WithoutTheLockThereIsNoModuleList) {
    if (kThreadsSanitized) {
        GTEST_SKIP() << "the sanitizer ends who takes a lock that was removed";
    }
    config();
    Probe::Mutex().remove();  // locking fails from here on
    EXPECT_EQ(nullptr, config().GetMGRList());
    Module* none = nullptr;
    EXPECT_EQ(-1, config().RegisterModule(none));
    config().UnRegisterModule(none);
    EXPECT_EQ(0, Probe::RefCount());
}

TEST_F(Registry, DisconnectMapIsASnapshot) {
    config().SetDisconnectMap("ne-1", "lost");
    const std::map<std::string, std::string> before = config().GetDisconnectMap();
    config().SetDisconnectMap("ne-1", "back");
    config().SetDisconnectMap("ne-2", "lost");
    EXPECT_EQ((std::map<std::string, std::string>{{"ne-1", "lost"}}), before);
    EXPECT_EQ((std::map<std::string, std::string>{{"ne-1", "back"}, {"ne-2", "lost"}}),
              config().GetDisconnectMap());
    ExpectLog(kDebug, 3, "registry", "断连告警缓存m_DisconnectAlarmMapInfo加入key = ne-1,value=back",
              "断连告警缓存");
}

TEST_F(Registry, RequestHooksAreStoredAndTakenOff) {
    EXPECT_EQ(nullptr, config().GetReqInterceptorImpl());
    OpenHooks hooks;
    config().SetReqInterceptorImpl(&hooks);
    EXPECT_EQ(&hooks, config().GetReqInterceptorImpl());
    config().SetReqInterceptorImpl(nullptr);
    EXPECT_EQ(nullptr, config().GetReqInterceptorImpl());
}

TEST_F(Registry, RequestHooksAreReachedWithoutTheLockWhenItFails) {
    OpenHooks hooks;
    config();
    ASSERT_EQ(0, Probe::RwLock().acquire_write());  // this thread can't take it a second time
    errno = 0;
    config().SetReqInterceptorImpl(&hooks);
    EXPECT_EQ(EDEADLK, errno);
    errno = 0;
    EXPECT_EQ(&hooks, config().GetReqInterceptorImpl());
    EXPECT_EQ(EDEADLK, errno);
    EXPECT_EQ(0, Probe::RwLock().release());
    EXPECT_EQ(0, Probe::RwLock().tryacquire_write());  // the failed attempts left nothing locked
    Probe::RwLock().release();
}

}  // namespace
}  // namespace qv_test
