// Peers that connect and do not go through with the handshake.

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <future>

#include "giop_client.h"
#include "ssl_server.h"
#include "tests/support/child_process.h"
#include "tests/support/sanitized.h"
#include "tests/support/wait_for.h"
#include "tls_client.h"

namespace {

using namespace qv_test;

class HalfOpenTest : public SslTest {
  protected:
    static std::size_t EntriesOf(const char* directory) {
        const std::filesystem::directory_iterator entries(directory);
        return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
    }
    static std::size_t OpenFiles() { return EntriesOf("/proc/self/fd"); }

    // Connects so often and waits until the server has a thread for each.
    std::vector<int> ConnectHalf(std::size_t count) const {
        const std::size_t threads = EntriesOf("/proc/self/task");
        std::vector<int> sockets;
        for (std::size_t i = 0; i < count; ++i) {
            sockets.push_back(ConnectTo(ssl_port));
        }
        EXPECT_TRUE(WaitFor([&] { return EntriesOf("/proc/self/task") + 5 >= threads + count; }));
        return sockets;
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
    const std::vector<int> sockets = ConnectHalf(200);
    const double beside = Rate();
    std::for_each(sockets.begin(), sockets.end(), close);
    RecordProperty("calls_per_second_alone", std::to_string(alone));
    RecordProperty("calls_per_second_beside_200", std::to_string(beside));
    std::printf("alone %.0f, beside 200 half-open ones %.0f calls per second\n", alone, beside);
    EXPECT_GT(beside, 0.2 * alone) << "measured by the benchmark of SSL; here nobody may be shut out";
}

// Each of these has a thread of the ORB, and requests of one connection that overlap need threads as well.
TEST_F(HalfOpenTest, TwoHundredLeaveThreadsForRequestsThatOverlap) {
    qv_tools::ProfileOptions options = OptionsFor(server_files);
    options.no_protection = true;
    Serve(WriteProfile(dir, "open.conf", options));
    const std::vector<int> sockets = ConnectHalf(200);
    std::promise<void> go;
    const std::shared_future<void> may_go = go.get_future().share();
    server->servant.on_call = [&](const std::string& operation) {
        if (operation == "null_result") {
            may_go.wait();
        }
    };
    RawConnection connection(server->port());
    const std::string key = ObjectKey(server->ior());
    constexpr std::uint32_t kWaiting = 20;
    for (std::uint32_t id = 1; id <= kWaiting; ++id) {
        connection.Send(GiopRequest(key, "null_result", id, {}));
    }
    connection.Send(GiopRequest(key, "_get_title", kWaiting + 1, {}));
    const auto begin = std::chrono::steady_clock::now();
    const auto reply = ReadReply(connection);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(3));
    go.set_value();
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->request_id, kWaiting + 1);
    for (std::uint32_t id = 1; id <= kWaiting; ++id) {
        EXPECT_TRUE(ReadReply(connection));
    }
    std::for_each(sockets.begin(), sockets.end(), close);
}

// Memory in use, in KiB.
long ResidentMemory() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("VmRSS:", 0) == 0) {
            return std::stol(line.substr(6));
        }
    }
    return 0;
}

class FailedHandshakes : public HalfOpenTest {
  protected:
    // One of each kind: no certificate, another authority's, an old version, requests in clear, nonsense.
    void FailOnce(int round) {
        TlsClientOptions options;
        switch (round % 5) {
            case 0:
                break;
            case 1:
                options.identity = &stranger;
                break;
            case 2:
                options.highest_version = TLS1_1_VERSION;
                break;
            default:
                return SendOnce(round % 5 == 3 ? "GIOP\1\0\1\0........" : "\x16\x03\x01\x02\0\1nonsense");
        }
        EXPECT_FALSE(TlsClient(ssl_port, options).Connect());
    }
    void SendOnce(const std::string& bytes) const {
        const int fd = ConnectTo(ssl_port);
        send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        shutdown(fd, SHUT_WR);
        char rest[64];
        while (recv(fd, rest, sizeof rest, 0) > 0) {
        }
        close(fd);
    }

    const IssuedFiles stranger = other_authority.Issue("stranger");
};

TEST_F(FailedHandshakes, LeaveNoFileOpenAndNoMemoryBehind) {
    Serve();
    constexpr int kWarmUp = kSanitized ? 200 : 2000;
    constexpr int kRounds = kSanitized ? 1000 : 10000;
    for (int round = 0; round < kWarmUp; ++round) {
        FailOnce(round);
    }
    EXPECT_EQ(CallAsClient(), "hello");
    const std::size_t files = OpenFiles();
    const long memory = ResidentMemory();
    for (int round = 0; round < kRounds; ++round) {
        FailOnce(round);
    }
    EXPECT_TRUE(WaitFor([&] { return OpenFiles() <= files; })) << OpenFiles() << " instead of " << files;
    const long grown = ResidentMemory() - memory;
    std::printf("%d failed handshakes: memory %ld KiB -> %+ld KiB\n", kRounds, memory, grown);
    if (!kSanitized) {  // sanitizers keep memory on purpose
        EXPECT_LT(grown, 3000);
    }
    EXPECT_EQ(CallAsClient(), "hello");
}

}  // namespace
