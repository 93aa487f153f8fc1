// What stands in the way of the naming service, and how it says so.
#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "naming_run.h"
#include "tests/support/wait_for.h"

namespace qv_test {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

void ExpectRefusal(ChildProcess& service, int code, const std::string& text) {
    EXPECT_EQ(service.Wait(), code);
    const std::string said = service.Err();
    EXPECT_THAT(said, HasSubstr(text));
    EXPECT_EQ(said.find('\n'), said.size() - 1) << "one sentence on one line: " << said;
    EXPECT_EQ(service.Out(), "");
}

class Listener {
  public:
    explicit Listener(int port) : m_fd(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        m_ok = bind(m_fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 && listen(m_fd, 5) == 0;
    }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;
    ~Listener() { close(m_fd); }
    bool Ok() const { return m_ok; }

  private:
    int m_fd;
    bool m_ok;
};

TEST(NamingServiceFaults, PortInUse) {
    NamingRun run;
    const Listener other(run.Port());
    ASSERT_TRUE(other.Ok());
    ExpectRefusal(run.Start(), 1, "127.0.0.1:" + std::to_string(run.Port()) + " is in use");
    EXPECT_FALSE(std::filesystem::exists(run.IorFile()));
}

TEST(NamingServiceFaults, SecondServiceOnTheSameData) {
    NamingRun run;
    ASSERT_TRUE(run.StartAndWait());
    ChildProcess second({QV_NAMING_SERVICE, "-ORBEndpoint", "iiop://127.0.0.1:" + std::to_string(run.Port()),
                         "-o", "../ns.ior"},
                        run.Options());
    ExpectRefusal(second, 1, "already runs (process " + std::to_string(run.Service().pid()) + ")");
    EXPECT_EQ(run.Client({"list"}).code, 0) << "the first goes on";
}

TEST(NamingServiceFaults, DataDirectoryThatCannotBeMade) {
    NamingRun run;
    const std::string file = run.Dir().Write("plain_file", "text");
    ExpectRefusal(run.Start({"-u", file + "/data"}), 1, "Making the data directory " + file + "/data failed");
}

TEST(NamingServiceFaults, DataDirectoryThatCannotBeWritten) {
    if (geteuid() == 0 && !std::filesystem::exists("/proc/self/fdinfo")) {
        GTEST_SKIP() << "no directory that refuses root";
    }
    NamingRun run;
    ExpectRefusal(run.Start({"-u", "/proc/self/fdinfo"}), 1, "Opening /proc/");
}

TEST(NamingServiceFaults, ReferenceFileThatCannotBeWritten) {
    NamingRun run;
    ExpectRefusal(run.Start({"-o", "../missing/ns.ior"}), 1,
                  "for the reference of the naming service cannot be written");
    ExpectRefusal(run.Start({"-o", ".."}), 1, "Is a directory");
}

TEST(NamingServiceFaults, UnknownHost) {
    NamingRun run("no-such-host.invalid");
    ExpectRefusal(run.Start(), 1, "The host \"no-such-host.invalid\" is not known to this machine");
}

TEST(NamingServiceFaults, HostOfAnotherMachine) {
    NamingRun run("203.0.113.1");
    ExpectRefusal(run.Start(), 1, "203.0.113.1, which is not an address of this machine");
}

TEST(NamingServiceFaults, NameServerNotInstalled) {
    NamingRun run;
    run.Options().env["QV_OMNINAMES"] = "/no/such/omniNames";
    ExpectRefusal(run.Start(), 1, "\"/no/such/omniNames\", which is not a program");
}

TEST(NamingServiceFaults, NameServerThatEndsAtOnce) {
    NamingRun run;
    const std::string program = run.Dir().Write("fails", "#!/bin/sh\necho 'out of luck'\nexit 9\n");
    chmod(program.c_str(), 0755);
    run.Options().env["QV_OMNINAMES"] = program;
    EXPECT_EQ(run.Start().Wait(), 1);
    EXPECT_THAT(run.Service().Err(), AllOf(HasSubstr("ended before it could serve (exit code 9;"),
                                           HasSubstr("its last message: out of luck")));
    EXPECT_FALSE(std::filesystem::exists(run.IorFile()));
}

class DamagedBindings : public ::testing::Test {
  protected:
    // Three contexts bound, the service stopped.
    void SetUp() override {
        ASSERT_TRUE(m_run.StartAndWait());
        for (const char* name : {"one", "two", "three"}) {
            ASSERT_EQ(m_run.Client({"bind_new_context", name}).code, 0);
        }
        m_run.Service().Signal(SIGTERM);
        ASSERT_EQ(m_run.Service().Wait(), 0);
        m_good = ReadFile(m_run.BindingFile());
    }

