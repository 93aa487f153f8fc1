#include "orb/ssl/credential_source.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "orb/ssl/ssl_error.h"
#include "tests/support/certificates/test_authority.h"

namespace {

using namespace qv_test;

class CredentialSourceTest : public ::testing::Test {
  protected:
    CredentialSourceTest() {
        qv_ssl::SslSettings settings;
        settings.certificate_file = files.certificate;
        settings.private_key_file = files.key;
        settings.pass_phrase = files.pass_phrase;
        source = std::make_unique<qv_ssl::CredentialSource>(
            settings, [this] { return now; }, [this](const std::string& line) { said.push_back(line); });
    }

    bool Shows(const IssuedFiles& expected) {
        return X509_cmp(source->Current()->certificate.get(), expected.identity.certificate.get()) == 0;
    }
    void PassASecond() { now += std::chrono::seconds(1); }

    TempDir dir;
    TestAuthority authority{dir, "authority"};
    IssuedFiles files = authority.Issue("agent", "phrase");
    IssuedFiles next = authority.Issue("next", "phrase");
    qv_ssl::CredentialSource::Time now{};
    std::vector<std::string> said;
    std::unique_ptr<qv_ssl::CredentialSource> source;
};

TEST_F(CredentialSourceTest, FilesThatStayAreNotReadAgain) {
    const auto first = source->Current();
    PassASecond();
    EXPECT_EQ(source->Current(), first);
    EXPECT_TRUE(said.empty());
}

TEST_F(CredentialSourceTest, ANewPairIsTakenAtTheNextLook) {
    std::filesystem::rename(next.key, files.key);
    std::filesystem::rename(next.certificate, files.certificate);
    EXPECT_TRUE(Shows(files)) << "less than a second ago";
    PassASecond();
    EXPECT_TRUE(Shows(next));
    ASSERT_EQ(said.size(), 1u);
    EXPECT_EQ(said[0].find("the new certificate in " + files.certificate + " is shown to peers from now on"),
              0u);
}

TEST_F(CredentialSourceTest, WhoHoldsTheFormerOneKeepsIt) {
    const auto held = source->Current();
    std::filesystem::rename(next.key, files.key);
    std::filesystem::rename(next.certificate, files.certificate);
    PassASecond();
    EXPECT_TRUE(Shows(next));
    EXPECT_EQ(X509_cmp(held->certificate.get(), files.identity.certificate.get()), 0);
}

TEST_F(CredentialSourceTest, HalfAReplacementIsSaidOnceAndTheFormerPairStays) {
    std::filesystem::rename(next.certificate, files.certificate);
    for (int i = 0; i < 3; ++i) {
        PassASecond();
        EXPECT_TRUE(Shows(files));
    }
    ASSERT_EQ(said.size(), 1u);
    EXPECT_NE(said[0].find("its key is not that of the certificate in "), std::string::npos) << said[0];
    EXPECT_EQ(said[0].find("phrase"), std::string::npos);
    std::filesystem::rename(next.key, files.key);
    PassASecond();
    EXPECT_TRUE(Shows(next));
}

TEST_F(CredentialSourceTest, AFileThatIsGoneForAWhileCostsNothing) {
    std::filesystem::rename(files.key, dir.File("aside"));
    PassASecond();
    EXPECT_TRUE(Shows(files));
    std::filesystem::rename(dir.File("aside"), files.key);
    PassASecond();
    EXPECT_TRUE(Shows(files));
    EXPECT_EQ(said.size(), 2u);
}

TEST_F(CredentialSourceTest, TheFirstPairMustBeUsable) {
    qv_ssl::SslSettings settings;
    settings.certificate_file = files.certificate;
    settings.private_key_file = dir.File("none");
    EXPECT_THROW(qv_ssl::CredentialSource(
                     settings, [] { return qv_ssl::CredentialSource::Time{}; }, [](const std::string&) {}),
                 qv_ssl::SslError);
}

}  // namespace
