// The program itself: its start, what can be in the way of it, and its end.
#include <arpa/inet.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "tests/integration/notify_service/channel_run.h"
#include "tests/support/free_port.h"

namespace {

using namespace std::chrono_literals;
using namespace qv_test;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class NotifyProgram : public testing::Test {
  protected:
    std::vector<std::string> Command(const std::vector<std::string>& options, int at = 0) {
        std::vector<std::string> command{QV_NOTIFY_SERVICE, "-ORBEndpoint",
                                         "iiop://127.0.0.1:" + std::to_string(at == 0 ? port : at)};
        command.insert(command.end(), options.begin(), options.end());
        return command;
    }
    RunResult RunWith(const std::vector<std::string>& options, int at = 0) {
        return qv_test::Run(Command(options, at));
    }
    /// What a start that fails says; the exit code is that of a failure on this machine.
    std::string Refusal(const std::vector<std::string>& options, int at = 0) {
        const RunResult result = RunWith(options, at);
        EXPECT_EQ(result.code, 1) << result.err;
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
        return result.err;
    }
    const TempDir dir;
    const int port = FreePort();
};

TEST_F(NotifyProgram, HelpsAndRefusesWithTheirExitCodes) {
    const RunResult help = qv_test::Run({QV_NOTIFY_SERVICE, "--help"});
    EXPECT_EQ(help.code, 0);
    EXPECT_THAT(help.out, HasSubstr("usage: Notify_Service"));
    const RunResult version = qv_test::Run({QV_NOTIFY_SERVICE, "--version"});
    EXPECT_EQ(version.code, 0);
    EXPECT_THAT(version.out, testing::MatchesRegex("Notify_Service [0-9]+\\.[0-9]+\\.[0-9]+\n"));
    const RunResult wrong = qv_test::Run({QV_NOTIFY_SERVICE, "--nonsense"});
    EXPECT_EQ(wrong.code, 2);
    EXPECT_THAT(wrong.err, HasSubstr("--nonsense"));
}

TEST_F(NotifyProgram, RefusesOptionsThatTheOrbDoesNotUnderstand) {
    for (const std::vector<std::string>& options :
         {std::vector<std::string>{"-ORBInitRef", "foo"}, std::vector<std::string>{"-ORBbogus", "x"}}) {
        const RunResult result = qv_test::Run({QV_NOTIFY_SERVICE, options[0], options[1]});
        EXPECT_EQ(result.code, 2);
        EXPECT_THAT(result.err, AllOf(HasSubstr(options[0]), HasSubstr("the line before says which")));
    }
}

TEST_F(NotifyProgram, NamesThePortThatTheSystemChose) {
    ChildProcess service({QV_NOTIFY_SERVICE});
    ASSERT_TRUE(service.WaitForOut("/NotifyEventChannelFactory")) << service.Err();
    EXPECT_THAT(service.Out(),
                testing::MatchesRegex("Notify_Service: serving corbaloc:iiop:[^*:]+:[1-9][0-9]*/"
                                      "NotifyEventChannelFactory\n"));
}

TEST_F(NotifyProgram, WritesItsReferenceAndItsProcessId) {
    const std::string ior = dir.File("notify.ior");
    const std::string pid = dir.File("notify.pid");
    NotifyServiceRun service({"-IORoutput", ior, "-p", pid});
    const auto factory = FactoryAt(ReadFile(ior));
    ASSERT_FALSE(CORBA::is_nil(factory.in()));
    EXPECT_TRUE(factory->_is_equivalent(FactoryAt(service.Corbaloc()).in()));
    EXPECT_EQ(ReadFile(pid), std::to_string(service.Process().pid()) + "\n");
    const std::string before = ReadFile(ior);
    service.Kill();
    service.Start();
    EXPECT_EQ(ReadFile(ior), before) << "the reference stays the same";
}

TEST_F(NotifyProgram, SaysWhatItServes) {
    NotifyServiceRun service;
    EXPECT_THAT(service.Process().Out(),
                AllOf(HasSubstr(service.Corbaloc()), HasSubstr("0 channels, 0 consumers and 0 events")));
    const Channel channel(service, true);
    const auto consumer = RecordingConsumer::Connect(channel.consumers.in());
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    consumer->Proxy()->suspend_connection();
    PushFromTo(*supplier, 1, 3);
    service.Kill();
    service.Start();
    EXPECT_THAT(service.Process().Out(), HasSubstr("1 channels, 1 consumers and 3 events"));
}

TEST_F(NotifyProgram, WithoutAPortNothingIsKept) {
    const std::string ior = dir.File("notify.ior");
    ChildProcess service({QV_NOTIFY_SERVICE, "-IORoutput", ior});
    ASSERT_TRUE(service.WaitForOut("serving")) << service.Err();
    EXPECT_THAT(service.Err(), HasSubstr("persistent channels are not offered"));
    const auto factory = FactoryAt(ReadFile(ior));
    EXPECT_THROW(MakeChannel(factory.in(), true), CosNotification::UnsupportedQoS);
    const Channel channel(MakeChannel(factory.in(), false));
    const auto consumer = RecordingConsumer::Connect(channel.consumers.in());
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    PushFromTo(*supplier, 1, 3);
    EXPECT_TRUE(consumer->WaitForCount(3));
    service.Signal(SIGINT);
    EXPECT_EQ(service.Wait(10s), 0);
}

TEST_F(NotifyProgram, EndsAtOnceOnEachOfItsSignals) {
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        NotifyServiceRun service;
        service.Process().Signal(number);
        EXPECT_EQ(service.Process().Wait(10s), 0);
    }
}

