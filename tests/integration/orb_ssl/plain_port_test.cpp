// Requests in clear where SSL is set up, and SSL at the plain port.

#include "giop_client.h"
#include "ssl_server.h"
#include "tls_client.h"

namespace {

using namespace qv_test;

constexpr char kRefused[] = "NO_PERMISSION 0x00000000 NO";

class PlainPortTest : public SslTest {
  protected:
    std::string PlainReference(const std::string& key) const {
        return "corbaloc:iiop:1.2@127.0.0.1:" + std::to_string(server->port()) + "/" + key;
    }
};

TEST_F(PlainPortTest, ARequestInClearIsRefusedAheadOfServantAndInterceptors) {
    Serve();
    EXPECT_EQ(Call(server->ior(), ""), kRefused);
    EXPECT_EQ(server->events.All(), Strings());
    EXPECT_TRUE(Reported("sent a request in clear to the plain port, which was refused")) << AllReported();
}

TEST_F(PlainPortTest, ARequestForAKeyThatDoesNotExistIsRefusedAlike) {
    Serve();
    RawConnection connection(server->port());
    connection.Send(GiopRequest("Nobody", "title", 1, {}));
    const auto reply = ReadReply(connection);
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->status, 2u);
    EXPECT_TRUE(Reported("sent a request in clear to the plain port, which was refused")) << AllReported();
}

TEST_F(PlainPortTest, AOnewayInClearIsDropped) {
    Serve();
    RawConnection connection(server->port());
    const std::string key = ObjectKey(server->ior());
    connection.Send(GiopRequest(key, "tell", 1, {}, false));
    connection.Send(GiopRequest(key, "title", 2, {}));
    const auto reply = ReadReply(connection);
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->request_id, 2u);
    EXPECT_EQ(reply->status, 2u);
    EXPECT_EQ(server->events.All(), Strings());
}

TEST_F(PlainPortTest, AConnectionStaysUsableAfterARefusal) {
    Serve();
    RawConnection connection(server->port());
    for (std::uint32_t id = 1; id <= 100; ++id) {
        connection.Send(GiopRequest(ObjectKey(server->ior()), "title", id, {}));
        const auto reply = ReadReply(connection);
        ASSERT_TRUE(reply);
        EXPECT_EQ(reply->request_id, id);
        EXPECT_EQ(reply->status, 2u);
    }
    EXPECT_LE(CountReported("in clear"), 22) << "the report has a limit";
}

TEST_F(PlainPortTest, WithNoProtectionBothPortsServe) {
    qv_tools::ProfileOptions options = OptionsFor(server_files);
    options.no_protection = true;
    Serve(WriteProfile(dir, "open.conf", options));
    EXPECT_EQ(Call(server->ior(), ""), "hello");
    EXPECT_EQ(CallAsClient(), "hello");
    EXPECT_EQ(AllReported(), "");
}

TEST_F(PlainPortTest, TlsAtThePlainPortEndsInAnErrorAndHurtsNobody) {
    Serve();
    TlsClientOptions options;
    options.identity = &client_files;
    EXPECT_FALSE(TlsClient(server->port(), options).Connect());
    EXPECT_EQ(CallAsClient(), "hello");
}

TEST_F(PlainPortTest, NothingGoesOutInClearWhereProtectionIsRequired) {
    Serve();
    const std::string outcome = Call(PlainReference("Nobody"), ClientProfile());
    EXPECT_EQ(outcome.substr(0, 9), "TRANSIENT") << outcome;
    EXPECT_EQ(CountReported("in clear"), 0);
}

TEST_F(PlainPortTest, AClientThatNeedsNoProtectionCallsThePlainServerInClear) {
    server = std::make_unique<SeamServer>();
    qv_tools::ProfileOptions options = OptionsFor(client_files);
    options.no_protection = true;
    EXPECT_EQ(Call(server->ior(), WriteProfile(dir, "open-client.conf", options)), "hello");
    EXPECT_EQ(Call(server->ior(), ClientProfile()).substr(0, 9), "TRANSIENT");
}

TEST_F(PlainPortTest, TheNextOrbWithoutSslServesInClearAgain) {
    Serve();
    server.reset();
    server = std::make_unique<SeamServer>();
    EXPECT_EQ(Call(server->ior(), ""), "hello");
    EXPECT_EQ(AllReported(), "");
}

}  // namespace
