#include <json/json.h>
#include <sys/stat.h>

#include <sstream>

#include "tests/support/child_process.h"
#include "tests/unit/tools/ssl_check_fixture.h"

namespace qv_test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

namespace fs = std::filesystem;

class QvSsl : public SslCheckTest {
  protected:
    RunResult Ssl(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), QV_SSL_TOOL);
        ChildOptions options;
        options.env["_APP_SHARE_DIR"] = m_dir.File("share");
        options.env["QV_AGENT_CONFIG"] = m_config;
        options.env["QV_CFG_DIR"] = std::nullopt;
        return qv_test::Run(arguments, options);
    }
    RunResult CheckThe(const std::string& profile) { return Ssl({"check", "--profile", profile}); }

    std::vector<std::string> FilesOf(const std::string& directory) {
        std::vector<std::string> names;
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(directory)) {
            if (entry.is_regular_file()) {
                names.push_back(fs::relative(entry.path(), directory).string());
            }
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    std::optional<std::string> m_config;
};

TEST_F(QvSsl, ASoundSetUpEndsWithZero) {
    const RunResult result = CheckThe(WriteProfile(m_dir, "agent.conf", m_options));
    EXPECT_EQ(0, result.code) << result.out;
    EXPECT_EQ("", result.err);
    EXPECT_THAT(result.out, HasSubstr("ok       key          " + m_agent.key + ": the key can be loaded"));
    EXPECT_THAT(result.out, ::testing::EndsWith(m_profile + ": 0 errors, 0 warnings\n"));
}

TEST_F(QvSsl, WarningsEndWithOneAndErrorsWithTwo) {
    m_options.no_protection = true;
    const RunResult warned = CheckThe(WriteProfile(m_dir, "agent.conf", m_options));
    EXPECT_EQ(1, warned.code);
    EXPECT_THAT(warned.out, HasSubstr("warning  option       "));
    EXPECT_THAT(warned.out, HasSubstr("\n                      -> Take it out, unless clients without SSL"));
    EXPECT_THAT(warned.out, HasSubstr("0 errors, 1 warning\n"));
    m_options.pass_phrase = "wrong";
    const RunResult failed = CheckThe(WriteProfile(m_dir, "agent.conf", m_options));
    EXPECT_EQ(2, failed.code);
    EXPECT_THAT(failed.out, HasSubstr("1 error, 1 warning\n"));
}

TEST_F(QvSsl, DaysOfWarningCanBeChosen) {
    WriteProfile(m_dir, "agent.conf", m_options);
    EXPECT_EQ(1, Ssl({"check", "--profile", m_profile, "--warn-days", "101"}).code);
    EXPECT_EQ(0, Ssl({"check", "--profile", m_profile, "--warn-days", "90"}).code);
    EXPECT_NE(0, Ssl({"check", "--profile", m_profile, "--warn-days", "soon"}).code);
}

TEST_F(QvSsl, JsonIsForScripts) {
    WriteList("a.crl", {m_agent});
    WriteProfile(m_dir, "agent.conf", m_options);
    const RunResult result = Ssl({"check", "--json", "--profile", m_profile});
    EXPECT_EQ(2, result.code);
    Json::Value root;
    std::istringstream text(result.out);
    ASSERT_TRUE(Json::parseFromStream(Json::CharReaderBuilder(), text, &root, nullptr)) << result.out;
    EXPECT_EQ(m_profile, root["profile"].asString());
    EXPECT_EQ("errors", root["result"].asString());
    int errors = 0;
    int periods = 0;
    for (const Json::Value& finding : root["findings"]) {
        periods += finding.isMember("days_left") ? 1 : 0;
        if (finding["level"] == "error") {
            ++errors;
            EXPECT_EQ("revocation", finding["check"].asString());
            EXPECT_EQ(m_dir.File("share/etc/ssl/nbi/crl/a.crl"), finding["file"].asString());
            EXPECT_THAT(finding["text"].asString(), HasSubstr("was revoked on"));
            EXPECT_THAT(finding["advice"].asString(), Not(IsEmpty()));
        }
    }
    EXPECT_EQ(1, errors);
    EXPECT_EQ(2, periods);
}

TEST_F(QvSsl, TheProfileComesFromTheConfiguration) {
    WriteProfile(m_dir, "agent.conf", m_options);
    const std::string used = "[agent]\nSSLMode = 1\nSSL_Profile = \"" + m_profile + "\"\n";
    const std::string config = m_dir.Write("agent.toml", used);
    EXPECT_EQ(0, Ssl({"check", "--config", config}).code) << Ssl({"check", "--config", config}).out;
    m_config = config;
    EXPECT_EQ(0, Ssl({"check"}).code);
    m_dir.Write("agent.toml", "[agent]\nSSL_Profile = \"" + m_profile + "\"\n");
    const RunResult unused = Ssl({"check"});
    EXPECT_EQ(1, unused.code);
    EXPECT_THAT(unused.out, HasSubstr("SSLMode is 0, so SSL isn't used"));
}