TEST_F(NotifyProgram, EndsSoonThoughAConsumerHangs) {
    NotifyServiceRun service;
    const Channel channel(service);
    const Hang hang;
    std::vector<PortableServer::Servant_var<RecordingConsumer>> consumers;
    for (int i = 0; i < 3; ++i) {
        consumers.push_back(RecordingConsumer::Connect(channel.consumers.in(), hang.Hook()));
    }
    const auto other = RecordingConsumer::Connect(channel.consumers.in());
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    PushFromTo(*supplier, 1, 10);
    ASSERT_TRUE(other->WaitForCount(10));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(service.Stop(30s), 0);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 5s);
}

// A listener that never answers stands for a naming service that hangs.
TEST_F(NotifyProgram, EndsSoonThoughTheNamingServiceHangs) {
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ASSERT_GE(listener, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), size), 0);
    ASSERT_EQ(listen(listener, 8), 0);
    ASSERT_EQ(getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size), 0);
    const std::string naming =
        "NameService=corbaloc:iiop:127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/NameService";
    NotifyServiceRun service({"-ORBInitRef", naming});
    const int connection = accept(listener, nullptr, nullptr);  // it waits for an answer from now on
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(service.Stop(30s), 0);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 5s);
    close(connection);
    close(listener);
}

TEST_F(NotifyProgram, DeliversWhatItHasTakenBeforeItEnds) {
    NotifyServiceRun service;
    const Channel channel(service);
    const auto consumer = RecordingConsumer::Connect(channel.consumers.in());
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    PushFromTo(*supplier, 1, 200);
    EXPECT_EQ(service.Stop(), 0);
    EXPECT_EQ(consumer->Numbers(), NumbersFromTo(1, 200));
}

TEST_F(NotifyProgram, TakesNoPortOfSomebodyElse) {
    NotifyServiceRun service;
    EXPECT_THAT(Refusal({"-u", dir.str()}, service.Port()), HasSubstr(std::to_string(service.Port())));
}

TEST_F(NotifyProgram, SharesItsDirectoryWithNobody) {
    NotifyServiceRun service;
    const std::string directory = std::filesystem::path(service.StoreFile()).parent_path();
    EXPECT_THAT(Refusal({"-u", directory}), HasSubstr("another process has it open"));
    const Channel channel(service, true);  // the first one isn't harmed
}

TEST_F(NotifyProgram, SaysWhichDirectoryItCannotUse) {
    const std::string file = dir.Write("file", "text");
    EXPECT_THAT(Refusal({"-u", file + "/data"}), HasSubstr(file));
    EXPECT_THAT(Refusal({"-u", dir.str(), "-IORoutput", file + "/ior"}), HasSubstr(file));
    EXPECT_THAT(Refusal({"-u", dir.str(), "-p", file + "/pid"}), HasSubstr(file));
}

// Not even root may make files there.
TEST_F(NotifyProgram, CannotWriteWhereItMayNot) {
    EXPECT_THAT(Refusal({"-u", "/proc/notify"}), HasSubstr("/proc/notify"));
    EXPECT_THAT(Refusal({"-u", "/proc/self"}), HasSubstr("/proc/self"));
}

