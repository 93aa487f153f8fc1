#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/child_process.h"
#include "tests/support/temp_dir.h"

namespace {

constexpr const char* kOtherId = "arg ORB-id-of-the-other-platform\n";
constexpr const char* kRandomId = "arg ORB-[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f-]{21}\n";
constexpr const char* kOtherAddress = "=192.0.2.99\n";

/// Runs the probe on a configuration of its own, with these directories searched for libraries first.
class PlatformSwap : public testing::Test {
  protected:
    void RunProbe(const std::string& libraries, const std::string& settings = "") {
        qv_test::ChildOptions options;
        options.env["QV_AGENT_CONFIG"] = m_dir.Write(
            "agent.toml",
            "[agent]\nEmsName = 'Own/EMS'\n[platform]\nhost_ip = '192.0.2.1'\nlog_dir = 'log'\n" + settings);
        options.env["QV_LOG_DIR"] = std::nullopt;
        options.env["LD_LIBRARY_PATH"] = libraries.empty() ? std::optional<std::string>() : libraries;
        m_result = qv_test::Run({QV_PROBE}, options);
        EXPECT_EQ(m_result.code, 0) << m_result.err;
    }

    bool Says(const std::string& text) const { return m_result.out.find(text) != std::string::npos; }
    std::string OwnLog() const { return qv_test::ReadFile(m_dir.File("log/corbasys.log")); }

    qv_test::TempDir m_dir;
    qv_test::RunResult m_result;
};

}  // namespace

TEST_F(PlatformSwap, WithoutAnotherPlatformTheStandaloneOneAnswers) {
    RunProbe("");
    EXPECT_THAT(m_result.out, testing::ContainsRegex(kRandomId));
    EXPECT_TRUE(Says("ems Own/EMS\n")) << m_result.out;
    EXPECT_TRUE(Says("=192.0.2.1\n")) << m_result.out;
    EXPECT_TRUE(Says("logs 1\n")) << m_result.out;
    EXPECT_NE(OwnLog().find("a line for the log"), std::string::npos);
    EXPECT_FALSE(Says("other-"));
}

TEST_F(PlatformSwap, AnotherUtilityLibraryTakesItsPlace) {
    RunProbe(QV_OTHER_SELFGOVERNEDUTIL);
    EXPECT_TRUE(Says(kOtherId)) << m_result.out;
    EXPECT_TRUE(Says("ems Own/EMS\n")) << m_result.out;
    EXPECT_TRUE(Says("=192.0.2.1\n")) << m_result.out;
}

TEST_F(PlatformSwap, AnotherBundleManagerTakesItsPlaceWithStoreAndLogService) {
    RunProbe(QV_OTHER_BUNDLEMGR);
    EXPECT_THAT(m_result.out, testing::ContainsRegex(kRandomId));
    EXPECT_TRUE(Says("ems Other/EMS\n")) << m_result.out;
    EXPECT_TRUE(Says(kOtherAddress)) << m_result.out;
    EXPECT_TRUE(Says("other-log a line for the log\n")) << m_result.out;
    EXPECT_EQ(OwnLog(), "");
}

TEST_F(PlatformSwap, AnotherCallChainTakesItsPlace) {
    RunProbe(QV_OTHER_CALLCHAIN);
    EXPECT_TRUE(Says("other-chain MRB\n")) << m_result.out;
    EXPECT_TRUE(Says("ems Own/EMS\n")) << m_result.out;
}

TEST_F(PlatformSwap, TheOwnCallChainRunsOnAnotherBundleManager) {
    RunProbe(QV_OTHER_BUNDLEMGR, "call_chain = true\n");
    EXPECT_EQ(m_result.err, "");
    EXPECT_FALSE(Says("other-chain"));
}

TEST_F(PlatformSwap, AllCanBeReplacedTogether) {
    RunProbe(std::string(QV_OTHER_BUNDLEMGR) + ":" + QV_OTHER_SELFGOVERNEDUTIL + ":" + QV_OTHER_CALLCHAIN);
    EXPECT_TRUE(Says("other-chain MRB\n")) << m_result.out;
    EXPECT_TRUE(Says(kOtherId)) << m_result.out;
    EXPECT_TRUE(Says("ems Other/EMS\n")) << m_result.out;
    EXPECT_TRUE(Says(kOtherAddress)) << m_result.out;
    EXPECT_TRUE(Says("other-log a line for the log\n")) << m_result.out;
}
