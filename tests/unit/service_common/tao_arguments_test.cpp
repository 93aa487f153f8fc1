#include "services/common/tao_arguments.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

#include "services/common/start_error.h"

namespace {

using namespace qv_service;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::array kUnused{UnusedOption{"-Boot", false, "of a reason"},
                             UnusedOption{"-RunThreads", true, "of another"},
                             UnusedOption{"-d", false, "of a third"}};

TEST(TaoArguments, KnowAnOptionInAnyCaseButSingleLetters) {
    EXPECT_TRUE(SameOption("-orbendpoint", "-ORBEndpoint"));
    EXPECT_FALSE(SameOption("-ORBEndpoints", "-ORBEndpoint"));
    EXPECT_TRUE(SameOption("-d", "-d"));
    EXPECT_FALSE(SameOption("-D", "-d"));
}

TEST(TaoArguments, AreTakenOneAfterTheOther) {
    const std::vector<std::string> list{"-a", "value", "-b", "", "-c"};
    TaoArguments arguments(list, "Look it up.");
    EXPECT_EQ(arguments.Next(), "-a");
    EXPECT_TRUE(arguments.ValueFollows());
    EXPECT_EQ(arguments.ValueOf("-a"), "value");
    EXPECT_FALSE(arguments.ValueFollows());
    EXPECT_EQ(arguments.Next(), "-b");
    EXPECT_TRUE(arguments.ValueFollows());
    EXPECT_THROW(arguments.ValueOf("-b"), StartError) << "an empty one is none";
    EXPECT_EQ(arguments.Next(), "");
    EXPECT_EQ(arguments.ValueOf("-b"), "-c") << "a value may look like an option";
    EXPECT_FALSE(arguments.More());
    EXPECT_FALSE(arguments.ValueFollows());
}

TEST(TaoArguments, EndARefusalWithTheHint) {
    const std::vector<std::string> list;
    TaoArguments arguments(list, "Look it up.");
    try {
        arguments.ValueOf("-a");
        FAIL();
    } catch (const StartError& error) {
        EXPECT_STREQ(error.what(), "The option \"-a\" needs a value. Look it up.");
        EXPECT_EQ(error.ExitCode(), kExitUsage);
    }
}

TEST(TaoArguments, PassOverWhatHasNoEffect) {
    const std::vector<std::string> list{"5", "rest"};
    TaoArguments arguments(list, "Look it up.");
    std::vector<std::string> ignored;
    arguments.PassOver("-boot", kUnused, ignored);
    arguments.PassOver("-RunThreads", kUnused, ignored);
    arguments.PassOver("-boot", kUnused, ignored);
    EXPECT_THAT(ignored, ElementsAre("The option \"-boot\" is not used: of a reason.",
                                     "The option \"-RunThreads\" is not used: of another."));
    EXPECT_EQ(arguments.Next(), "rest");
    EXPECT_THROW(arguments.PassOver("-RunThreads", kUnused, ignored), StartError) << "its value is missing";
    EXPECT_THROW(arguments.PassOver("-D", kUnused, ignored), StartError);
}

TEST(TaoEndpoint, IsSplitIntoItsParts) {
    const auto parts = SplitEndpoint("IIOP://1.2@n1:3001,n2:3002/portspan=2&ssl_port=3003");
    ASSERT_TRUE(parts);
    EXPECT_EQ(parts->host, "n1");
    EXPECT_EQ(parts->port, "3001");
    EXPECT_TRUE(parts->several);
    EXPECT_THAT(parts->options, ElementsAre("portspan=2", "ssl_port=3003"));
}

TEST(TaoEndpoint, MayLackAPortOrAHost) {
    const auto bare = SplitEndpoint("iiop://[::1]");
    ASSERT_TRUE(bare);
    EXPECT_EQ(bare->host, "[::1]");
    EXPECT_FALSE(bare->port);
    EXPECT_FALSE(bare->several);
    EXPECT_THAT(bare->options, IsEmpty());
    const auto port = SplitEndpoint("iiop://:3001");
    ASSERT_TRUE(port);
    EXPECT_EQ(port->host, "");
    EXPECT_EQ(port->port, "3001");
    EXPECT_EQ(SplitEndpoint("iiop://h:")->port, "");
    EXPECT_FALSE(SplitEndpoint("uiop://path"));
    EXPECT_FALSE(SplitEndpoint("iiop:/h"));
}

TEST(TaoEndpoint, HasOptionsWithAndWithoutValues) {
    EXPECT_EQ(EndpointValue("ssl_port=5", "ssl_port"), "5");
    EXPECT_EQ(EndpointValue("ssl_port=", "ssl_port"), "");
    EXPECT_EQ(EndpointValue("ssl_port", "ssl_port"), "");
    EXPECT_EQ(EndpointValue("ssl_ports=5", "ssl_port"), std::nullopt);
}

TEST(TaoEndpoint, HasPortsThatAreNumbers) {
    EXPECT_EQ(ReadPort("0"), 0);
    EXPECT_EQ(ReadPort("65535"), 65535);
    for (const char* text : {"", "65536", "-1", "+1", " 1", "1x", "0x1"}) {
        EXPECT_EQ(ReadPort(text), std::nullopt) << text;
    }
}

}  // namespace
