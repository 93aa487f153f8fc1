// A certificate that is replaced on disk while the server runs.

#include <atomic>
#include <filesystem>
#include <thread>

#include "ssl_server.h"
#include "tests/support/wait_for.h"
#include "tls_client.h"

namespace {

using namespace qv_test;

class ReplacementTest : public SslTest {
  protected:
    // Puts the files of another certificate in the place of the server's.
    void Replace(const IssuedFiles& by) {
        std::filesystem::rename(by.key, server_files.key);
        std::filesystem::rename(by.certificate, server_files.certificate);
    }
    std::string ShownName() {
        TlsClientOptions options;
        options.identity = &client_files;
        TlsClient client(ssl_port, options);
        return client.Connect() ? client.ServerName() : "refused";
    }
};

TEST_F(ReplacementTest, IsShownToTheNextPeer) {
    Serve();
    EXPECT_EQ(ShownName(), "server");
    Replace(authority.Issue("successor", server_files.pass_phrase));
    EXPECT_TRUE(WaitFor([&] { return ShownName() == "successor"; })) << AllReported();
    EXPECT_TRUE(Reported("SSL: the new certificate in " + server_files.certificate +
                         " is shown to peers from now on; it is valid until "));
    EXPECT_EQ(CallAsClient(), "hello");
}

TEST_F(ReplacementTest, ConnectionsGoOn) {
    Serve();
    TlsClientOptions options;
    options.identity = &client_files;
    TlsClient before(ssl_port, options);
    ASSERT_TRUE(before.Connect());
    Replace(authority.Issue("successor", server_files.pass_phrase));
    EXPECT_TRUE(WaitFor([&] { return ShownName() == "successor"; })) << AllReported();
    EXPECT_EQ(SSL_write(before.ssl(), "GIOP\1\0\1\3\x09\0\0\0\2\0\0\0\1\0\0\0x", 21), 21);
    char answer[4];
    EXPECT_GT(SSL_read(before.ssl(), answer, sizeof answer), 0);
}

TEST_F(ReplacementTest, APairThatDoesNotFitIsSaidOnceAndTheFormerStays) {
    Serve();
    EXPECT_EQ(ShownName(), "server");
    const IssuedFiles successor = authority.Issue("successor", server_files.pass_phrase);
    std::filesystem::rename(successor.certificate, server_files.certificate);
    EXPECT_TRUE(WaitFor([&] {
        return ShownName() == "server" && CountReported("the former pair stays in use") > 0;
    })) << AllReported();
    EXPECT_EQ(ShownName(), "server");
    EXPECT_EQ(CountReported("the former pair stays in use"), 1) << AllReported();
    std::filesystem::rename(successor.key, server_files.key);
    EXPECT_TRUE(WaitFor([&] { return ShownName() == "successor"; })) << AllReported();
}

TEST_F(ReplacementTest, WhileManyConnectNobodyIsTurnedAway) {
    Serve();
    std::atomic<bool> done{false};
    std::atomic<int> refused{0};
    std::vector<std::thread> clients;
    for (int i = 0; i < 3; ++i) {
        clients.emplace_back([&] {
            while (!done) {
                refused += ShownName() == "refused" ? 1 : 0;
            }
        });
    }
    for (const char* name : {"second", "third"}) {
        Replace(authority.Issue(name, server_files.pass_phrase));
        EXPECT_TRUE(WaitFor([&] { return ShownName() == name; })) << AllReported();
    }
    done = true;
    for (std::thread& client : clients) {
        client.join();
    }
    EXPECT_EQ(refused, 0) << AllReported();
}

}  // namespace
