// What an OSS and an operator see when all is well.
#include <gmock/gmock.h>
#include <signal.h>

#include <filesystem>
#include <set>
#include <sstream>

#include "tests/e2e/harness/deployment.h"
#include "tests/support/wait_for.h"

namespace qv_e2e {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

std::multiset<std::string> ElementNames(const std::string& table) {
    std::multiset<std::string> names;
    std::istringstream lines(table);
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind("NE-", 0) == 0) {
            names.insert(line.substr(0, line.find(' ')));
        }
    }
    return names;
}

class FirstCall : public testing::Test {
  protected:
    void SetUp() override {
        deployment.StartNaming();
        deployment.StartAgent();
    }

    Deployment deployment;
};

TEST_F(FirstCall, AnOssFindsTheAgentLogsInReadsTheInventoryAndLogsOut) {
    const auto oss = deployment.Oss({"session"});
    EXPECT_EQ(oss.code, 0) << oss.err;
    EXPECT_THAT(oss.out, AllOf(HasSubstr("found Zorvex/KLV"),
                               HasSubstr("managers        Account, Attribute, EMS, ManagedElement"),
                               HasSubstr("300 elements in 3 replies"), HasSubstr("5. logged out")));
    EXPECT_EQ(oss.err, "");
    EXPECT_TRUE(deployment.agent().WaitForOut("(the OSS logged out)"));
}

TEST_F(FirstCall, EachRequestPassesTheInterceptor) {
    ASSERT_EQ(deployment.Oss({"list", "--page", "100"}).code, 0);
    EXPECT_TRUE(qv_test::WaitFor([&] {
        return deployment.Log("CORBAAgentStatisticInfo.dat") ==
               "endSession = 1\ngetAllManagedElements = 1\ngetEmsSession = 1\ngetLength = 1\n"
               "getManager = 1\nnext_n = 2\n";
    })) << deployment.Log("CORBAAgentStatisticInfo.dat");
}

TEST_F(FirstCall, BrowsingShowsTheNameOfTheInterface) {
    const auto oss = deployment.Oss({"browse"}, nullptr);
    EXPECT_EQ(oss.code, 0) << oss.err;
    EXPECT_THAT(oss.out, HasSubstr("TMF_MTNM (Class)\n"));
    EXPECT_THAT(oss.out, HasSubstr("ZORVEX (Vendor)\n"));
    EXPECT_THAT(oss.out, HasSubstr("Zorvex/KLV (EmsInstance)\n"));
    EXPECT_THAT(oss.out, HasSubstr("2.0 (Version)\n"));
    EXPECT_THAT(oss.out, HasSubstr("Zorvex/KLV (EmsSessionFactory_I)  -> object\n"));
}

TEST_F(FirstCall, PagesOfAnySizeYieldEachElementOnce) {
    for (const char* page : {"1", "7", "299", "300", "301"}) {
        const auto oss = deployment.Oss({"list", "--page", page});
        ASSERT_EQ(oss.code, 0) << oss.err;
        const auto names = ElementNames(oss.out);
        EXPECT_EQ(names.size(), 300U) << page;
        EXPECT_EQ(std::set<std::string>(names.begin(), names.end()).size(), 300U) << page;
    }
}

TEST_F(FirstCall, ShowsOneElementAndSaysWhenThereIsNone) {
    const auto found = deployment.Oss({"show", "NE-00007"});
    EXPECT_EQ(found.code, 0) << found.err;
    EXPECT_THAT(found.out, AllOf(HasSubstr("NE-00007\n"), HasSubstr("Gera-001"), HasSubstr("SerialNumber")));
    const auto missing = deployment.Oss({"show", "NE-99999"});
    EXPECT_EQ(missing.code, 11);
    EXPECT_THAT(missing.err, HasSubstr("NE-99999"));
}

TEST_F(FirstCall, PingsAreMeasured) {
    const auto oss = deployment.Oss({"ping"});
    EXPECT_EQ(oss.code, 0) << oss.err;
    EXPECT_THAT(oss.out, testing::ContainsRegex("ping 5: [0-9]+\\.[0-9]+ ms"));
}

TEST_F(FirstCall, ThePasswordIsInNoFileAndOnNoScreen) {
    ASSERT_EQ(deployment.Oss({"session"}).code, 0);
    ASSERT_EQ(deployment.Oss({"login"}, "a wrong secret").code, 6);
    for (const char* secret : {Deployment::kPassword, "a wrong secret"}) {
        EXPECT_THAT(deployment.agent().Out() + deployment.agent().Err(), Not(HasSubstr(secret)));
        for (const auto& file : std::filesystem::recursive_directory_iterator(deployment.dir().path())) {
            if (file.is_regular_file()) {
                EXPECT_THAT(qv_test::ReadFile(file.path()), Not(HasSubstr(secret))) << file.path();
            }
        }
    }
}

TEST_F(FirstCall, TheAgentStopsCleanlyAndTakesItsNameAlong) {
    deployment.agent().Signal(SIGTERM);
    EXPECT_EQ(deployment.agent().Wait(), 0);
    EXPECT_THAT(deployment.agent().Out(), HasSubstr("\nstopped\n"));
    EXPECT_THAT(deployment.Oss({"browse"}).out, HasSubstr("(nothing is bound)"));
}

TEST_F(FirstCall, ASecondSignalEndsTheAgentAtOnce) {
    deployment.agent().Signal(SIGINT);
    ASSERT_TRUE(deployment.agent().WaitForOut("stopping"));
    deployment.agent().Signal(SIGINT);
    const auto code = deployment.agent().Wait(std::chrono::seconds(10));
    ASSERT_TRUE(code);
    EXPECT_EQ(*code, 128 + SIGINT);
}

}  // namespace
}  // namespace qv_e2e
