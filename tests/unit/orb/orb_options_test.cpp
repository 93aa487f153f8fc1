// Translation of the -ORB options.

#include "orb_options.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using qv_orb::AddEndpoints;
using qv_orb::OrbOptions;
using qv_orb::TakeOrbOptions;
using Strings = std::vector<std::string>;
using Pairs = std::vector<std::pair<std::string, std::string>>;

class OrbOptionsTest : public ::testing::Test {
  protected:
    OrbOptions Take(Strings args) {
        std::vector<char*> argv;
        for (std::string& arg : args) {
            argv.push_back(arg.data());
        }
        argv.push_back(nullptr);
        int argc = static_cast<int>(args.size());
        const OrbOptions options = TakeOrbOptions(argc, argv.data());
        EXPECT_EQ(argv[static_cast<std::size_t>(argc)], nullptr);
        rest.assign(argv.begin(), argv.begin() + argc);
        return options;
    }
    std::string Refusal(const Strings& args) {
        try {
            Take(args);
            return "";
        } catch (const std::invalid_argument& problem) {
            return problem.what();
        }
    }

    Strings rest;
};

TEST_F(OrbOptionsTest, WithoutOptionsEverythingStays) {
    const OrbOptions options = Take({"agent", "-v", "file"});
    EXPECT_EQ(rest, (Strings{"agent", "-v", "file"}));
    EXPECT_TRUE(options.underlying.empty());
    EXPECT_TRUE(options.without_effect.empty());
    EXPECT_FALSE(options.wants_ssl);
}

TEST_F(OrbOptionsTest, AnEmptyCommandLineIsTaken) {
    EXPECT_TRUE(Take({}).underlying.empty());
}

TEST_F(OrbOptionsTest, OptionsAreTakenOutAndTheRestKeepsItsOrder) {
    const OrbOptions options = Take({"agent", "a", "-ORBId", "x", "b", "-ORBServerId", "s", "-c", "d"});
    EXPECT_EQ(rest, (Strings{"agent", "a", "b", "-c", "d"}));
    EXPECT_EQ(options.orb_id, "x");
    EXPECT_EQ(options.server_id, "s");
}

TEST_F(OrbOptionsTest, CaseDoesNotMatter) {
    const OrbOptions options = Take({"agent", "-orbid", "x", "-ORBINITREF", "NameService=corbaloc::h/N"});
    EXPECT_EQ(rest, Strings{"agent"});
    EXPECT_EQ(options.orb_id, "x");
    EXPECT_EQ(options.underlying, (Pairs{{"InitRef", "NameService=corbaloc::h/N"}}));
}

TEST_F(OrbOptionsTest, ReferencesAndEndPointsAreHandedOnInOrder) {
    const OrbOptions options =
        Take({"agent", "-ORBInitRef", "A=corbaloc::a/A", "-ORBInitRef", "B=corbaloc::b/B",
              "-ORBListenEndpoints", "iiop://1.2.3.4:10", "-ORBEndpoint", "iiop://1.2.3.4:11"});
    EXPECT_EQ(options.underlying, (Pairs{{"InitRef", "A=corbaloc::a/A"},
                                         {"InitRef", "B=corbaloc::b/B"},
                                         {"endPoint", "giop:tcp:1.2.3.4:10"},
                                         {"endPoint", "giop:tcp:1.2.3.4:11"}}));
}

TEST_F(OrbOptionsTest, UnknownOptionIsNamed) {
    EXPECT_NE(Refusal({"agent", "-ORBNoSuchThing", "1"}).find("-ORBNoSuchThing"), std::string::npos);
}

TEST_F(OrbOptionsTest, MissingValueIsSaidWithTheOption) {
    for (const char* option : {"-ORBId", "-ORBServerId", "-ORBInitRef", "-ORBEndpoint", "-ORBCollocation"}) {
        EXPECT_NE(Refusal({"agent", option}).find(option), std::string::npos) << option;
        EXPECT_NE(Refusal({"agent", option, "-ORBDaemon"}).find(option), std::string::npos) << option;
    }
}

TEST_F(OrbOptionsTest, BadInitialReferenceIsRefused) {
    for (const char* value : {"NameService", "=corbaloc::h/N", "NameService="}) {
        EXPECT_NE(Refusal({"agent", "-ORBInitRef", value}), "") << value;
    }
}

TEST_F(OrbOptionsTest, OptionsWithoutEffectAreListedWithTheirValue) {
    const OrbOptions options = Take(
        {"agent", "-ORBCollocation", "per-orb", "-ORBPreferredInterfaces", "*=10.0.0.1", "-ORBDaemon", "x"});
    EXPECT_EQ(options.without_effect,
              (Strings{"-ORBCollocation per-orb", "-ORBPreferredInterfaces *=10.0.0.1", "-ORBDaemon"}));
    EXPECT_EQ(rest, (Strings{"agent", "x"}));
}

TEST_F(OrbOptionsTest, ServiceConfigurationMayBeLeftOut) {
    EXPECT_EQ(Take({"agent", "-ORBSvcConf", "/etc/svc.conf"}).service_config, "/etc/svc.conf");
    EXPECT_EQ(Take({"agent", "-ORBSvcConf", "-ORBId", "x"}).orb_id, "x");
    EXPECT_EQ(Take({"agent", "-ORBSvcConf"}).service_config, "");
}

Pairs Endpoints(const std::string& text) {
    OrbOptions options;
    AddEndpoints(text, options);
    return options.underlying;
}

TEST(AddEndpointsTest, HostAndPort) {
    EXPECT_EQ(Endpoints("iiop://host:1000"), (Pairs{{"endPoint", "giop:tcp:host:1000"}}));
    EXPECT_EQ(Endpoints("iiop://1.2@host:1000"), (Pairs{{"endPoint", "giop:tcp:host:1000"}}));
    EXPECT_EQ(Endpoints("iiop://host"), (Pairs{{"endPoint", "giop:tcp:host:0"}}));
    EXPECT_EQ(Endpoints("iiop://:1000"), (Pairs{{"endPoint", "giop:tcp::1000"}}));
    EXPECT_EQ(Endpoints("iiop://[::1]:1000"), (Pairs{{"endPoint", "giop:tcp:[::1]:1000"}}));
}

TEST(AddEndpointsTest, Several) {
    const Pairs two{{"endPoint", "giop:tcp:a:1"}, {"endPoint", "giop:tcp:b:2"}};
    EXPECT_EQ(Endpoints("iiop://a:1;iiop://b:2"), two);
    EXPECT_EQ(Endpoints("iiop://a:1,b:2"), two);
}

TEST(AddEndpointsTest, OptionsWithoutCounterpartAreListed) {
    OrbOptions options;
    AddEndpoints("iiop://a:1/portspan=5&reuse_addr=1", options);
    EXPECT_EQ(options.underlying, (Pairs{{"endPoint", "giop:tcp:a:1"}}));
    EXPECT_EQ(options.without_effect.size(), 2u);
}

TEST(AddEndpointsTest, BadOnesAreRefused) {
    OrbOptions options;
    for (const char* text : {"", "tcp://a:1", "iiop://a:70000", "iiop://a:x", "iiop://a:1/no_such=1",
                             "iiop://a:-1", "iiop://a:123456", "iiop://a:1;"}) {
        EXPECT_THROW(AddEndpoints(text, options), std::invalid_argument) << text;
    }
}

}  // namespace
