#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include "tests/support/certificates/test_authority.h"
#include "tests/support/temp_dir.h"
#include "tools/ssl/ssl_check.h"

namespace qv_tools {

inline void PrintTo(const Finding& finding, std::ostream* out) {
    *out << (finding.level == Level::kOk        ? "ok"
             : finding.level == Level::kWarning ? "warning"
                                                : "error")
         << " " << finding.check << " " << finding.file << ": " << finding.text;
}

}  // namespace qv_tools

namespace qv_test {

/// A sound set-up, to be spoilt, and what the check says of it.
class SslCheckTest : public ::testing::Test {
  protected:
    static constexpr std::time_t kDay = 24L * 60 * 60;  // seconds

    std::vector<qv_tools::Finding> Check() {
        WriteProfile(m_dir, "agent.conf", m_options);
        return CheckProfileAsItIs();
    }
    std::vector<qv_tools::Finding> CheckProfileAsItIs() {
        qv_tools::Findings findings;
        CheckSsl({m_profile, m_dir.File("share"), m_serves}, m_time, findings);
        return findings.all();
    }

    std::string WriteList(const std::string& name, const std::vector<IssuedFiles>& revoked,
                          Holds holds = Holds::kNow) {
        return m_authority.WriteRevocationList("share/etc/ssl/nbi/crl/" + name, revoked, holds);
    }

    /// Those that aren't just fine.
    static std::vector<qv_tools::Finding> Troubles(const std::vector<qv_tools::Finding>& all) {
        std::vector<qv_tools::Finding> troubles;
        for (const qv_tools::Finding& finding : all) {
            if (finding.level != qv_tools::Level::kOk) {
                EXPECT_NE("", finding.advice) << finding.text;
                troubles.push_back(finding);
            }
        }
        return troubles;
    }

    /// A finding of that kind, whose text holds `text`.
    static auto Is(qv_tools::Level level, const std::string& check, const std::string& text) {
        using ::testing::AllOf;
        using ::testing::Field;
        return AllOf(Field("level", &qv_tools::Finding::level, level),
                     Field("check", &qv_tools::Finding::check, check),
                     Field("text", &qv_tools::Finding::text, ::testing::HasSubstr(text)));
    }
    static auto Ok(const std::string& check, const std::string& text) {
        return Is(qv_tools::Level::kOk, check, text);
    }
    static auto Warning(const std::string& check, const std::string& text) {
        return Is(qv_tools::Level::kWarning, check, text);
    }
    static auto Error(const std::string& check, const std::string& text) {
        return Is(qv_tools::Level::kError, check, text);
    }

    static void SetMode(const std::string& file, unsigned mode) {
        std::filesystem::permissions(file, static_cast<std::filesystem::perms>(mode));
    }

    TempDir m_dir;
    TestAuthority m_authority{m_dir, "authority"};
    IssuedFiles m_agent = m_authority.Issue("agent", "the-pass-phrase");
    qv_tools::ProfileOptions m_options = OptionsFor(m_agent);
    std::string m_profile = m_dir.File("agent.conf");
    bool m_serves = true;
    qv_tools::CheckTime m_time{std::time(nullptr), 30};
};

}  // namespace qv_test
