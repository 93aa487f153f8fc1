#include <ace/Service_Config.h>
#include <ace/Service_Object.h>
#include <ace/Service_Types.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "orb/ssl/service_config_file.h"
#include "tests/support/temp_dir.h"
#include "tools/certificates/credential_files.h"
#include "tools/ssl/agent_view.h"

namespace qv_test {
namespace {

using ::testing::ElementsAre;

std::vector<std::string> g_taken;

/// Stands in the place of the factory, and keeps the options that it is given.
class OptionTaker : public ACE_Service_Object {
  public:
    int init(int argc, ACE_TCHAR* argv[]) override {
        g_taken.assign(argv, argv + argc);
        return 0;
    }
};

ACE_Service_Object* MakeTaker(ACE_Service_Object_Exterminator* exterminator) {
    if (exterminator != nullptr) {
        *exterminator = [](void* object) { delete static_cast<OptionTaker*>(object); };
    }
    return new OptionTaker;
}

/// The three who read a profile read the same out of the form in which it is written.
TEST(ProfileForm, IsReadAlikeByAceAndTheOrbAndTheAgent) {
    qv_tools::ProfileOptions options;
    options.authenticate = "SERVER_AND_CLIENT";
    options.pass_phrase = "pass=phrase/+-1";
    options.key = "/etc/agent/key.pem";
    options.certificate = "/etc/agent/certificate.pem";
    options.authorities = "/etc/agent/authorities.pem";
    options.no_protection = true;
    const std::string text = ProfileText(options);

    // A factory of this process instead of one in a library; the rest of the file stays.
    const std::string dynamic =
        "dynamic SSLIOP_Factory Service_Object * TAO_SSLIOP:_make_TAO_SSLIOP_Protocol_Factory()";
    std::string forAce = text;
    ASSERT_EQ(0u, forAce.find(dynamic));
    forAce.replace(0, dynamic.size(), "static SSLIOP_Factory");
    forAce.erase(forAce.find("static Resource_Factory"),
                 forAce.find('#') - forAce.find("static Resource_Factory"));
    const TempDir dir;
    const std::string file = dir.Write("ace.conf", forAce);
    ACE_Static_Svc_Descriptor descriptor{"SSLIOP_Factory", ACE_SVC_OBJ_T, &MakeTaker,
                                         ACE_Service_Type::DELETE_THIS | ACE_Service_Type::DELETE_OBJ, 1};
    ASSERT_EQ(0, ACE_Service_Config::process_directive(descriptor));
    ASSERT_EQ(0, ACE_Service_Config::process_file(file.c_str()));
    EXPECT_THAT(g_taken, ElementsAre("-SSLPrivateKeyPasswd", options.pass_phrase, "-SSLPrivateKey",
                                     "PEM:" + options.key, "-SSLCertificate", "PEM:" + options.certificate,
                                     "-SSLCAfile", "PEM:" + options.authorities, "-SSLAuthenticate",
                                     "SERVER_AND_CLIENT", "-SSLNoProtection"));

    const qv_ssl::ServiceConfig orb = qv_ssl::ParseServiceConfig(text, "profile");
    ASSERT_TRUE(orb.ssl);
    EXPECT_EQ(options.pass_phrase, orb.ssl->pass_phrase);
    EXPECT_EQ(options.key, orb.ssl->private_key_file);
    EXPECT_EQ(options.certificate, orb.ssl->certificate_file);
    EXPECT_EQ(options.authorities, orb.ssl->authority_file);
    EXPECT_TRUE(orb.ssl->no_protection);
    EXPECT_TRUE(orb.remarks.empty());

    const qv_tools::AgentView agent = qv_tools::ViewOfAgent(text);
    EXPECT_EQ(options.pass_phrase, agent.pass_phrase);
    EXPECT_EQ(options.key, agent.private_key_file);
    EXPECT_EQ(options.certificate, agent.certificate_file);
    EXPECT_EQ(options.authorities, agent.authority_file);
}

}  // namespace
}  // namespace qv_test
