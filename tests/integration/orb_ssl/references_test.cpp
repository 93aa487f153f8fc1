// What references of an SSL server say, and how clients get there.

#include "orb/object_access.h"
#include "ssl_server.h"
#include "tests/support/child_process.h"
#include "tests/support/free_port.h"

namespace {

using namespace qv_test;

class SslReferencesTest : public SslTest {
  protected:
    // What the ORB's own tool reads in a reference.
    std::string Described() { return qv_test::Run({"catior", server->ior()}).out; }
};

TEST_F(SslReferencesTest, CarryBothEndPoints) {
    Serve();
    const std::string text = Described();
    EXPECT_NE(text.find("127.0.0.1 " + std::to_string(server->port())), std::string::npos) << text;
    EXPECT_NE(text.find("TAG_SSL_SEC_TRANS port = " + std::to_string(ssl_port)), std::string::npos) << text;
}

TEST_F(SslReferencesTest, AnEndPointWithoutAnSslPortGetsOne) {
    SeamServer::Options options;
    options.args = {"-ORBSvcConf", WriteProfile(dir, "server.conf", server_files)};
    server = std::make_unique<SeamServer>(options);
    EXPECT_NE(Described().find("TAG_SSL_SEC_TRANS port = "), std::string::npos);
    EXPECT_EQ(CallAsClient(), "hello") << AllReported();
}

TEST_F(SslReferencesTest, TheSslPortMayBeChosenByTheSystem) {
    SeamServer::Options options;
    options.args = {"-ORBSvcConf", WriteProfile(dir, "server.conf", server_files), "-ORBEndpoint",
                    "iiop://127.0.0.1:" + std::to_string(FreePort()) + "/ssl_port=0"};
    server = std::make_unique<SeamServer>(options);
    EXPECT_EQ(CallAsClient(), "hello") << AllReported();
}

TEST_F(SslReferencesTest, CorbalocSsliopLeadsToAnObjectUnderASimpleKey) {
    Serve();
    const auto known = std::make_unique<TargetServant>("known");  // outlives the server's ORB
    const CORBA::Object_var published = qv_orb::PublishUnderKey(server->orb(), "Known", known.get());
    const std::string where = ":127.0.0.1:" + std::to_string(ssl_port) + "/Known";
    EXPECT_EQ(Call("corbaloc:ssliop" + where, ClientProfile(), "title"), "known") << AllReported();
    EXPECT_EQ(Call("corbaloc:ssliop:1.2@" + where.substr(1), ClientProfile(), "title"), "known");
    server.reset();
}

}  // namespace
