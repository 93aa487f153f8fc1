// What the service manager hears of the naming service.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <fstream>

#include "tests/integration/naming_service/naming_run.h"
#include "tests/support/notify_socket.h"

namespace qv_test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class NamingReadiness : public testing::Test {
  protected:
    void SetUp() override { run.Options().env["NOTIFY_SOCKET"] = manager.Path(); }

    NamingRun run;
    const NotifySocket manager{run.Dir().File("notify")};
};

TEST_F(NamingReadiness, IsReportedOnceTheServiceAnswers) {
    run.Start();
    const std::optional<std::string> ready = manager.Take();
    ASSERT_TRUE(ready) << run.Service().Err();
    // No second try: from that moment on it answers, and its reference is there.
    const RunResult list = run.Client({"list"});
    EXPECT_EQ(list.code, 0) << list.err;
    EXPECT_THAT(ReadFile(run.IorFile()), StartsWith("IOR:"));
    EXPECT_THAT(*ready, StartsWith("READY=1\nSTATUS=serving corbaloc:iiop:127.0.0.1:"));
}

TEST_F(NamingReadiness, EndIsReportedToo) {
    run.Start();
    ASSERT_TRUE(manager.Take()) << run.Service().Err();
    run.Service().Signal(SIGTERM);
    EXPECT_EQ(manager.Take(), "STOPPING=1");
    EXPECT_EQ(run.Service().Wait(), 0);
}

TEST_F(NamingReadiness, IsNeverReportedByAStartThatFails) {
    ASSERT_TRUE(std::filesystem::create_directories(run.DataDir()));
    std::ofstream(run.BindingFile()) << "no bindings\n";
    run.Start();
    EXPECT_EQ(run.Service().Wait(), 1);
    EXPECT_THAT(run.Service().Err(), HasSubstr("damaged"));
    EXPECT_EQ(manager.Take(0), std::nullopt);
}

}  // namespace
}  // namespace qv_test
