// Many requests on one connection by SSL, before the replies of the former ones: as clients of other ORBs
// send them, which have one connection for all their threads.

#include <cstring>
#include <map>

#include "giop_client.h"
#include "ssl_server.h"
#include "tls_client.h"

namespace {

using namespace qv_test;

class PipelinedRequestsTest : public SslTest {
  protected:
    static bool Send(SSL* ssl, const std::string& bytes) {
        return SSL_write(ssl, bytes.data(), static_cast<int>(bytes.size())) == static_cast<int>(bytes.size());
    }
    static bool Read(SSL* ssl, std::string& bytes) {
        std::size_t have = 0;
        while (have < bytes.size()) {
            const int got = SSL_read(ssl, bytes.data() + have, static_cast<int>(bytes.size() - have));
            if (got <= 0) {
                return false;
            }
            have += static_cast<std::size_t>(got);
        }
        return true;
    }
    static std::uint32_t Number(const std::string& bytes, std::size_t at) {
        std::uint32_t number = 0;
        std::memcpy(&number, bytes.data() + at, sizeof number);
        return number;
    }
    /// Id and status of the next reply, of GIOP 1.0 and without contexts.
    static bool ReadReply(SSL* ssl, std::uint32_t& id, std::uint32_t& status) {
        std::string header(12, '\0');
        if (!Read(ssl, header) || header.compare(0, 4, "GIOP") != 0) {
            return false;
        }
        std::string body(Number(header, 8), '\0');
        if (!Read(ssl, body) || body.size() < 12) {
            return false;
        }
        id = Number(body, 4);
        status = Number(body, 8);
        return true;
    }
};

TEST_F(PipelinedRequestsTest, AreAllAnswered) {
    Serve();
    TlsClientOptions options;
    options.identity = &client_files;
    TlsClient client(ssl_port, options);
    ASSERT_TRUE(client.Connect());
    std::string rest(16, '\0');
    ASSERT_TRUE(Read(client.ssl(), rest)) << "of the reply that Connect looked at";
    const std::string key = ObjectKey(server->ior());
    constexpr std::uint32_t kRounds = 200;
    constexpr std::uint32_t kAtOnce = 100;
    std::map<std::uint32_t, int> answered;
    for (std::uint32_t round = 0; round < kRounds; ++round) {
        std::string requests;
        for (std::uint32_t i = 0; i < kAtOnce; ++i) {
            requests += GiopRequest(key, "_get_title", round * kAtOnce + i, {});
        }
        ASSERT_TRUE(Send(client.ssl(), requests));
        for (std::uint32_t i = 0; i < kAtOnce; ++i) {
            std::uint32_t id = 0;
            std::uint32_t status = 9;
            ASSERT_TRUE(ReadReply(client.ssl(), id, status)) << AllReported();
            EXPECT_EQ(status, 0u);
            ++answered[id];
        }
    }
    EXPECT_EQ(answered.size(), kRounds * kAtOnce);
}

}  // namespace
