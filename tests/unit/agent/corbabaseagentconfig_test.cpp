#include "agent/corbabaseagentconfig.h"

#include <tao/ORBInitializer_Registry.h>
#include <tao/PI_Server/PI_Server.h>

#include <set>
#include <thread>

#include "agent/agentserver.h"
#include "tests/support/free_port.h"
#include "tests/unit/agent/agent_fixture.h"
#include "tests/unit/agent/fake_orb.h"
#include "tests/unit/agent/interposed.h"
#include "tests/unit/request/acl_probe.h"

namespace qv_test {
namespace {

using NS_CORBA::CorbaBaseAgentConfig;

/// An interceptor that lets everything pass, under a name of its own.
class Bystander : public PortableInterceptor::ServerRequestInterceptor {
  public:
    explicit Bystander(std::string name) : m_name(std::move(name)) {}

    char* name() override { return CORBA::string_dup(m_name.c_str()); }
    void destroy() override {}
    void receive_request_service_contexts(PortableInterceptor::ServerRequestInfo*) override {}
    void receive_request(PortableInterceptor::ServerRequestInfo*) override {}
    void send_reply(PortableInterceptor::ServerRequestInfo*) override {}
    void send_exception(PortableInterceptor::ServerRequestInfo*) override {}
    void send_other(PortableInterceptor::ServerRequestInfo*) override {}

  private:
    const std::string m_name;
};

/// Adds a bystander of that name to the ORB.
class BystanderInitializer : public virtual PortableInterceptor::ORBInitializer,
                             public virtual CORBA::LocalObject {
  public:
    explicit BystanderInitializer(std::string name) : m_name(std::move(name)) {}

    void pre_init(PortableInterceptor::ORBInitInfo*) override {}
    void post_init(PortableInterceptor::ORBInitInfo* info) override {
        PortableInterceptor::ServerRequestInterceptor_var bystander = new Bystander(m_name);
        info->add_server_request_interceptor(bystander.in());
    }

  private:
    const std::string m_name;
};

class AgentConfig : public AgentTest {
  protected:
    AgentConfig() {
        m_items.Set("CORBAAgent_Port", std::to_string(FreePort()));
        m_items.Set("CORBAAgent_Host", "127.0.0.2");  // a loopback address that isn't replaced
    }
};

/// Looks for the instance when it is given up.
class WatchingOrb final : public FakeOrb {
  public:
    WatchingOrb(bool& ended, bool& sawInstance) : m_ended(ended), m_sawInstance(sawInstance) {}
    ~WatchingOrb() override {
        m_ended = true;
        m_sawInstance = Probe::RawInstance() != nullptr;
    }

