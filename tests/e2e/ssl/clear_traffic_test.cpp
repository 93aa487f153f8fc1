// What a listener on the loopback sees of a whole run: login, events to an OSS, and calls to its session.
#include <gmock/gmock.h>

#include <optional>

#include "tests/e2e/ssl/listening_ports.h"
#include "tests/e2e/ssl/loopback_capture.h"
#include "tests/e2e/ssl/ssl_run.h"
#include "tests/support/wait_for.h"

namespace qv_e2e {
namespace {

class ClearTraffic : public testing::Test {
  protected:
    void SetUp() override {
        if (!LoopbackCapture::Allowed()) {
            GTEST_SKIP() << "capturing takes the right CAP_NET_RAW, as root has it";
        }
        capture.emplace(Deployment::kPassword);
    }

    /// An OSS logs in and reads, another one gets events, is told of their loss, and of its end.
    void Pass(EventRun& run) {
        run.StartAll();
        const auto session = run.Deployment::Oss({"session"});
        ASSERT_EQ(session.code, 0) << session.err;
        const auto oss = run.Listen({"--types", kAllButHeartbeats});
        oss_ports = ListeningPorts(oss->pid());
        oss_before = capture->Seen(oss_ports);
        run.Raise(20, 100);
        ASSERT_TRUE(qv_test::WaitFor([&] { return ShownIds(*oss).size() >= 20; }))
            << oss->Out() << oss->Err();
        run.KillNotify();
        run.Raise(5, 100);
        ASSERT_TRUE(oss->WaitForOut("-- the EMS can't send events since ")) << oss->Out();
        run.StartNotify();
        ASSERT_TRUE(oss->WaitForOut("-- the EMS sends events again since ")) << oss->Out();
        servers = ListeningPorts(run.agent().pid());
        servers.insert({run.naming_port(), run.notify_port()});
        servers.insert({run.naming_ssl_port(), run.notify_ssl_port()});
    }

    std::optional<LoopbackCapture> capture;
    std::set<int> servers;
    std::set<int> oss_ports;
    PortTraffic oss_before;  // others may have had these ports for a moment, before the OSS got them
};

TEST_F(ClearTraffic, WithSslNothingGoesInClear) {
    SslRun run;
    ASSERT_NO_FATAL_FAILURE(Pass(run));
    EXPECT_EQ(capture->Missed(), 0U);
    for (const int port : {run.naming_ssl_port(), run.notify_ssl_port(), run.agent_ssl_port()}) {
        EXPECT_GT(capture->Seen({port}).tls_records, 0U) << port;
    }
    for (const int port : {run.naming_port(), run.notify_port(), run.agent_port()}) {
        EXPECT_EQ(capture->Seen({port}).segments, 0U) << port;
    }
    const PortTraffic to_servers = capture->Seen(servers);
    EXPECT_GT(to_servers.segments, 100U);
    EXPECT_EQ(to_servers.giop, 0U);
    EXPECT_EQ(to_servers.secrets, 0U);
    const PortTraffic to_oss = capture->Seen(oss_ports);
    EXPECT_GT(to_oss.tls_records, oss_before.tls_records + 20) << "events and calls to the session";
    EXPECT_EQ(to_oss.giop, oss_before.giop);
    EXPECT_FALSE(oss_ports.empty());
    RecordProperty("segments", static_cast<int>(to_servers.segments + to_oss.segments));
}

// The same eyes on the same run without SSL: they do see.
TEST_F(ClearTraffic, WithoutSslAllOfItDoes) {
    EventRun run(true);
    ASSERT_NO_FATAL_FAILURE(Pass(run));
    EXPECT_EQ(capture->Missed(), 0U);
    for (const int port : {run.naming_port(), run.notify_port(), run.agent_port()}) {
        EXPECT_GT(capture->Seen({port}).giop, 0U) << port;
        EXPECT_EQ(capture->Seen({port}).tls_records, 0U) << port;
    }
    EXPECT_GT(capture->Seen(servers).secrets, 0U);
    EXPECT_GT(capture->Seen(oss_ports).giop, oss_before.giop + 20);
}

}  // namespace
}  // namespace qv_e2e