// What is in the way shows when the service is up already and calls a consumer, which hangs.
TEST_F(NotifyProgram, EndsAtOnceWhenItCantWriteItsReferenceAfterAll) {
    NotifyServiceRun service;
    const Channel channel(service, true);
    const Hang hang;
    const auto consumer = RecordingConsumer::Connect(channel.consumers.in(), hang.Hook());
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    PushFromTo(*supplier, 1, 1);
    service.Kill();

    const std::string directory = std::filesystem::path(service.StoreFile()).parent_path();
    const std::string ior = dir.File("ior");
    const std::string config = dir.File("orb.conf");  // is read after the first look at the other files
    ASSERT_EQ(mkfifo(config.c_str(), 0600), 0);
    ChildProcess again(
        Command({"-u", directory, "-IORoutput", ior, "-ORBSvcConf", config, "--call-timeout", "600000"},
                service.Port()));
    int fd = -1;
    ASSERT_TRUE(WaitFor([&] { return (fd = open(config.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC)) >= 0; }))
        << again.Err();
    std::filesystem::create_directory(ior);
    close(fd);
    EXPECT_EQ(again.Wait(), 1);
    EXPECT_THAT(again.Err(), AllOf(HasSubstr(ior), HasSubstr("cannot be written")));
    EXPECT_EQ(again.Out(), "");
}

TEST_F(NotifyProgram, LeavesADamagedStoreAlone) {
    NotifyServiceRun service;
    {
        const Channel channel(service, true);
        const auto consumer = RecordingConsumer::Connect(channel.consumers.in());
    }
    EXPECT_EQ(service.Stop(), 0);
    std::filesystem::remove(service.StoreFile() + "-wal");
    {
        std::fstream file(service.StoreFile(), std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(0);
        file << "this is no such file any more";
    }
    const std::string before = ReadFile(service.StoreFile());
    const std::string directory = std::filesystem::path(service.StoreFile()).parent_path();
    EXPECT_THAT(Refusal({"-u", directory}), HasSubstr(service.StoreFile()));
    EXPECT_EQ(ReadFile(service.StoreFile()), before);
}

TEST_F(NotifyProgram, AnEndPointThatIsNotHereIsRefused) {
    const RunResult result = qv_test::Run(
        {QV_NOTIFY_SERVICE, "-ORBEndpoint", "iiop://192.0.2.1:" + std::to_string(port), "-u", dir.str()});
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.err, HasSubstr("192.0.2.1"));
}

TEST_F(NotifyProgram, ChecksASoundSetUp) {
    const RunResult result = RunWith({"--check", "-u", dir.File("data"), "-IORoutput", dir.File("ior")});
    EXPECT_EQ(result.code, 0) << result.out;
    EXPECT_THAT(result.out, AllOf(HasSubstr("ok       end point"), HasSubstr("ok       store"),
                                  HasSubstr("ok       reference file"), Not(HasSubstr("problem"))));
    EXPECT_FALSE(std::filesystem::exists(dir.File("ior"))) << "it only looks";
}

TEST_F(NotifyProgram, ChecksAndNamesEachProblem) {
    NotifyServiceRun service;
    const std::string directory = std::filesystem::path(service.StoreFile()).parent_path();
    const std::string file = dir.Write("file", "");
    const RunResult result =
        RunWith({"--check", "-u", directory, "-IORoutput", file + "/ior", "-ORBInitRef",
                 "NameService=corbaloc:iiop:127.0.0.1:" + std::to_string(FreePort()) + "/NameService"},
                service.Port());
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.out, AllOf(HasSubstr("problem  end point"), HasSubstr("problem  store"),
                                  HasSubstr("problem  reference file"), HasSubstr("problem  naming service"),
                                  HasSubstr("in use"), Not(HasSubstr("ok  "))));
    const RunResult portless = qv_test::Run({QV_NOTIFY_SERVICE, "--check"});
    EXPECT_EQ(portless.code, 1);
    EXPECT_THAT(portless.out, HasSubstr("Give a port"));
}

TEST_F(NotifyProgram, SaysWhichOptionsItDoesNotUse) {
    NotifyServiceRun service({"-Boot", "-Timeout", "5"});
    EXPECT_THAT(service.Process().Err(),
                AllOf(HasSubstr("\"-Boot\" is not used"), HasSubstr("\"-Timeout\"")));
}

}  // namespace