  private:
    bool& m_ended;
    bool& m_sawInstance;
};

TEST_F(AgentConfig, NobodyIsHandedAnInstanceThatIsDying) {
    bool ended = false;
    bool sawInstance = true;
    CORBA::ORB_var orb = new WatchingOrb(ended, sawInstance);
    config().SetOrb(orb.in());
    orb = CORBA::ORB::_nil();
    EXPECT_FALSE(ended);
    CorbaBaseAgentConfig::Destroy();
    EXPECT_TRUE(ended);
    EXPECT_FALSE(sawInstance);
}

TEST_F(AgentConfig, TheOrbThatItAloneHoldsMayBeSetAgain) {
    bool ended = false;
    bool sawInstance = true;
    FakeOrb* orb = new WatchingOrb(ended, sawInstance);
    config().SetOrb(orb);
    CORBA::release(orb);
    ASSERT_EQ(1, orb->References());
    config().SetOrb(orb);
    ASSERT_FALSE(ended) << "the old reference was given up before the new one was taken";
    EXPECT_EQ(1, orb->References());
    CorbaBaseAgentConfig::Destroy();
    EXPECT_TRUE(ended);
}

TEST_F(AgentConfig, SingletonIsMadeOnceAndDestroyedOnDemand) {
    CorbaBaseAgentConfig* first = CorbaBaseAgentConfig::Instance();
    ASSERT_NE(nullptr, first);
    EXPECT_EQ(first, CorbaBaseAgentConfig::Instance());
    Probe::EmsName() = "changed";
    CorbaBaseAgentConfig::Destroy();
    EXPECT_EQ(nullptr, Probe::RawInstance());
    CorbaBaseAgentConfig::Destroy();
    EXPECT_EQ(nullptr, Probe::RawInstance());
    EXPECT_EQ("Zorvex/KLV", config().EmsName());
}

TEST_F(AgentConfig, ThreadsShareOneSingleton) {
    CorbaBaseAgentConfig::Destroy();
    std::vector<CorbaBaseAgentConfig*> seen(8);
    std::vector<std::thread> threads;
    for (CorbaBaseAgentConfig*& slot : seen) {
        threads.emplace_back([&slot] { slot = CorbaBaseAgentConfig::Instance(); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(1u, std::set<CorbaBaseAgentConfig*>(seen.begin(), seen.end()).size());
    EXPECT_NE(nullptr, seen.front());
}

TEST_F(AgentConfig, ConstructionLeavesTheDefaults) {
    EXPECT_TRUE(CORBA::is_nil(CORBA::ORB_var(config().GetOrb()).in()));
    EXPECT_TRUE(CORBA::is_nil(PortableServer::POA_var(config().GetRootPoa()).in()));
    EXPECT_EQ(0, config().GetArgc());
    EXPECT_EQ(nullptr, config().GetArgv());
    EXPECT_EQ("", config().GetCorbaBundleName());
    EXPECT_EQ("localhost", config().GetHostNameAndReturn());
    EXPECT_EQ("localhost", Probe::NamingServiceHost());
    EXPECT_EQ("localhost", Probe::NotifyServiceHost());
    EXPECT_EQ("localhost", config().GetCorbaAgentAddress());
    EXPECT_EQ("", Probe::CorbaAgentOption());
    EXPECT_EQ("", Probe::NamingServiceCmd() + Probe::NotifyServiceCmd() + Probe::CorbaAgentCmd());
    EXPECT_EQ(nullptr, Probe::NsIorFile());
    EXPECT_EQ(nullptr, Probe::OutIorFile());
    EXPECT_EQ(std::vector<char>({0, 0, 0, 0}), Probe::Flags());
    EXPECT_TRUE(config().GetNorthMgrMap().empty());
    EXPECT_TRUE(config().GetDisconnectMap().empty());
    EXPECT_EQ(nullptr, config().GetReqInterceptorImpl());
    EXPECT_EQ(0, Probe::RefCount());
    EXPECT_TRUE(Probe::NBISSLCRLCheckStatus());
    EXPECT_EQ(0, Probe::CorbaAgentSSLPort());
}

TEST_F(AgentConfig, NotifyIorFileFollowsTheShareDirectory) {
    CorbaBaseAgentConfig::Destroy();
    {
        const ScopedEnv share("_APP_SHARE_DIR", "/opt/app/share");
        EXPECT_STREQ("/opt/app/share/../NotifyService/var/oss_tmp/nbi/corba/nt.ior",
                     (config(), Probe::NtIorFile()));
    }
    CorbaBaseAgentConfig::Destroy();
    const ScopedEnv none("_APP_SHARE_DIR", std::nullopt);
    EXPECT_STREQ("/../NotifyService/var/oss_tmp/nbi/corba/nt.ior", (config(), Probe::NtIorFile()));
}

TEST_F(AgentConfig, BundleNameIsKept) {
    config().SetCorbaBundleName("bundle");
    EXPECT_EQ("bundle", config().GetCorbaBundleName());
}

TEST_F(AgentConfig, InitBringsUpTheOrb) {
    const ScopedEnv root("QV_ENV_ROOT", m_dir.str());
    ASSERT_TRUE(config().Init("agent-bundle"));
    EXPECT_EQ("agent-bundle", config().GetCorbaBundleName());
    EXPECT_FALSE(CORBA::is_nil(CORBA::ORB_var(config().GetOrb()).in()));
    PortableServer::POA_var poa = config().GetRootPoa();
    ASSERT_FALSE(CORBA::is_nil(poa.in()));
    PortableServer::POAManager_var manager = poa->the_POAManager();
    EXPECT_EQ(PortableServer::POAManager::HOLDING, manager->get_state());

    std::string params = "ORB init params:";
    for (int i = 0; i < config().GetArgc(); ++i) {
        params += std::string(config().GetArgv()[i]) + " ";
    }
    EXPECT_GT(config().GetArgc(), 0);
    EXPECT_NE(std::string::npos, params.find("ORB init params:-ORBId ORB-"));
    const std::unique_ptr<LogEntry> logged = m_log->Find(kSys, "ORB init params:");
    ASSERT_NE(nullptr, logged);
    EXPECT_EQ(params, logged->text);
    EXPECT_EQ(-1, logged->level);
    EXPECT_EQ("corbabaseagentconfig", logged->file);
}

TEST_F(AgentConfig, InitSetsUpTheAccessList) {
    std::filesystem::create_directories(m_dir.path() / "root");
    std::filesystem::create_directories(m_dir.path() / "etc/oss_cfg/nbi/corba/conf/agent-bundle");
    const ScopedEnv root("QV_ENV_ROOT", m_dir.File("root"));
    const FailingSplit split;  // an Init that gets no further has set it up all the same
    EXPECT_FALSE(config().Init("agent-bundle"));
    std::map<unsigned int, bool> table;
    EXPECT_TRUE(Probe::IPAcl().RefreshNodeIpAclList({"line"}, {}, table));
    EXPECT_EQ("# this is a get_distribute acl config file.\nline\n",
              ReadFile(m_dir.File("etc/oss_cfg/nbi/corba/conf/agent-bundle/corba_oss_ipacl.cfg")));
}

TEST_F(AgentConfig, OssAddressesAreReadEveryThirtySeconds) {
    AclClock clock;
    const ScopedEnv root("QV_ENV_ROOT", m_dir.str());
    const FailingSplit split;
    config().Init("agent-bundle");
    m_items.SetIPAddresses({"10.0.0.1"});
    EXPECT_TRUE(config().IsValidOssIP(0x0A000001));
    EXPECT_FALSE(config().IsValidOssIP(0x0A000002));
    EXPECT_TRUE(config().IsValidOssIP(0x7F000001));
    m_items.SetIPAddresses({"10.0.0.2"});
    clock.Advance(30);
    EXPECT_FALSE(config().IsValidOssIP(0x0A000002));
    clock.Advance(1);
    EXPECT_TRUE(config().IsValidOssIP(0x0A000002));
    EXPECT_FALSE(config().IsValidOssIP(0x0A000001));
}

TEST_F(AgentConfig, WithoutOssAddressesEveryOssIsValid) {
    EXPECT_TRUE(config().IsValidOssIP(0x0A000001));
}

TEST_F(AgentConfig, OrbReferencesAreCounted) {
    CORBA::ORB_var made = MakeOrb();
    {
        CORBA::ORB_var taken = config().GetOrb();
        EXPECT_EQ(made.in(), taken.in());
    }
    config().SetOrb(made.in());  // the same again must not lose it
    made = CORBA::ORB::_nil();
    CORBA::ORB_var taken = config().GetOrb();
    CORBA::Object_var poa = taken->resolve_initial_references("RootPOA");
    EXPECT_FALSE(CORBA::is_nil(poa.in()));
}

TEST_F(AgentConfig, OrbIsMadeOfTheArgumentsThatWereLogged) {
    const ScopedEnv root("QV_ENV_ROOT", m_dir.str());
    m_items.Set("CORBAAgent_Option", "-ns /n.ior -keep -nt /t.ior -out /o.ior");
    std::string seen;
    bool idGiven = true;
    FakeOrb* fake = new FakeOrb;
    const ReplacedOrbInit replaced([&](int& argc, char** argv, const char* id) {
        EXPECT_TRUE(m_log->Contains(kSys, "ORB init params:-ORBId")) << "logged ahead of the call";
        seen = "ORB init params:";
        for (int i = 0; i < argc; ++i) {
            seen += std::string(argv[i]) + " ";
        }
        EXPECT_EQ(nullptr, argv[argc]);
        idGiven = id != nullptr;
        argc = 0;
        argv[0] = nullptr;
        return fake;
    });
    EXPECT_FALSE(config().Init("bundle")) << "this ORB has no root POA";
    EXPECT_FALSE(idGiven);
    EXPECT_EQ(1, CountLog(kSys, seen));
    ExpectLog(kSys, -1, "corbabaseagentconfig", seen, "TaTrace(\"%s\", text.c_str())");
    EXPECT_NE(std::string::npos, seen.find(" -keep "));
    for (const char* kept : {"-ns", "-nt", "-out", "/n.ior", "/t.ior", "/o.ior"}) {
        EXPECT_EQ(std::string::npos, seen.find(kept)) << kept;
    }
    EXPECT_GT(config().GetArgc(), 0);
    EXPECT_STREQ("-ORBId", config().GetArgv()[0]) << "what the ORB takes out stays the singleton's";
    EXPECT_EQ(fake, CORBA::ORB_var(config().GetOrb()).in());
    EXPECT_EQ(1u, m_log->Entries(kSys).size()) << "a missing root POA isn't reported";
}

TEST_F(AgentConfig, MissingOrbEndsInit) {
    const ScopedEnv root("QV_ENV_ROOT", m_dir.str());
    const ReplacedOrbInit replaced([](int&, char**, const char*) { return CORBA::ORB::_nil(); });
    EXPECT_FALSE(config().Init("bundle"));
    ExpectLog(kSys, -1, "corbabaseagentconfig", "[CorbaBaseAgentConfig::Init]: m_ORB is null\n");
}

TEST_F(AgentConfig, OtherExceptionsPassThroughInit) {
    const ScopedEnv root("QV_ENV_ROOT", m_dir.str());
    const ReplacedOrbInit replaced(
        [](int&, char**, const char*) -> CORBA::ORB_ptr { throw std::bad_alloc(); });
    EXPECT_THROW(config().Init("bundle"), std::bad_alloc);
}

TEST_F(AgentConfig, InterceptorStandsNextToOthers) {
    const ScopedEnv root("QV_ENV_ROOT", m_dir.str());
    PortableInterceptor::ORBInitializer_var other = new BystanderInitializer("Other");
    PortableInterceptor::register_orb_initializer(other.in());
    EXPECT_TRUE(config().Init("bundle"));
}

TEST_F(AgentConfig, InterceptorHasItsName) {
    // A second interceptor of one name is refused, which tells the name.
    const ScopedEnv root("QV_ENV_ROOT", m_dir.str());
    PortableInterceptor::ORBInitializer_var other = new BystanderInitializer("ZorVexCorbaAgent");
    PortableInterceptor::register_orb_initializer(other.in());
    EXPECT_FALSE(config().Init("bundle"));
    ExpectLog(kSys, -1, "corbabaseagentconfig", "Exception received during orb initializing!\n");
}

TEST_F(AgentConfig, UnsplittableCommandEndsInit) {
    const ScopedEnv root("QV_ENV_ROOT", m_dir.str());
    const FailingSplit failing;
    EXPECT_FALSE(config().Init("bundle"));
    EXPECT_EQ("bundle", config().GetCorbaBundleName());
    EXPECT_TRUE(CORBA::is_nil(CORBA::ORB_var(config().GetOrb()).in()));
    ExpectLog(kSys, -1, "corbabaseagentconfig", "CorbaBaseAgentConfig::CorbaBaseAgentReConfig] failed !\n");
}

TEST_F(AgentConfig, OrbThatRaisesEndsInit) {
    const ScopedEnv root("QV_ENV_ROOT", m_dir.str());
    m_items.Set("CORBAAgent_Option", "-ORBNoSuchOption x");
    EXPECT_FALSE(config().Init("bundle"));
    EXPECT_TRUE(CORBA::is_nil(PortableServer::POA_var(config().GetRootPoa()).in()));
    ExpectLog(kSys, -1, "corbabaseagentconfig", "Exception received during orb initializing!\n");
}

}  // namespace
}  // namespace qv_test
