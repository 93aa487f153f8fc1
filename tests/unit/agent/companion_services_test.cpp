#include <sys/wait.h>

#include <chrono>
#include <filesystem>

#include "agent/agentserver.h"
#include "tests/support/wait_for.h"
#include "tests/unit/agent/agent_fixture.h"
#include "tests/unit/agent/fake_orb.h"
#include "tests/unit/agent/interposed.h"

namespace qv_test {
namespace {

std::vector<time_t> g_slept;

/// An installation whose two services are scripts that note how they were started and then wait to be ended.
class Companions : public AgentTest {
  protected:
    Companions() : m_root("QV_ENV_ROOT", m_dir.File("root")), m_sleep(Probe::GracePeriod()) {
        std::filesystem::create_directories(m_dir.path() / "root");
        AddService("Naming_Service");
        AddService("Notify_Service");
        g_slept.clear();
        Probe::SetGracePeriod([](time_t seconds) { g_slept.push_back(seconds); });
        Probe::NamingServiceCmd() = "Naming_Service -a one";
        Probe::NotifyServiceCmd() = "Notify_Service -b two";
    }

    ~Companions() override {
        for (const auto& [name, pid] : Probe::ServicePids()) {
            ::kill(pid, SIGKILL);
            ::waitpid(pid, nullptr, 0);
        }
        Probe::ServicePids().clear();
        Probe::SetGracePeriod(m_sleep);
    }

    std::string BinFile(const std::string& name) { return m_dir.File("cbb/nbi/nbicbb_3p/share/bin/" + name); }

    void AddService(const std::string& name) {
        const std::string file = m_dir.Write("cbb/nbi/nbicbb_3p/share/bin/" + name,
                                             "#!/bin/sh\n"
                                             "echo \"$0 $*\" > \"$0.tmp\"\npwd >> \"$0.tmp\"\n"
                                             "mv \"$0.tmp\" \"$0.started\"\nexec sleep 600\n");
        std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    }

    /// What a service noted when it started: its command line and its working directory.
    std::string Started(const std::string& name) {
        std::string text;
        EXPECT_TRUE(WaitFor([&] { return !(text = ReadFile(BinFile(name + ".started"))).empty(); })) << name;
        return text;
    }

    std::string Bin() { return m_dir.File("root") + "/../cbb/nbi/nbicbb_3p/share/bin"; }

    /// The signal that ended a service of the map; waits for it.
    int EndingSignal(const std::string& service) {
        int status = 0;
        const pid_t pid = Probe::ServicePids()[service];
        EXPECT_TRUE(WaitFor([&] { return ::waitpid(pid, &status, WNOHANG) == pid; })) << service;
        return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    }

    bool Alive(const std::string& service) {
        return ::waitpid(Probe::ServicePids()[service], nullptr, WNOHANG) == 0;
    }

    /// Starts the naming service and then has Init fail at the ORB that `init` makes.
    void ExpectServiceKeptWith(ReplacedOrbInit::Function init) {
        m_items.Set("NamingService_AutoStart", "1");
        const ReplacedOrbInit replaced(std::move(init));
        EXPECT_FALSE(config().Init("bundle"));
        EXPECT_TRUE(Alive("NamingService"));
        EXPECT_FALSE(m_log->Contains(kSys, "exiting... "));
    }

    std::vector<std::string> SysTexts() {
        std::vector<std::string> texts;
        for (const LogEntry& entry : m_log->Entries(kSys)) {
            texts.push_back(entry.text);
        }
        return texts;
    }

