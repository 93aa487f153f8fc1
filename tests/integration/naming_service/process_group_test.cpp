// Front and name server live and die together.
#include <ace/Process_Manager.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include "naming_run.h"
#include "tests/support/wait_for.h"

namespace qv_test {
namespace {

using ::testing::HasSubstr;

class NamingServiceSignals : public ::testing::TestWithParam<int> {};

TEST_P(NamingServiceSignals, EndsBothProcessesWithCodeZero) {
    NamingRun run;
    ASSERT_TRUE(run.StartAndWait());
    const pid_t server = run.ServerPid();
    ASSERT_GT(server, 0);
    run.Service().Signal(GetParam());
    EXPECT_EQ(run.Service().Wait(), 0);
    EXPECT_FALSE(IsAlive(server));
    EXPECT_TRUE(PortIsFree(run.Port()));
}

INSTANTIATE_TEST_SUITE_P(Told, NamingServiceSignals, ::testing::Values(SIGTERM, SIGINT, SIGHUP));

TEST(NamingServiceProcesses, KilledFrontTakesTheServerWithIt) {
    NamingRun run;
    ASSERT_TRUE(run.StartAndWait());
    const pid_t server = run.ServerPid();
    ASSERT_TRUE(IsAlive(server));
    run.Service().Kill();
    EXPECT_TRUE(WaitFor([&] { return !IsAlive(server); }));
    EXPECT_TRUE(WaitFor([&] { return PortIsFree(run.Port()); }));
}

TEST(NamingServiceProcesses, KilledServerEndsTheFrontWithItsReason) {
    NamingRun run;
    ASSERT_TRUE(run.StartAndWait());
    kill(run.ServerPid(), SIGSEGV);
    EXPECT_EQ(run.Service().Wait(), 128 + SIGSEGV);
    EXPECT_THAT(run.Service().Err(), HasSubstr("ended by itself (signal 11"));
}

TEST(NamingServiceProcesses, StopsAlthoughItsStarterBlockedAllSignals) {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    NamingRun run;
    const bool ready = run.StartAndWait();  // the mask is inherited
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    ASSERT_TRUE(ready);
    const pid_t server = run.ServerPid();
    run.Service().Signal(SIGTERM);
    EXPECT_EQ(run.Service().Wait(std::chrono::seconds(3)), 0)
        << "before the front loses patience with its child";
    EXPECT_FALSE(IsAlive(server));
}

// The way the agent starts and ends its companion: one command text, a working directory, SIGKILL at the end.
TEST(NamingServiceProcesses, ObeysAceProcessManager) {
    NamingRun layout;
    ACE_Process_Manager manager(100);
    ACE_Process_Options options(true, 1024, 16384, 512, 128);
    options.working_directory(layout.Options().working_dir.c_str());
    options.command_line("%s -ORBEndpoint iiop://localhost:%d -o ../ns.ior", QV_NAMING_SERVICE,
                         layout.Port());
    const pid_t pid = manager.spawn(options, nullptr);
    ASSERT_NE(pid, ACE_INVALID_PID);
    EXPECT_TRUE(WaitFor([&] { return !ReadFile(layout.IorFile()).empty(); }, std::chrono::seconds(10)));
    EXPECT_EQ(layout.Client({"list"}).code, 0);
    EXPECT_EQ(manager.terminate(pid), 0);
    manager.wait(pid);
    EXPECT_TRUE(WaitFor([&] { return PortIsFree(layout.Port()); }));
}

}  // namespace
}  // namespace qv_test
