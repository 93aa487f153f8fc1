#include "orb/ssl/handshake_report.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <vector>

#include "orb/ssl/openssl_types.h"

namespace {

std::vector<std::string> g_said;

// A connection whose handshake has begun, as OpenSSL tells it.
class HandshakeReport : public ::testing::Test {
  protected:
    HandshakeReport() {
        g_said.clear();
        qv_ssl::SetHandshakeSink([](const std::string& sentence) { g_said.push_back(sentence); });
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
        ssl.reset(SSL_new(context.get()));
        SSL_set_fd(ssl.get(), ends[0]);
        SSL_set_accept_state(ssl.get());
        qv_ssl::WatchHandshake(ssl.get(), SSL_CB_HANDSHAKE_START, 1);
    }
    ~HandshakeReport() override {
        ssl.reset();
        qv_ssl::SetHandshakeSink(nullptr);
        close(ends[0]);
        close(ends[1]);
    }
    void RefuseRenegotiation() {
        qv_ssl::WatchHandshake(ssl.get(), SSL_CB_WRITE_ALERT,
                               (SSL3_AL_WARNING << 8) | SSL_AD_NO_RENEGOTIATION);
    }
    bool Closed() const {
        char byte;
        return recv(ends[1], &byte, 1, MSG_DONTWAIT) == 0;
    }

    int ends[2] = {-1, -1};
    const qv_ssl::ContextPtr context{SSL_CTX_new(TLS_method())};
    qv_ssl::ConnectionPtr ssl;
};

TEST_F(HandshakeReport, AHandshakeThatIsGivenUpIsTold) {
    ssl.reset();
    ASSERT_EQ(g_said.size(), 1u);
    EXPECT_EQ(g_said[0].find("SSL: the peer "), 0u);
    EXPECT_NE(g_said[0].find(" connected and sent nothing in time; the connection was closed"),
              std::string::npos);
}

TEST_F(HandshakeReport, AHandshakeThatIsDoneIsNot) {
    qv_ssl::WatchHandshake(ssl.get(), SSL_CB_HANDSHAKE_DONE, 1);
    ssl.reset();
    EXPECT_TRUE(g_said.empty());
}

TEST_F(HandshakeReport, OneAnswerToARenegotiationMayBeAMistakeManyEndTheConnection) {
    qv_ssl::WatchHandshake(ssl.get(), SSL_CB_HANDSHAKE_DONE, 1);
    RefuseRenegotiation();
    RefuseRenegotiation();
    EXPECT_FALSE(Closed());
    EXPECT_TRUE(g_said.empty());
    RefuseRenegotiation();
    EXPECT_TRUE(Closed());
    RefuseRenegotiation();
    ASSERT_EQ(g_said.size(), 1u);
    EXPECT_NE(g_said[0].find("asks for a renegotiation again and again"), std::string::npos);
}

TEST_F(HandshakeReport, MoreThanTheBoundAreTurnedAway) {
    std::vector<qv_ssl::ConnectionPtr> others;
    const auto begin = [&] {
        others.emplace_back(SSL_new(context.get()));
        SSL_set_fd(others.back().get(), ends[0]);
        SSL_set_accept_state(others.back().get());
        qv_ssl::WatchHandshake(others.back().get(), SSL_CB_HANDSHAKE_START, 1);
    };
    while (others.size() + 1 < qv_ssl::kMostHandshakes) {
        begin();
    }
    qv_ssl::WatchHandshake(others.back().get(), SSL_CB_HANDSHAKE_DONE, 1);
    begin();
    EXPECT_FALSE(Closed()) << "one is done";
    EXPECT_TRUE(g_said.empty());
    begin();
    EXPECT_TRUE(Closed());
    ASSERT_EQ(g_said.size(), 1u);
    EXPECT_NE(g_said[0].find(" was turned away: 1000 others have not finished their handshakes"),
              std::string::npos);
    others.clear();
    g_said.clear();
    begin();
    EXPECT_TRUE(g_said.empty()) << "those that are gone don't count";
}

TEST_F(HandshakeReport, WithoutASinkNothingHappens) {
    qv_ssl::SetHandshakeSink(nullptr);
    ssl.reset();
    EXPECT_TRUE(g_said.empty());
}

}  // namespace
