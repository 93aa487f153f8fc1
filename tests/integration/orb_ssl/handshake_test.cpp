// Who gets through the handshake, and what is said of who does not.

#include <sys/socket.h>
#include <unistd.h>

#include <random>

#include <openssl/err.h>

#include "orb/portability.h"
#include "ssl_server.h"
#include "tls_client.h"

namespace {

using namespace qv_test;

class HandshakeTest : public SslTest {
  protected:
    TlsClientOptions AsClient() const {
        TlsClientOptions options;
        options.identity = &client_files;
        return options;
    }
};

TEST_F(HandshakeTest, BothSidesShowTheirCertificates) {
    Serve();
    EXPECT_EQ(CallAsClient(), "hello") << AllReported();
    TlsClient client(ssl_port, AsClient());
    EXPECT_TRUE(client.Connect());
    EXPECT_EQ(client.ServerName(), "server");
    EXPECT_EQ(SSL_version(client.ssl()), TLS1_3_VERSION);
    EXPECT_EQ(AllReported(), "");
}

TEST_F(HandshakeTest, ALongAnswerAndALongArgumentPass) {
    Serve();
    EXPECT_EQ(CallAsClient("blob", "3000000").substr(0, 7), "3000000") << AllReported();
    EXPECT_EQ(CallAsClient("echo", std::string(100000, 'x')), std::string(100000, 'x'));
}

TEST_F(HandshakeTest, Tls12IsSpokenToo) {
    Serve();
    TlsClientOptions options = AsClient();
    options.highest_version = TLS1_2_VERSION;
    TlsClient client(ssl_port, options);
    EXPECT_TRUE(client.Connect());
    EXPECT_EQ(SSL_version(client.ssl()), TLS1_2_VERSION);
}

class OldVersionTest : public HandshakeTest, public ::testing::WithParamInterface<int> {};

TEST_P(OldVersionTest, IsRefused) {
    Serve();
    TlsClientOptions options = AsClient();
    options.highest_version = GetParam();
    EXPECT_FALSE(TlsClient(ssl_port, options).Connect());
    EXPECT_TRUE(Reported("SSL: the peer 127.0.0.1:")) << AllReported();
    EXPECT_TRUE(Reported("does not offer TLS 1.2 or later")) << AllReported();
    EXPECT_EQ(CallAsClient(), "hello");
}

INSTANTIATE_TEST_SUITE_P(Versions, OldVersionTest, ::testing::Values(TLS1_VERSION, TLS1_1_VERSION));

TEST_F(HandshakeTest, AClientWithoutACertificateIsRefused) {
    Serve();
    EXPECT_FALSE(TlsClient(ssl_port).Connect());
    EXPECT_TRUE(Reported("shows no certificate; give it one of a known authority")) << AllReported();
    EXPECT_EQ(CountReported("SSL: "), 1) << AllReported();
    EXPECT_EQ(CallAsClient(), "hello");
}

TEST_F(HandshakeTest, AClientOfAnotherAuthorityIsRefused) {
    Serve();
    const IssuedFiles stranger = other_authority.Issue("stranger");
    TlsClientOptions options;
    options.identity = &stranger;
    EXPECT_FALSE(TlsClient(ssl_port, options).Connect());
    EXPECT_TRUE(Reported("shows a certificate of an authority that is not known here")) << AllReported();
}

TEST_F(HandshakeTest, AClientWithAnExpiredCertificateIsRefused) {
    Serve();
    const IssuedFiles expired = authority.Issue("expired", "", Holds::kNoMore);
    TlsClientOptions options;
    options.identity = &expired;
    EXPECT_FALSE(TlsClient(ssl_port, options).Connect());
    EXPECT_TRUE(Reported("shows a certificate that has expired")) << AllReported();
}

TEST_F(HandshakeTest, AClientWithAChainOfTwoIsServed) {
    Serve();
    const IssuedFiles issued = authority.Intermediate("department").Issue("employee");
    EXPECT_EQ(Call(server->ior(), WriteProfile(dir, "chain.conf", issued)), "hello") << AllReported();
}

TEST_F(HandshakeTest, AServerOfAnotherAuthorityIsNotCalled) {
    Serve();
    qv_tools::ProfileOptions options = OptionsFor(client_files);
    options.authorities = other_authority.File();
    EXPECT_EQ(Call(server->ior(), WriteProfile(dir, "wary.conf", options)).substr(0, 9), "TRANSIENT");
    EXPECT_TRUE(Reported("does not know the authority of this side's certificate")) << AllReported();
}

TEST_F(HandshakeTest, AServerOfAnotherAuthorityIsNotCalledFromHere) {
    Serve();
    const IssuedFiles foreign = other_authority.Issue("foreign");
    qv_tools::ProfileOptions options = OptionsFor(foreign);
    options.authorities = authority.File();
    const std::string outcome =
        RunPeer(WriteProfile(dir, "foreign.conf", options), {"nest", server->ior(), "1"});
    EXPECT_TRUE(Reported("shows a certificate of an authority that is not known here")) << outcome;
}

TEST_F(HandshakeTest, AFailedCallLeavesNoErrorBehindOnItsThread) {
    Serve();
    const std::string nobody = "corbaloc:ssliop:127.0.0.1:" + std::to_string(server->port()) + "/Nobody";
    const CORBA::Object_var object = server->orb()->string_to_object(nobody.c_str());
    EXPECT_THROW(object->_non_existent(), CORBA::SystemException) << "nobody speaks TLS at the plain port";
    EXPECT_EQ(ERR_peek_error(), 0u);
}

TEST_F(HandshakeTest, WithServerOnlyAClientNeedsNoCertificate) {
    qv_tools::ProfileOptions options = OptionsFor(server_files);
    options.authenticate = "SERVER";
    Serve(WriteProfile(dir, "server-only.conf", options));
    EXPECT_TRUE(TlsClient(ssl_port).Connect()) << AllReported();
    const IssuedFiles stranger = other_authority.Issue("stranger");
    TlsClientOptions client;
    client.identity = &stranger;
    EXPECT_FALSE(TlsClient(ssl_port, client).Connect()) << "a certificate that is shown is looked at";
}

TEST_F(HandshakeTest, WithNoneNobodyIsLookedAt) {
    qv_tools::ProfileOptions options = OptionsFor(server_files);
    options.authenticate = "NONE";
    Serve(WriteProfile(dir, "none.conf", options));
    const IssuedFiles stranger = other_authority.Issue("stranger");
    TlsClientOptions client;
    client.identity = &stranger;
    EXPECT_TRUE(TlsClient(ssl_port, client).Connect()) << AllReported();
}

TEST_F(HandshakeTest, RequestsInClearToTheSslPortAreRefused) {
    Serve();
    const int fd = ConnectTo(ssl_port);
    EXPECT_EQ(send(fd, "GIOP\1\0\1\0", 8, MSG_NOSIGNAL), 8);
    char rest[64];
    while (recv(fd, rest, sizeof rest, 0) > 0) {
    }
    close(fd);
    EXPECT_TRUE(Reported("does not speak TLS on this port")) << AllReported();
    EXPECT_EQ(CallAsClient(), "hello");
}

TEST_F(HandshakeTest, RandomBytesHurtNobody) {
    Serve();
    std::minstd_rand random(7);
    for (int round = 0; round < 50; ++round) {
        std::string bytes(1 + random() % 600, '\0');
        for (char& byte : bytes) {
            byte = static_cast<char>(random());
        }
        if (round % 2 == 0) {
            bytes.replace(0, std::min<std::size_t>(bytes.size(), 3), "\x16\x03\x01");
        }
        const int fd = ConnectTo(ssl_port);
        send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        close(fd);
    }
    EXPECT_EQ(CallAsClient(), "hello");
}

TEST_F(HandshakeTest, APortCheckIsNotMentioned) {
    Serve();
    for (int i = 0; i < 5; ++i) {
        close(ConnectTo(ssl_port));
    }
    EXPECT_EQ(CallAsClient(), "hello");
    server.reset();
    EXPECT_EQ(AllReported(), "");
}

TEST_F(HandshakeTest, RenegotiationIsRefused) {
    Serve();
    TlsClientOptions options = AsClient();
    options.highest_version = TLS1_2_VERSION;
    for (int i = 0; i < 20; ++i) {
        TlsClient client(ssl_port, options);
        ASSERT_TRUE(client.Connect());
        EXPECT_FALSE(client.Renegotiate());
    }
    EXPECT_EQ(CallAsClient(), "hello");
}

TEST_F(HandshakeTest, AStormOfBadClientsIsToldWithinTheLimit) {
    Serve();
    for (int i = 0; i < 60; ++i) {
        EXPECT_FALSE(TlsClient(ssl_port).Connect());
    }
    EXPECT_LE(CountReported("shows no certificate"), 40);
    EXPECT_EQ(CallAsClient(), "hello");
}

TEST_F(HandshakeTest, TheCallersAddressIsThatOfItsConnection) {
    Serve();
    std::string seen;
    server->a->request = [&](Probe::Info info) { seen = qv_orb::PeerAddress(info); };
    EXPECT_EQ(CallAsClient(), "hello");
    EXPECT_EQ(seen.substr(0, 10), "127.0.0.1:");
}

TEST_F(HandshakeTest, CallsBackGoBySslAsWell) {
    Serve();
    EXPECT_EQ(RunPeer(ClientProfile(), {"nest", server->ior(), "3"}), "4") << AllReported();
}

}  // namespace
