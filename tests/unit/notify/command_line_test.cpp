#include "services/notify/program/command_line.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "services/common/start_error.h"

namespace {

using namespace std::chrono_literals;
using qv_notify::ParseCommandLine;
using qv_notify::Settings;
using qv_service::StartError;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using Arguments = std::vector<std::string>;

/// What a refusal says; empty when there is none.
std::string Refusal(const Arguments& arguments) {
    try {
        ParseCommandLine(arguments);
        return "";
    } catch (const StartError& error) {
        EXPECT_EQ(error.ExitCode(), qv_service::kExitUsage);
        return error.what();
    }
}

TEST(NotifyCommandLine, HasDefaults) {
    const Settings settings = ParseCommandLine({});
    EXPECT_EQ(settings.port, 0);
    EXPECT_EQ(settings.factory_name, "NotifyEventChannelFactory");
    EXPECT_FALSE(settings.register_name);
    EXPECT_EQ(settings.call_timeout, 10s);
    EXPECT_EQ(settings.limits.events_per_consumer, 100000U);
    EXPECT_EQ(settings.limits.channel.max_events, 500000U);
    EXPECT_EQ(settings.limits.channel.max_bytes, std::size_t{1} << 30);
    EXPECT_EQ(settings.limits.delivery_threads, 64U);
    EXPECT_EQ(settings.limits.retry.give_up_after, 10min);
    EXPECT_FALSE(settings.check || settings.help);
}

TEST(NotifyCommandLine, TakesTheUsualOne) {
    const Settings settings = ParseCommandLine({"-ORBSvcConf", "notify.conf", "-ORBInitRef",
                                                "NameService=corbaloc:iiop:10.0.0.1:3000/NameService",
                                                "-ORBEndpoint", "iiop://10.0.0.1:3001"});
    EXPECT_EQ(settings.host, "10.0.0.1");
    EXPECT_EQ(settings.port, 3001);
    EXPECT_TRUE(settings.register_name);
    EXPECT_THAT(settings.orb_arguments, ElementsAre("-ORBSvcConf", "notify.conf", "-ORBInitRef",
                                                    "NameService=corbaloc:iiop:10.0.0.1:3000/NameService",
                                                    "-ORBEndpoint", "iiop://10.0.0.1:3001"));
    EXPECT_THAT(settings.ignored, IsEmpty());
}

TEST(NotifyCommandLine, TakesTheOneWithSsl) {
    const Arguments arguments = {"-ORBInitRef",  "NameService=corbaloc:ssliop:n1:22001/NameService",
                                 "-ORBEndpoint", "iiop://n1:12002/ssl_port=22002",
                                 "-ORBSvcConf",  "/etc/ssl.conf"};
    const Settings settings = ParseCommandLine(arguments);
    EXPECT_EQ(settings.host, "n1");
    EXPECT_EQ(settings.port, 12002);
    EXPECT_EQ(settings.ssl_port, 22002);
    EXPECT_EQ(settings.ssl_profile, "/etc/ssl.conf");
    EXPECT_EQ(settings.orb_arguments, arguments);
    EXPECT_TRUE(qv_notify::HasLastingAddress(settings));
    EXPECT_FALSE(qv_notify::HasLastingAddress(
        ParseCommandLine({"-ORBEndpoint", "iiop://n1:12002/ssl_port=0", "-ORBSvcConf", "/etc/ssl.conf"})));
}

TEST(NotifyCommandLine, RefusesAnSslPortThatCantBeServed) {
    EXPECT_THAT(Refusal({"-ORBEndpoint", "iiop://n1:1/ssl_port=2"}), HasSubstr("no \"-ORBSvcConf FILE\""));
    EXPECT_THAT(Refusal({"-ORBEndpoint", "iiop://n1:1/portspan=2&ssl_port=x", "-ORBSvcConf", "f"}),
                HasSubstr("The port \"x\""));
    EXPECT_THAT(Refusal({"-ORBEndpoint", "iiop://n1:7/ssl_port=7", "-ORBSvcConf", "f"}),
                HasSubstr("same number for both ports"));
}

TEST(NotifyCommandLine, ReadsEndPoints) {
    const auto at = [](const std::string& endpoint) {
        const Settings settings = ParseCommandLine({"-ORBListenEndpoints", endpoint});
        return settings.host + " " + std::to_string(settings.port);
    };
    EXPECT_EQ(at("iiop://:3001"), " 3001");
    EXPECT_EQ(at("iiop://host"), "host 0");
    EXPECT_EQ(at("iiop://host:0"), "host 0");
    EXPECT_EQ(at("iiop://1.2@host:3001/portspan=2"), "host 3001");
    EXPECT_EQ(at("iiop://one:3001,two:3002"), "one 3001");
    EXPECT_EQ(at("iiop://[::1]:3001"), "[::1] 3001");
    EXPECT_EQ(at("iiop://[::1]"), "[::1] 0");
}

TEST(NotifyCommandLine, RefusesEndPointsThatAreNone) {
    EXPECT_THAT(Refusal({"-ORBEndpoint", "tcp://host:1"}), HasSubstr("tcp://host:1"));
    EXPECT_THAT(Refusal({"-ORBEndpoint", "iiop://host:65536"}), HasSubstr("65536"));
    EXPECT_THAT(Refusal({"-ORBEndpoint", "iiop://host:1x"}), HasSubstr("1x"));
    EXPECT_THAT(Refusal({"-ORBEndpoint", "iiop://host:"}), HasSubstr("port"));
}

TEST(NotifyCommandLine, RegistersWhereANamingServiceIsNamed) {
    EXPECT_FALSE(ParseCommandLine({"-ORBInitRef", "Other=corbaloc::h:1/O"}).register_name);
    EXPECT_TRUE(ParseCommandLine({"-NameSvc"}).register_name);
    EXPECT_FALSE(ParseCommandLine({"-ORBInitRef", "NameService=corbaloc::h:1/NameService", "-NoNameSvc"})
                     .register_name);
    EXPECT_FALSE(ParseCommandLine({"-NoNameSvc", "-ORBInitRef", "NameService=corbaloc::h:1/NameService"})
                     .register_name)
        << "wherever it stands";
}

TEST(NotifyCommandLine, TakesFilesAndNames) {
    const Settings settings = ParseCommandLine(
        {"-Factory", "Events", "-IORoutput", "ns.ior", "-u", "data", "-p", "notify.pid", "--check"});
    EXPECT_EQ(settings.factory_name, "Events");
    EXPECT_EQ(settings.ior_file, "ns.ior");
    EXPECT_EQ(settings.data_directory, "data");
    EXPECT_EQ(settings.pid_file, "notify.pid");
    EXPECT_TRUE(settings.check);
}

TEST(NotifyCommandLine, TakesLimits) {
    const Settings settings =
        ParseCommandLine({"--consumer-queue", "10", "--channel-queue", "20", "--channel-memory", "3",
                          "--threads", "4", "--call-timeout", "500", "--give-up-after", "7"});
    EXPECT_EQ(settings.limits.events_per_consumer, 10U);
    EXPECT_EQ(settings.limits.channel.max_events, 20U);
    EXPECT_EQ(settings.limits.channel.max_bytes, std::size_t{3} << 20);
    EXPECT_EQ(settings.limits.delivery_threads, 4U);
    EXPECT_EQ(settings.call_timeout, 500ms);
    EXPECT_EQ(settings.limits.retry.give_up_after, 7s);
}

TEST(NotifyCommandLine, GivesNobodyUpAfterZero) {
    EXPECT_FALSE(ParseCommandLine({"--give-up-after", "0"}).limits.retry.give_up_after);
}

TEST(NotifyCommandLine, RefusesNumbersOutOfTheirRange) {
    for (const char* option :
         {"--consumer-queue", "--channel-queue", "--channel-memory", "--threads", "--call-timeout"}) {
        EXPECT_THAT(Refusal({option, "0"}),
                    HasSubstr(std::string("\"") + option + "\" is not a number from 1"));
    }
    for (const char* text : {"-1", "1.5", "1x", "x", "99999999999999999999", " 1"}) {
        EXPECT_THAT(Refusal({"--threads", text}), HasSubstr(text));
    }
    EXPECT_THAT(Refusal({"--threads", "1001"}), HasSubstr("from 1 to 1000"));
    EXPECT_THAT(Refusal({"--give-up-after", "31536001"}), HasSubstr("31536001"));
}

TEST(NotifyCommandLine, RefusesAnOptionWithoutItsValue) {
    for (const char* option : {"-Factory", "-IORoutput", "-u", "-p", "--threads", "-ChannelName"}) {
        EXPECT_THAT(Refusal({option}), HasSubstr(std::string("\"") + option + "\" needs a value"));
        EXPECT_THAT(Refusal({option, ""}), HasSubstr("needs a value"));
    }
}

TEST(NotifyCommandLine, RefusesWhatItDoesNotKnow) {
    EXPECT_THAT(Refusal({"--frobnicate"}), HasSubstr("\"--frobnicate\" is unknown"));
    EXPECT_THAT(Refusal({"word"}), HasSubstr("--help"));
}

TEST(NotifyCommandLine, SaysWhichOptionsHaveNoEffect) {
    const Settings settings =
        ParseCommandLine({"-boot", "-Channel", "-ChannelName", "x", "-RunThreads", "4", "-ORBRunThreads", "4",
                          "-UseSeparateDispatchingORB", "1", "-AllocateTaskperProxy", "-AllowReconnect",
                          "-DefaultConsumerAdminFilterOp", "AND", "-DefaultSupplierAdminFilterOp", "AND",
                          "-NoUpdates", "-Timeout", "5"});
    EXPECT_EQ(settings.ignored.size(), 12U);
    EXPECT_THAT(settings.ignored[0], HasSubstr("\"-boot\" is not used"));
    EXPECT_THAT(settings.orb_arguments, IsEmpty());
}

TEST(NotifyCommandLine, SpellsOptionsOfTaoInAnyCase) {
    const Settings settings =
        ParseCommandLine({"-iorOutput", "f", "-FACTORY", "F", "-orbendpoint", "iiop://h:1"});
    EXPECT_EQ(settings.ior_file, "f");
    EXPECT_EQ(settings.factory_name, "F");
    EXPECT_EQ(settings.port, 1);
}

TEST(NotifyCommandLine, HelpsInThreeSpellings) {
    for (const char* option : {"-h", "-?", "--help"}) {
        EXPECT_TRUE(ParseCommandLine({option}).help);
    }
    EXPECT_TRUE(ParseCommandLine({"--version"}).version);
}

TEST(NotifyCommandLine, TheUsageNamesEachOption) {
    const std::string usage = qv_notify::UsageText();
    for (const char* option :
         {"-ORBEndpoint", "-ORBInitRef", "-ORBSvcConf", "-Factory", "-IORoutput", "-NoNameSvc", "-u DIR",
          "-p FILE", "--consumer-queue", "--channel-queue", "--channel-memory", "--threads", "--call-timeout",
          "--give-up-after", "--check", "--help", "--version", "QV_NOTIFY_DATA"}) {
        EXPECT_THAT(usage, HasSubstr(option));
    }
}

}  // namespace
