// What ACE's own service configurator makes of the same files.

#include <ace/Service_Config.h>
#include <ace/Service_Object.h>
#include <gtest/gtest.h>

#include "orb/ssl/service_config_file.h"
#include "tests/support/temp_dir.h"

namespace {

std::vector<std::string> g_arguments;

class Recorder : public ACE_Service_Object {
  public:
    int init(int argc, ACE_TCHAR* argv[]) override {
        g_arguments.assign(argv, argv + argc);
        return 0;
    }
};

void Gone(void*) {}

ACE_Service_Object* MakeRecorder(ACE_Service_Object_Exterminator* exterminator) {
    static Recorder recorder;
    if (exterminator != nullptr) {
        *exterminator = &Gone;
    }
    return &recorder;
}

ACE_STATIC_SVC_DEFINE(SSLIOP_Factory_Descriptor, ACE_TEXT("SSLIOP_Factory"), ACE_SVC_OBJ_T, &MakeRecorder,
                      ACE_Service_Type::DELETE_THIS, 0)

// ACE's services, which it keeps until they are closed.
class Services {
  public:
    Services() {
        ACE_Service_Config::open(ACE_TEXT("test"), ACE_DEFAULT_LOGGER_KEY, true, true, true);
        EXPECT_EQ(ACE_Service_Config::process_directive(ace_svc_desc_SSLIOP_Factory_Descriptor), 0);
    }
    ~Services() { ACE_Service_Config::close(); }
    Services(const Services&) = delete;
    Services& operator=(const Services&) = delete;
};

// ACE reads the file; its words, or nothing when it can't.
std::vector<std::string> AsAceReadsIt(const std::string& file) {
    const Services services;
    g_arguments.clear();
    EXPECT_EQ(ACE_Service_Config::process_file(file.c_str()), 0);
    return g_arguments;
}

TEST(ServiceConfigAce, ADirectiveOnOneLineSaysTheSameToBoth) {
    const qv_test::TempDir dir;
    const std::string file = dir.Write(
        "the.conf",
        "# for both\nstatic SSLIOP_Factory \"-SSLAuthenticate SERVER_AND_CLIENT -SSLPrivateKeyPasswd secret "
        "-SSLPrivateKey PEM:/k.pem -SSLCertificate PEM:/c.pem -SSLCAfile PEM:/a.pem\"\n");
    const std::vector<std::string> words = {
        "-SSLAuthenticate", "SERVER_AND_CLIENT", "-SSLPrivateKeyPasswd", "secret",     "-SSLPrivateKey",
        "PEM:/k.pem",       "-SSLCertificate",   "PEM:/c.pem",           "-SSLCAfile", "PEM:/a.pem"};
    EXPECT_EQ(AsAceReadsIt(file), words);
    const qv_ssl::ServiceConfig config = qv_ssl::ReadServiceConfigFile(file);
    ASSERT_TRUE(config.ssl);
    EXPECT_EQ(config.ssl->pass_phrase, "secret");
    EXPECT_EQ(config.ssl->private_key_file, "/k.pem");
    EXPECT_EQ(config.ssl->certificate_file, "/c.pem");
    EXPECT_EQ(config.ssl->authority_file, "/a.pem");
    EXPECT_EQ(config.ssl->authenticate, qv_ssl::Authenticate::kServerAndClient);
}

}  // namespace
