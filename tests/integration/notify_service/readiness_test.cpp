// What the service manager hears of the notification service.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include "tests/integration/notify_service/channel_run.h"
#include "tests/support/free_port.h"
#include "tests/support/notify_socket.h"

namespace {

using namespace qv_test;
using testing::StartsWith;

class NotifyReadiness : public testing::Test {
  protected:
    ChildOptions Options() const {
        ChildOptions options;
        options.env["NOTIFY_SOCKET"] = manager.Path();
        return options;
    }
    std::vector<std::string> Command() const {
        return {QV_NOTIFY_SERVICE, "-ORBEndpoint", "iiop://127.0.0.1:" + port, "-u", dir.File("data")};
    }

    const TempDir dir;
    const NotifySocket manager{dir.File("notify")};
    const std::string port = std::to_string(FreePort());
};

TEST_F(NotifyReadiness, IsReportedOnceTheServiceAnswersAndSoIsTheEnd) {
    ChildProcess service(Command(), Options());
    const std::optional<std::string> ready = manager.Take();
    ASSERT_TRUE(ready) << service.Err();
    // No second try: from that moment on it answers.
    const auto factory = FactoryAt("corbaloc:iiop:127.0.0.1:" + port + "/NotifyEventChannelFactory");
    ASSERT_FALSE(CORBA::is_nil(factory.in()));
    EXPECT_FALSE(factory->_non_existent());
    EXPECT_THAT(*ready, StartsWith("READY=1\nSTATUS=serving corbaloc:iiop:127.0.0.1:" + port));
    service.Signal(SIGTERM);
    EXPECT_EQ(manager.Take(), "STOPPING=1");
    EXPECT_EQ(service.Wait(), 0);
}

TEST_F(NotifyReadiness, IsNeverReportedByAStartThatFails) {
    dir.Write("data", "no directory");
    ChildProcess service(Command(), Options());
    EXPECT_EQ(service.Wait(), 1);
    EXPECT_EQ(manager.Take(0), std::nullopt);
}

}  // namespace