    void Replace(const std::string& text) { std::ofstream(m_run.BindingFile(), std::ios::trunc) << text; }

    NamingRun m_run;
    std::string m_good;
};

TEST_F(DamagedBindings, LineOfGarbageIsRefusedAndNothingChanged) {
    const auto second_bind = m_good.find("bind ", m_good.find("bind ") + 1);
    ASSERT_NE(second_bind, std::string::npos);
    const std::string damaged = m_good.substr(0, second_bind) + "g@rbage here\n" + m_good.substr(second_bind);
    Replace(damaged);
    EXPECT_EQ(m_run.Start().Wait(), 1);
    EXPECT_THAT(m_run.Service().Err(), HasSubstr("omninames.dat is damaged at line "));
    EXPECT_EQ(ReadFile(m_run.BindingFile()), damaged);

    const std::string backup = m_run.DataDir() + "/omninames.bak";
    std::ofstream(backup) << m_good;
    EXPECT_EQ(m_run.Start().Wait(), 1);
    EXPECT_THAT(m_run.Service().Err(),
                HasSubstr("Put a good copy in its place, such as " + backup + ", or move"));
    EXPECT_EQ(ReadFile(m_run.BindingFile()), damaged);
    EXPECT_EQ(ReadFile(backup), m_good) << "the name server may have made another before it was ended";
    std::filesystem::remove(backup);
    EXPECT_EQ(m_run.Start().Wait(), 1);
    EXPECT_THAT(m_run.Service().Err(), HasSubstr("Put a good copy in its place, or move it away"));

    Replace(m_good);
    ASSERT_TRUE(m_run.StartAndWait());
    EXPECT_THAT(m_run.Client({"list"}).out, AllOf(HasSubstr("one/"), HasSubstr("two/"), HasSubstr("three/")));
}

TEST_F(DamagedBindings, RandomBytesAreRefusedAndNothingChanged) {
    const std::string damaged("\x00\x7f\xff\n\x80 port \n\x01", 14);
    Replace(damaged + "\n");
    EXPECT_EQ(m_run.Start().Wait(), 1);
    EXPECT_THAT(m_run.Service().Err(), HasSubstr("omninames.dat"));
    EXPECT_EQ(ReadFile(m_run.BindingFile()), damaged + "\n");
}

TEST_F(DamagedBindings, EmptyFileIsRefused) {
    Replace("");
    EXPECT_EQ(m_run.Start().Wait(), 1);
    EXPECT_THAT(m_run.Service().Err(), HasSubstr("omninames.dat is damaged"));
    EXPECT_EQ(ReadFile(m_run.BindingFile()), "");
}

TEST_F(DamagedBindings, RecordCutShortIsLeftOut) {
    const std::string cut = m_good.substr(0, m_good.size() - 40);
    Replace(cut);
    ASSERT_TRUE(m_run.StartAndWait());
    EXPECT_TRUE(m_run.Service().WaitForErr("last record of the binding file was cut short"));
    EXPECT_EQ(ReadFile(m_run.BindingFile() + ".damaged"), cut);
    const std::string listed = m_run.Client({"list"}).out;
    const int found = (listed.find("one/") != std::string::npos) +
                      (listed.find("two/") != std::string::npos) +
                      (listed.find("three/") != std::string::npos);
    EXPECT_EQ(found, 2) << listed;
}

TEST_F(DamagedBindings, InterruptedCheckpointComesBackFromTheBackup) {
    std::filesystem::rename(m_run.BindingFile(), m_run.DataDir() + "/omninames.bak");
    ASSERT_TRUE(m_run.StartAndWait());
    EXPECT_TRUE(m_run.Service().WaitForErr("came back from its backup"));
    EXPECT_THAT(m_run.Client({"list"}).out, AllOf(HasSubstr("one/"), HasSubstr("two/"), HasSubstr("three/")));
}

TEST(NamingServiceFaults, RandomBytesOnThePortHarmNobody) {
    NamingRun run;
    ASSERT_TRUE(run.StartAndWait());
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(run.Port()));
    const std::string garbage = "GIOP\x01\x02" + std::string(300, '\xfe');
    for (int i = 0; i < 20; ++i) {
        const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        ASSERT_EQ(connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        send(fd, garbage.data() + i, garbage.size() - static_cast<std::size_t>(i), MSG_NOSIGNAL);
        close(fd);
    }
    EXPECT_EQ(run.Client({"list"}).code, 0);
    EXPECT_TRUE(IsAlive(run.ServerPid()));
}

}  // namespace
}  // namespace qv_test
