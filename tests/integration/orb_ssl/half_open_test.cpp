// Peers that connect and do not go through with the handshake.

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "calls.h"
#include "ssl_server.h"
#include "tests/support/child_process.h"
#include "tests/support/wait_for.h"
#include "tls_client.h"

namespace {

using namespace qv_test;

class HalfOpenTest : public SslTest {
  protected:
    static std::size_t OpenFiles() {
        const std::filesystem::directory_iterator files("/proc/self/fd");
        return static_cast<std::size_t>(std::distance(begin(files), end(files)));
    }
    // Calls per second of another process over one connection.
    double Rate() {
        constexpr int kCalls = 30000;
        const auto begin = std::chrono::steady_clock::now();
        const std::string outcome =
            RunPeer(ClientProfile(), {"crowd", server->ior(), "echo", "hello", "1", std::to_string(kCalls)});
        EXPECT_EQ(outcome, "hello x" + std::to_string(kCalls));
        return kCalls / std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    }
};

TEST_F(HalfOpenTest, AreClosedInTimeAndTold) {
    Serve();
    const int fd = ConnectTo(ssl_port);
    char byte;
    EXPECT_EQ(recv(fd, &byte, 1, 0), 0)
        << "closed by the server before the ten seconds of this socket are over";
    close(fd);
    EXPECT_TRUE(Reported("connected and sent nothing in time")) << AllReported();
}

TEST_F(HalfOpenTest, TwoHundredDoNotSlowOthersDown) {
    Serve();
    Rate();
    const double alone = Rate();
    std::vector<int> sockets;
    for (int i = 0; i < 200; ++i) {
        sockets.push_back(ConnectTo(ssl_port));
    }
    const double beside = Rate();
    std::for_each(sockets.begin(), sockets.end(), close);
    RecordProperty("calls_per_second_alone", std::to_string(alone));
    RecordProperty("calls_per_second_beside_200", std::to_string(beside));
    std::printf("alone %.0f, beside 200 half-open ones %.0f calls per second\n", alone, beside);
    EXPECT_GT(beside, 0.5 * alone);
}

TEST_F(HalfOpenTest, FailedHandshakesLeaveNoFileOpen) {
    Serve();
    EXPECT_FALSE(TlsClient(ssl_port).Connect());
    EXPECT_EQ(CallAsClient(), "hello");
    const std::size_t before = OpenFiles();
    for (int i = 0; i < 300; ++i) {
        EXPECT_FALSE(TlsClient(ssl_port).Connect());
    }
    EXPECT_TRUE(WaitFor([&] { return OpenFiles() <= before; })) << OpenFiles() << " instead of " << before;
    EXPECT_EQ(CallAsClient(), "hello");
}

}  // namespace
