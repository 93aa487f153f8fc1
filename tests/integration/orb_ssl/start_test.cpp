// What stops the start of an ORB with SSL, and what the operator reads then.

#include <fstream>

#include "ssl_server.h"
#include "tests/support/free_port.h"

namespace {

using namespace qv_test;

class SslStartTest : public SslTest {
  protected:
    // The one sentence that a start with this service configuration file ends with; empty when it works.
    std::string StartFailure(const std::string& profile, bool with_port = true) {
        ForgetReported();
        const std::string endpoint =
            "iiop://127.0.0.1:0" + std::string(with_port ? "/ssl_port=" + std::to_string(ssl_port) : "");
        try {
            const CORBA::ORB_var orb = InitOrb({"-ORBSvcConf", profile, "-ORBEndpoint", endpoint});
            orb->destroy();
            return "";
        } catch (const CORBA::INITIALIZE&) {
            return AllReported();
        }
    }
    std::string ProfileWith(const qv_tools::ProfileOptions& options) {
        return WriteProfile(dir, "tried.conf", options);
    }

    qv_tools::ProfileOptions options = OptionsFor(server_files);
    const std::string start = "[orb] SSL can't be set up: ";
};

TEST_F(SslStartTest, WorksWithGoodFiles) {
    EXPECT_EQ(StartFailure(ProfileWith(options)), "");
    EXPECT_EQ(AllReported(), "");
}

TEST_F(SslStartTest, AWrongPassPhraseIsSaidAndNotShown) {
    options.pass_phrase = "not-the-right-one";
    EXPECT_EQ(StartFailure(ProfileWith(options)),
              start + "the private key file " + server_files.key +
                  " can't be used: the pass phrase of -SSLPrivateKeyPasswd does not open it\n");
}

TEST_F(SslStartTest, NoPassPhraseIsNotAskedForOnTheTerminal) {
    options.pass_phrase = "";
    EXPECT_EQ(StartFailure(ProfileWith(options)),
              start + "the private key file " + server_files.key +
                  " can't be used: it is encrypted and no -SSLPrivateKeyPasswd is given\n");
}

TEST_F(SslStartTest, AMissingFileIsNamed) {
    for (std::string qv_tools::ProfileOptions::*file :
         {&qv_tools::ProfileOptions::key, &qv_tools::ProfileOptions::certificate,
          &qv_tools::ProfileOptions::authorities}) {
        qv_tools::ProfileOptions tried = options;
        tried.*file = dir.File("nothing.pem");
        const std::string said = StartFailure(ProfileWith(tried));
        EXPECT_NE(
            said.find("file " + dir.File("nothing.pem") + " can't be used: No such file or directory\n"),
            std::string::npos)
            << said;
    }
}

TEST_F(SslStartTest, AKeyOfAnotherCertificateIsNamed) {
    options.key = client_files.key;
    options.pass_phrase = client_files.pass_phrase;
    EXPECT_EQ(StartFailure(ProfileWith(options)),
              start + "the private key file " + client_files.key +
                  " can't be used: its key is not that of the certificate in " + server_files.certificate +
                  "\n");
}

TEST_F(SslStartTest, GarbageIsNamed) {
    const std::string garbage = dir.Write("garbage.pem", "-----BEGIN CERTIFICATE-----\n!!!!\n");
    options.certificate = garbage;
    const std::string said = StartFailure(ProfileWith(options));
    EXPECT_NE(said.find("the certificate file " + garbage + " can't be used: "), std::string::npos) << said;
}

TEST_F(SslStartTest, APortWithoutAProfileIsRefused) {
    EXPECT_EQ(StartFailure(dir.File("none.conf")), start + "the service configuration file " +
                                                       dir.File("none.conf") +
                                                       " can't be read: No such file or directory\n");
    EXPECT_EQ(StartFailure(dir.Write("other.conf", "static Other_Factory \"-x 1\"\n")),
              start + "an end point asks for an SSL port, but the service configuration file " +
                  dir.File("other.conf") + " has no SSLIOP_Factory directive\n");
}

TEST_F(SslStartTest, WithoutAPortNoProfileIsNeeded) {
    EXPECT_EQ(StartFailure(dir.File("none.conf"), false), "");
    EXPECT_EQ(StartFailure(dir.Write("other.conf", "static Other_Factory \"-x 1\"\n'"), false), "");
    EXPECT_EQ(AllReported(), "");
}

TEST_F(SslStartTest, ACertificateThatExpiredIsWarnedOf) {
    const IssuedFiles expired = authority.Issue("expired", "", Holds::kNoMore);
    EXPECT_EQ(StartFailure(WriteProfile(dir, "expired.conf", expired)), "");
    EXPECT_EQ(CountReported("SSL: the certificate in " + expired.certificate + " expired on "), 1)
        << AllReported();
}

TEST_F(SslStartTest, AfterAFailureTheNextStartWorks) {
    options.pass_phrase = "wrong";
    EXPECT_NE(StartFailure(ProfileWith(options)), "");
    Serve();
    EXPECT_EQ(CallAsClient(), "hello") << AllReported();
}

TEST_F(SslStartTest, OrbsOneAfterAnotherEachHaveTheirOwnCertificates) {
    Serve();
    EXPECT_EQ(CallAsClient(), "hello");
    server.reset();
    const IssuedFiles stranger = other_authority.Issue("stranger");
    ssl_port = FreePort();
    Serve(WriteProfile(dir, "second.conf", stranger));
    EXPECT_EQ(CallAsClient().substr(0, 9), "TRANSIENT");
    EXPECT_EQ(Call(server->ior(), WriteProfile(dir, "stranger.conf", stranger)), "hello") << AllReported();
}

}  // namespace