    ScopedEnv m_root;
    void (*m_sleep)(time_t);
};

TEST_F(Companions, NothingConfiguredStartsNothingButNeedsTheRoot) {
    EXPECT_TRUE(config().AutoStartService());
    EXPECT_TRUE(Probe::ServicePids().empty());
    EXPECT_TRUE(g_slept.empty());
    EXPECT_TRUE(m_log->Entries(kSys).empty());
    const ScopedEnv none("QV_ENV_ROOT", std::nullopt);
    EXPECT_FALSE(config().AutoStartService());
}

TEST_F(Companions, MissingRootIsPrintedAndEndsInit) {
    const ScopedEnv none("QV_ENV_ROOT", std::nullopt);
    m_items.Set("NamingService_AutoStart", "1");
    ::testing::internal::CaptureStdout();
    EXPECT_FALSE(config().Init("bundle"));
    EXPECT_EQ("Can not find the Environment variant.", ::testing::internal::GetCapturedStdout());
    EXPECT_TRUE(CORBA::is_nil(CORBA::ORB_var(config().GetOrb()).in()));
    EXPECT_FALSE(m_log->Contains(kSys, "ORB init params:"));
    EXPECT_TRUE(Probe::ServicePids().empty());
}

TEST_F(Companions, BothAreStartedNamingFirst) {
    Probe::NamingServiceAutoStart() = true;
    Probe::NotifyServiceAutoStart() = true;
    EXPECT_TRUE(config().AutoStartService());
    EXPECT_EQ((std::vector<time_t>{1, 2}), g_slept);
    EXPECT_EQ((std::vector<std::string>{"Corba Service[NamingService] auto starting...\n",
                                        "Corba Service[NamingService] has started!\n",
                                        "Corba Service[NotifyService] auto starting...\n",
                                        "Corba Service[NotifyService] has started!\n"}),
              SysTexts());
    ExpectLog(kSys, -1, "companion_services", "Corba Service[NamingService] auto starting...\n",
              "companion.starting");
    ExpectLog(kSys, -1, "companion_services", "Corba Service[NotifyService] has started!\n",
              "companion.started");
    EXPECT_TRUE(Alive("NamingService"));
    EXPECT_TRUE(Alive("NotifyService"));
    const std::string directory = std::filesystem::canonical(Bin()).string();
    EXPECT_EQ(Bin() + "/Naming_Service -a one\n" + directory + "\n", Started("Naming_Service"));
    EXPECT_EQ(Bin() + "/Notify_Service -b two\n" + directory + "\n", Started("Notify_Service"));
}

TEST_F(Companions, OneAloneIsStarted) {
    Probe::NotifyServiceAutoStart() = true;
    EXPECT_TRUE(config().AutoStartService());
    EXPECT_EQ(std::vector<time_t>{2}, g_slept);
    EXPECT_EQ(1u, Probe::ServicePids().size());
    EXPECT_TRUE(Alive("NotifyService"));
}

TEST_F(Companions, GracePeriodIsRealTime) {
    const auto start = std::chrono::steady_clock::now();
    m_sleep(1);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
}

TEST_F(Companions, ExitingEndsBothInOrderAndKeepsTheIds) {
    Probe::NamingServiceAutoStart() = true;
    Probe::NotifyServiceAutoStart() = true;
    ASSERT_TRUE(config().AutoStartService());
    m_log->Clear();
    config().AutoExitService();
    EXPECT_EQ((std::vector<std::string>{
                  "Corba Service[NamingService] exiting... ", "Corba Service[NamingService] has exited! ",
                  "Corba Service[NotifyService] exiting... ", "Corba Service[NotifyService] has exited! "}),
              SysTexts());
    ExpectLog(kSys, -1, "companion_services", "Corba Service[NamingService] exiting... ", "exiting... ");
    ExpectLog(kSys, -1, "companion_services", "Corba Service[NamingService] has exited! ", "has exited! ");
    EXPECT_EQ(SIGKILL, EndingSignal("NamingService"));
    EXPECT_EQ(SIGKILL, EndingSignal("NotifyService"));
    EXPECT_EQ(2u, Probe::ServicePids().size());
    config().AutoExitService();
    EXPECT_EQ(8u, m_log->Entries(kSys).size()) << "a second call goes through the same ids again";
    Probe::ServicePids().clear();  // both were waited for
}

TEST_F(Companions, ExitingWithNothingStartedReturnsAtOnce) {
    config().AutoExitService();
    config().DestroyService();
    EXPECT_TRUE(m_log->Entries(kSys).empty());
}

TEST_F(Companions, DestroyingTheServerEndsTheServices) {
    Probe::NamingServiceAutoStart() = true;
    ASSERT_TRUE(config().AutoStartService());
    NS_CORBA::AgentServer::Destroy();
    EXPECT_EQ(SIGKILL, EndingSignal("NamingService"));
    Probe::ServicePids().clear();
}

TEST_F(Companions, NotifyServiceThatCannotBeSpawnedTakesTheNamingServiceWithIt) {
    m_items.Set("NamingService_AutoStart", "1");
    m_items.Set("NotifyService_AutoStart", "1");
    const FailingFork failing(2);
    EXPECT_FALSE(config().Init("bundle"));
    EXPECT_EQ(std::vector<time_t>{1}, g_slept);
    EXPECT_EQ(1u, Probe::ServicePids().count("NamingService"));
    EXPECT_EQ(0u, Probe::ServicePids().count("NotifyService"));
    EXPECT_EQ("Corba Service[NamingService] has exited! ", SysTexts().back());
    EXPECT_TRUE(CORBA::is_nil(CORBA::ORB_var(config().GetOrb()).in()));
    EXPECT_EQ(SIGKILL, EndingSignal("NamingService"));
    Probe::ServicePids().clear();
}

TEST_F(Companions, ServicesAreKeptWhenThereIsNoOrb) {
    ExpectServiceKeptWith([](int&, char**, const char*) { return CORBA::ORB::_nil(); });
}

TEST_F(Companions, ServicesAreKeptWhenTheOrbRaises) {
    ExpectServiceKeptWith([](int&, char**, const char*) -> CORBA::ORB_ptr { throw CORBA::INITIALIZE(); });
}

TEST_F(Companions, ServicesAreKeptWhenTheOrbHasNoRootPoa) {
    ExpectServiceKeptWith([](int&, char**, const char*) { return new FakeOrb; });
}

TEST_F(Companions, NamingServiceThatCannotBeSpawnedLeavesTheOtherAlone) {
    Probe::NamingServiceAutoStart() = true;
    Probe::NotifyServiceAutoStart() = true;
    const FailingFork failing;
    EXPECT_FALSE(config().AutoStartService());
    EXPECT_TRUE(Probe::ServicePids().empty());
    EXPECT_EQ(std::vector<std::string>{"Corba Service[NamingService] auto starting...\n"}, SysTexts());
}

TEST_F(Companions, ServiceThatDiesAtItsStartGoesUnnoticed) {
    Probe::NamingServiceAutoStart() = true;
    Probe::NamingServiceCmd() = "No_Such_Service";
    EXPECT_TRUE(config().AutoStartService());
    EXPECT_EQ("Corba Service[NamingService] has started!\n", SysTexts().back());
}

TEST_F(Companions, CommandTextIsAFormat) {
    AddService("Naming%Service");
    Probe::NamingServiceAutoStart() = true;
    Probe::NamingServiceCmd() = "Naming%%Service 100%% [%s]";
    EXPECT_TRUE(config().AutoStartService());
    EXPECT_EQ(Bin() + "/Naming%Service 100% []",
              Started("Naming%Service").substr(0, Started("Naming%Service").find('\n')));
}

TEST_F(Companions, CommandThatAsksForMoreThanItIsGivenStartsNothing) {
    Probe::NamingServiceAutoStart() = true;
    for (const char* const arguments :
         {"%s%s%s%s%s%s%s%s%s", "%*s%*s%*s%*s%s", "%Lf%Lf%Lf", "%9$s", "%n", "%d%d%d%d%d%d%d%d 100%"}) {
        Probe::NamingServiceCmd() = "Naming_Service [" + std::string(arguments);
        EXPECT_FALSE(config().AutoStartService()) << arguments;
        EXPECT_EQ("Corba Service[NamingService] auto starting...\n", SysTexts().back());
    }
    EXPECT_TRUE(Probe::ServicePids().empty());
    EXPECT_TRUE(g_slept.empty());
}

TEST_F(Companions, CommandMayHaveEightDirectives) {
    Probe::NamingServiceAutoStart() = true;
    Probe::NamingServiceCmd() = "Naming_Service [%s%%%s%s%%%%%s%s%s%s%s]";
    EXPECT_TRUE(config().AutoStartService());
    const std::string started = Started("Naming_Service");
    EXPECT_EQ(Bin() + "/Naming_Service [%%%]", started.substr(0, started.find('\n')));
}

TEST_F(Companions, CommandThatIsTooLongIsCut) {
    Probe::NamingServiceAutoStart() = true;
    Probe::NamingServiceCmd() = "Naming_Service " + std::string(3000, 'x');
    EXPECT_TRUE(config().AutoStartService());
    const std::string started = Started("Naming_Service");
    const std::string line = started.substr(0, started.find('\n'));
    const std::string whole = Bin() + "/" + Probe::NamingServiceCmd();
    EXPECT_EQ(whole.substr(0, 1023), line);
}

TEST_F(Companions, CommandMayHaveMoreThanAHundredArguments) {
    Probe::NamingServiceAutoStart() = true;
    Probe::NamingServiceCmd() = "Naming_Service";
    for (int i = 1; i <= 120; ++i) {
        Probe::NamingServiceCmd() += " " + std::to_string(i);
    }
    EXPECT_TRUE(config().AutoStartService());
    const std::string started = Started("Naming_Service");
    EXPECT_EQ(Bin() + "/" + Probe::NamingServiceCmd(), started.substr(0, started.find('\n')));
}

TEST_F(Companions, NamingUpdateKeepsPortsAndClearsTexts) {
    config().GetOption();
    const std::string cmd = Probe::NamingServiceCmd();
    EXPECT_TRUE(config().UpdateNamingServiceParams());
    EXPECT_EQ(12001, Probe::NamingServicePort());
    EXPECT_EQ(22001, Probe::NamingServiceSSLPort());
    EXPECT_EQ("", Probe::NamingServiceName());
    EXPECT_EQ("", Probe::NamingServiceHost());
    EXPECT_EQ("", Probe::NamingServiceOption());

    m_items.Set("NamingService_Name", "ns");
    m_items.Set("NamingService_Host", "localhost");
    m_items.Set("NamingService_Option", "-x");
    m_items.Set("NamingService_Port", "70001");
    m_items.Set("NamingService_SSLPort", "5002");
    EXPECT_TRUE(config().UpdateNamingServiceParams());
    EXPECT_EQ("ns", Probe::NamingServiceName());
    EXPECT_EQ("localhost", Probe::NamingServiceHost()) << "the node name isn't put in again";
    EXPECT_EQ("-x", Probe::NamingServiceOption());
    EXPECT_EQ(4465, Probe::NamingServicePort());
    EXPECT_EQ(5002, Probe::NamingServiceSSLPort());
    EXPECT_EQ(cmd, Probe::NamingServiceCmd());

    m_items.Set("NamingService_Port", "0");
    m_items.Set("NamingService_SSLPort", "65536");
    EXPECT_TRUE(config().UpdateNamingServiceParams());
    EXPECT_EQ(4465, Probe::NamingServicePort());
    EXPECT_EQ(0, Probe::NamingServiceSSLPort()) << "not 0, but its low 16 bits are";

    std::string host;
    int port = 0;
    EXPECT_TRUE(config().GetNamingServiceAddr(host, port, false));
    EXPECT_EQ("localhost:4465", host + ":" + std::to_string(port));
    Probe::NamingServiceSSLPort() = 7;
    EXPECT_TRUE(config().GetNamingServiceAddr(host, port, true));
    EXPECT_EQ(7, port);
}

TEST_F(Companions, NotifyUpdateTakesWhatIsThereEvenNothing) {
    const ScopedEnv directory("QV_CFG_DIR", m_dir.str());
    EXPECT_TRUE(config().UpdateNotifyServiceParams("looked at by nobody"));
    EXPECT_EQ(0, Probe::NotifyServicePort());
    EXPECT_EQ(0, Probe::NotifyServiceSSLPort());
    EXPECT_EQ("", Probe::NotifyServiceName() + Probe::NotifyServiceHost() + Probe::NotifyServiceOption());

    m_items.Set("NotifyService_Name", "nt");
    m_items.Set("NotifyService_Host", "127.0.0.1");
    m_items.Set("NotifyService_Option", "-y");
    m_items.Set("NotifyService_Port", "5003");
    m_items.Set("NotifyService_SSLPort", "5004");
    EXPECT_TRUE(config().UpdateNotifyServiceParams(nullptr));
    EXPECT_EQ("nt", Probe::NotifyServiceName());
    EXPECT_EQ("-y", Probe::NotifyServiceOption());
    std::string host;
    int port = 0;
    EXPECT_TRUE(config().GetNotifyServiceAddr(host, port, false));
    EXPECT_EQ("127.0.0.1:5003", host + ":" + std::to_string(port));
    EXPECT_TRUE(config().GetNotifyServiceAddr(host, port, true));
    EXPECT_EQ(5004, port);
}

TEST_F(Companions, NotifyUpdateNeedsTheConfigurationDirectory) {
    const ScopedEnv none("QV_CFG_DIR", std::nullopt);
    Probe::NotifyServicePort() = 77;
    ::testing::internal::CaptureStdout();
    EXPECT_FALSE(config().UpdateNotifyServiceParams("NotifyService"));
    EXPECT_EQ("Can not find the Environment variant.\n", ::testing::internal::GetCapturedStdout());
    EXPECT_EQ(77, Probe::NotifyServicePort());
}

}  // namespace
}  // namespace qv_test
