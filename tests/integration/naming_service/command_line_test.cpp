#include "services/naming/command_line.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "services/common/start_error.h"

namespace qv_naming {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

std::string Refusal(const std::vector<std::string>& arguments) {
    try {
        ParseCommandLine(arguments);
    } catch (const StartError& error) {
        EXPECT_EQ(error.ExitCode(), kExitUsage);
        return error.what();
    }
    ADD_FAILURE() << "accepted";
    return {};
}

TEST(NamingCommandLine, ReadsWhatTheAgentComposes) {
    const Settings settings = ParseCommandLine({"-ORBEndpoint", "iiop://n1:12001", "-o", "../ns.ior"});
    EXPECT_EQ(settings.host, "n1");
    EXPECT_EQ(settings.port, 12001);
    EXPECT_EQ(settings.ior_file, "../ns.ior");
    EXPECT_THAT(settings.ignored, IsEmpty());
}

TEST(NamingCommandLine, TakesOrbOptionsWithoutRegardToCase) {
    EXPECT_EQ(ParseCommandLine({"-orbENDPOINT", "IIOP://n1:1"}).port, 1);
    EXPECT_EQ(ParseCommandLine({"-ORBListenEndpoints", "iiop://n1:65535"}).port, 65535);
}

TEST(NamingCommandLine, TakesEveryFormOfHost) {
    EXPECT_EQ(ParseCommandLine({"-ORBEndpoint", "iiop://:12001"}).host, "");
    EXPECT_EQ(ParseCommandLine({"-ORBEndpoint", "iiop://[::1]:12001"}).host, "[::1]");
    EXPECT_EQ(ParseCommandLine({"-ORBEndpoint", "iiop://1.2@n1:12001"}).host, "n1");
}

TEST(NamingCommandLine, RefusesAPortThatIsNone) {
    for (const char* endpoint : {"iiop://n1", "iiop://n1:", "iiop://n1:0", "iiop://n1:65536", "iiop://n1:12x",
                                 "iiop://n1:-1", "iiop://[::1]", "iiop://"}) {
        const std::string sentence = Refusal({"-ORBEndpoint", endpoint});
        EXPECT_THAT(sentence, HasSubstr(endpoint));
        EXPECT_THAT(sentence, HasSubstr("no valid port"));
    }
}

TEST(NamingCommandLine, RefusesEndpointsOfOtherForms) {
    EXPECT_THAT(Refusal({"-ORBEndpoint", "uiop://path"}), HasSubstr("iiop://HOST:PORT"));
    EXPECT_THAT(Refusal({"-ORBEndpoint", "iiop://a:1,b:2"}), HasSubstr("several addresses"));
    EXPECT_THAT(Refusal({"-ORBEndpoint", "iiop://a:1", "-ORBEndpoint", "iiop://b:2"}),
                HasSubstr("second endpoint"));
    EXPECT_THAT(Refusal({"-ORBEndpoint", "iiop://a:1/colour=2"}), HasSubstr("\"colour\""));
}

TEST(NamingCommandLine, ReadsTheComposedCommandWithSsl) {
    const Settings settings = ParseCommandLine({"-ORBEndpoint", "iiop://n1:12001/ssl_port=22001",
                                                "-ORBSvcConf", "/etc/ssl.conf", "-o", "../ns.ior"});
    EXPECT_EQ(settings.port, 12001);
    EXPECT_EQ(settings.ssl_port, 22001);
    EXPECT_EQ(settings.ssl_profile, "/etc/ssl.conf");
    EXPECT_EQ(settings.ior_file, "../ns.ior");
    EXPECT_TRUE(settings.ignored.empty());
}

TEST(NamingCommandLine, RefusesAnSslPortThatCantBeServed) {
    EXPECT_THAT(Refusal({"-ORBEndpoint", "iiop://a:1/ssl_port=2"}), HasSubstr("no \"-ORBSvcConf FILE\""));
    EXPECT_THAT(Refusal({"-ORBEndpoint", "iiop://a:1/ssl_port=2", "-ORBSvcConf", "-o", "f"}),
                HasSubstr("no \"-ORBSvcConf FILE\""));
    for (const char* port : {"", "=", "=0", "=70000", "=x"}) {
        EXPECT_THAT(
            Refusal({"-ORBEndpoint", std::string("iiop://a:1/ssl_port") + port, "-ORBSvcConf", "ssl.conf"}),
            HasSubstr("no valid port"));
    }
    EXPECT_THAT(Refusal({"-ORBEndpoint", "iiop://a:7/ssl_port=7", "-ORBSvcConf", "ssl.conf"}),
                HasSubstr("same number"));
}

TEST(NamingCommandLine, NamesTheUnknownOption) {
    EXPECT_THAT(Refusal({"-ORBEndpoint", "iiop://a:1", "-ORBNoSuchThing", "1"}),
                HasSubstr("\"-ORBNoSuchThing\""));
    EXPECT_THAT(Refusal({"-ORBEndpoint", "iiop://a:1", "stray"}), HasSubstr("\"stray\""));
    EXPECT_THAT(Refusal({"-ORBEndpoint", "iiop://a:1", "-O", "f"}), HasSubstr("\"-O\""));
}

TEST(NamingCommandLine, NamesTheOptionWithoutValue) {
    EXPECT_THAT(Refusal({"-ORBEndpoint"}), HasSubstr("\"-ORBEndpoint\" needs a value"));
    EXPECT_THAT(Refusal({"-ORBEndpoint", "iiop://a:1", "-o"}), HasSubstr("\"-o\" needs a value"));
    EXPECT_THAT(Refusal({"-ORBEndpoint", "iiop://a:1", "-ORBSvcConf"}),
                HasSubstr("\"-ORBSvcConf\" needs a value"));
}

TEST(NamingCommandLine, NeedsAnEndpointUnlessHelpIsWanted) {
    EXPECT_THAT(Refusal({}), HasSubstr("-ORBEndpoint iiop://HOST:PORT"));
    EXPECT_TRUE(ParseCommandLine({"-h"}).help);
    EXPECT_TRUE(ParseCommandLine({"--version"}).version);
}

TEST(NamingCommandLine, CollectsOptionsWithoutCounterpart) {
    const Settings settings = ParseCommandLine(
        {"-d", "-ORBDebugLevel", "3", "-ORBEndpoint", "iiop://a:1/hostname_in_ior=x&portspan=2", "-d"});
    EXPECT_THAT(settings.ignored,
                ElementsAre(HasSubstr("\"-d\""), HasSubstr("\"-ORBDebugLevel\""),
                            HasSubstr("\"hostname_in_ior=x\""), HasSubstr("\"portspan=2\"")));
}

}  // namespace
}  // namespace qv_naming