TEST_F(QvSsl, WithoutAProfileThereIsNothingToCheck) {
    const RunResult none = Ssl({"check"});
    EXPECT_EQ(2, none.code);
    EXPECT_THAT(none.err, StartsWith("qv_ssl: which profile?"));
    const RunResult empty = Ssl({"check", "--config", m_dir.Write("agent.toml", "[agent]\nSSLMode = 1\n")});
    EXPECT_EQ(2, empty.code);
    EXPECT_THAT(empty.err, HasSubstr("has no SSL_Profile"));
    const RunResult missing = Ssl({"check", "--config", m_dir.File("none.toml")});
    EXPECT_EQ(2, missing.code);
    EXPECT_THAT(missing.err, HasSubstr("none.toml"));
}

TEST_F(QvSsl, ACommandIsNeeded) {
    EXPECT_NE(0, Ssl({}).code);
    EXPECT_NE(0, Ssl({"break"}).code);
    EXPECT_EQ(0, Ssl({"--help"}).code);
}

TEST_F(QvSsl, WhatItMakesPassesItsOwnCheck) {
    const std::string made = m_dir.File("new/trial");
    const RunResult result = Ssl({"make", "--dir", made, "--days", "40"});
    EXPECT_EQ(0, result.code) << result.err;
    EXPECT_EQ(made + "/server.conf\n" + made + "/client.conf\n", result.out);
    EXPECT_THAT(FilesOf(made), ElementsAre("authority-key.pem", "authority.pem", "client-key.pem",
                                           "client.conf", "client.pem", "etc/ssl/nbi/crl/authority.crl",
                                           "server-key.pem", "server.conf", "server.pem"));
    for (const char* const name : {"/server.conf", "/client.conf"}) {
        const RunResult check = Ssl({"check", "--profile", made + name, "--share", made});
        EXPECT_EQ(0, check.code) << check.out;
        EXPECT_THAT(check.out, ::testing::ContainsRegex("valid for (39|40) more days"));
    }
    EXPECT_EQ(1, Ssl({"check", "--profile", made + "/server.conf", "--warn-days", "41"}).code);
}

TEST_F(QvSsl, SecretsThatItMakesAreForTheirOwner) {
    const std::string made = m_dir.File("trial");
    ASSERT_EQ(0, Ssl({"make", "--dir", made, "--refused"}).code);
    for (const std::string& name : FilesOf(made)) {
        const bool secret = name.find("-key") != std::string::npos || name.find(".conf") != std::string::npos;
        EXPECT_EQ(secret ? fs::perms(0600) : fs::perms(0644), fs::status(made + "/" + name).permissions())
            << name;
        if (secret && name.find("authority") == std::string::npos && name.find(".pem") != std::string::npos) {
            EXPECT_THAT(ReadFile(made + "/" + name), HasSubstr("ENCRYPTED"));
        }
    }
    EXPECT_EQ(fs::perms(0700), fs::status(made).permissions());
}

TEST_F(QvSsl, HostsGoIntoTheCertificates) {
    const std::string made = m_dir.File("trial");
    ASSERT_EQ(0, Ssl({"make", "--dir", made, "--host", "ems.example", "--host", "10.1.2.3"}).code);
    const RunResult text = qv_test::Run({"openssl", "x509", "-in", made + "/server.pem", "-noout", "-text"});
    EXPECT_THAT(text.out, HasSubstr("DNS:ems.example, IP Address:10.1.2.3\n"));
}

TEST_F(QvSsl, ClientsToBeRefusedAreWrongInOneWayEach) {
    const std::string made = m_dir.File("trial");
    ASSERT_EQ(0, Ssl({"make", "--dir", made, "--refused"}).code);
    EXPECT_THAT(CheckThe(made + "/stranger.conf").out, HasSubstr("error    chain "));
    EXPECT_THAT(CheckThe(made + "/stranger.conf").out, HasSubstr("1 error, 0 warnings\n"));
    EXPECT_THAT(CheckThe(made + "/expired.conf").out, HasSubstr("error    validity "));
    EXPECT_THAT(CheckThe(made + "/expired.conf").out, HasSubstr("1 error, 0 warnings\n"));
    const RunResult nameless = Ssl({"check", "--client", "--profile", made + "/nameless.conf"});
    EXPECT_EQ(1, nameless.code) << nameless.out;
    EXPECT_THAT(nameless.out, HasSubstr("no -SSLCertificate"));
}

TEST_F(QvSsl, ADirectoryInUseIsLeftAlone) {
    const std::string made = m_dir.Write("trial/keep", "mine");
    const RunResult result = Ssl({"make", "--dir", m_dir.File("trial")});
    EXPECT_EQ(2, result.code);
    EXPECT_EQ("qv_ssl: " + m_dir.File("trial") + " isn't empty; name another directory\n", result.err);
    EXPECT_THAT(FilesOf(m_dir.File("trial")), ElementsAre("keep"));
    for (const fs::directory_entry& entry : fs::directory_iterator(m_dir.path())) {
        EXPECT_THAT(entry.path().filename().string(), Not(StartsWith("trial.")));
    }
    fs::create_directory(m_dir.File("empty"));
    EXPECT_EQ(0, Ssl({"make", "--dir", m_dir.File("empty/")}).code);
}

TEST_F(QvSsl, APathThatAProfileCantHoldIsToldAndNothingStays) {
    const RunResult result = Ssl({"make", "--dir", m_dir.File("two words")});
    EXPECT_EQ(2, result.code);
    EXPECT_THAT(result.err, HasSubstr("holds a character that can't stand in a service configuration file"));
    EXPECT_FALSE(fs::exists(m_dir.File("two words")));
}

}  // namespace
}  // namespace qv_test
