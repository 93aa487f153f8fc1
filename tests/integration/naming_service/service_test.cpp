// What a client of a running naming service sees.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>

#include "naming_run.h"
#include "tests/support/wait_for.h"

namespace qv_test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

// A reference to a thing that need not exist, for binding.
constexpr const char* kThing = "corbaloc:iiop:203.0.113.1:9/Thing";

TEST(NamingService, WritesTheReferenceOnceItAnswers) {
    NamingRun run;
    ASSERT_TRUE(run.StartAndWait());
    const std::string ior = ReadFile(run.IorFile());
    ASSERT_EQ(ior.rfind("IOR:", 0), 0U) << ior;
    const RunResult shown = qv_test::Run({QV_CATIOR, ior.substr(0, ior.find('\n'))});
    EXPECT_EQ(shown.code, 0);
    EXPECT_THAT(shown.out, HasSubstr("IDL:omg.org/CosNaming/NamingContextExt:1.0"));
    EXPECT_THAT(shown.out, HasSubstr("127.0.0.1 " + std::to_string(run.Port()) + " \"NameService\""));
    const RunResult listed = qv_test::Run({QV_NAMECLT, "-ior", ior.substr(0, ior.find('\n')), "list"});
    EXPECT_EQ(listed.code, 0) << listed.err;
}

TEST(NamingService, LeavesNothingBesideTheReferenceFile) {
    NamingRun run;
    ASSERT_TRUE(run.StartAndWait());
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(run.Dir().path())) {
        names.push_back(entry.path().filename());
    }
    EXPECT_THAT(names,
                ::testing::UnorderedElementsAre("bin", "ns.ior", "naming-" + std::to_string(run.Port())));
}

TEST(NamingService, PublishesTheHostAsGiven) {
    NamingRun run("localhost");
    ASSERT_TRUE(run.StartAndWait());
    const std::string ior = ReadFile(run.IorFile());
    EXPECT_THAT(qv_test::Run({QV_CATIOR, ior.substr(0, ior.find('\n'))}).out,
                HasSubstr("localhost " + std::to_string(run.Port())));
}

class NamingServiceHosts : public ::testing::TestWithParam<bool> {};

TEST_P(NamingServiceHosts, IsReachedByEveryNameOfThisMachine) {
    NamingRun run(GetParam() ? NodeName() : "localhost");
    ASSERT_TRUE(run.StartAndWait());
    ASSERT_EQ(run.Client({"bind_new_context", "top"}, "127.0.0.1").code, 0);
    for (const std::string& host : {std::string("127.0.0.1"), std::string("localhost"), NodeName()}) {
        const RunResult listed = run.Client({"list"}, host);
        EXPECT_EQ(listed.code, 0) << host << ": " << listed.err;
        EXPECT_THAT(listed.out, HasSubstr("top/")) << host;
    }
}

INSTANTIATE_TEST_SUITE_P(Host, NamingServiceHosts, ::testing::Bool(),
                         [](const auto& test) { return test.param ? "NodeName" : "Localhost"; });

TEST(NamingService, KeepsBindingsWhenItIsKilledAndStartedAgain) {
    NamingRun run;
    ASSERT_TRUE(run.StartAndWait());
    ASSERT_EQ(run.Client({"bind_new_context", "tmf_mtnm.class"}).code, 0);
    ASSERT_EQ(run.Client({"bind", "tmf_mtnm.class/factory.obj", kThing}).code, 0);
    const RunResult before = run.Client({"resolve", "tmf_mtnm.class/factory.obj"});
    ASSERT_EQ(before.code, 0) << before.err;
    const std::string ior_before = ReadFile(run.IorFile());

    run.Service().Kill();
    ASSERT_TRUE(run.StartAndWait());
    EXPECT_EQ(run.Client({"resolve", "tmf_mtnm.class/factory.obj"}).out, before.out);
    EXPECT_EQ(ReadFile(run.IorFile()), ior_before) << "clients may keep the reference";
}

TEST(NamingService, KeepsBindingsWhenItIsStoppedAndStartedAgain) {
    NamingRun run;
    ASSERT_TRUE(run.StartAndWait());
    ASSERT_EQ(run.Client({"bind", "thing.obj", kThing}).code, 0);
    run.Service().Signal(SIGTERM);
    EXPECT_EQ(run.Service().Wait(), 0);
    ASSERT_TRUE(run.StartAndWait());
    EXPECT_EQ(run.Client({"resolve", "thing.obj"}).code, 0);
}

TEST(NamingService, KeepsBindingsWhenTheHostIsNamedAnew) {
    TempDir data;
    NamingRun by_address("127.0.0.1");
    ASSERT_TRUE(by_address.StartAndWait({"-u", data.str()}));
    ASSERT_EQ(by_address.Client({"bind_new_context", "top"}).code, 0);
    ASSERT_EQ(by_address.Client({"bind_new_context", "top/below"}).code, 0);
    by_address.Service().Kill();

    NamingRun by_name("localhost");  // another port as well
    ASSERT_TRUE(by_name.StartAndWait({"-u", data.str()}));
    EXPECT_THAT(by_name.Client({"list", "top"}).out, HasSubstr("below/"));
}

TEST(NamingService, KeepsItsDataPerPort) {
    TempDir base;
    NamingRun first;
    NamingRun second;
    for (NamingRun* run : {&first, &second}) {
        run->Options().env["QV_NAMING_DATA"] = base.str();
        ASSERT_TRUE(run->StartAndWait());
    }
    ASSERT_EQ(first.Client({"bind_new_context", "only_here"}).code, 0);
    EXPECT_THAT(second.Client({"list"}).out, Not(HasSubstr("only_here")));
    EXPECT_TRUE(
        std::filesystem::exists(base.path() / ("naming-" + std::to_string(first.Port())) / "omninames.dat"));
    EXPECT_TRUE(
        std::filesystem::exists(base.path() / ("naming-" + std::to_string(second.Port())) / "omninames.dat"));
}

TEST(NamingService, WritesItsProcessId) {
    NamingRun run;
    ASSERT_TRUE(run.StartAndWait({"-p", "../naming.pid"}));
    EXPECT_EQ(ReadFile(run.Dir().File("naming.pid")), std::to_string(run.Service().pid()) + "\n");
}

TEST(NamingService, ReportsAnOptionWithoutCounterpartOnce) {
    NamingRun run;
    ASSERT_TRUE(
        run.StartAndWait({"-ORBInitRef", "A=corbaloc::h/A", "-orbinitref", "B=corbaloc::h/B", "-m", "0"}));
    EXPECT_TRUE(run.Service().WaitForErr("\"-m\" is not used"));  // the last of them
    const std::string messages = run.Service().Err();
    const auto first = messages.find("\"-ORBInitRef\" is not used");
    EXPECT_NE(first, std::string::npos) << messages;
    EXPECT_EQ(messages.find("\"-ORBInitRef\" is not used", first + 1), std::string::npos) << messages;
}

TEST(NamingService, IgnoresTheConfigurationFileOfTheOrb) {
    NamingRun run;
    // Silenced messages would hide the reference, another end point would move the service.
    run.Options().env["OMNIORB_CONFIG"] =
        run.Dir().Write("omniORB.cfg", "traceLevel = 0\nendPoint = giop:tcp::0\n");
    run.Options().env["ORBtraceLevel"] = "0";
    ASSERT_TRUE(run.StartAndWait());
    EXPECT_EQ(run.Client({"list"}).code, 0);
}

}  // namespace
}  // namespace qv_test
