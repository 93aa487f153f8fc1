// The naming service by SSL.
#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "naming_run.h"
#include "tests/support/certificates/test_authority.h"
#include "tests/support/wait_for.h"

namespace {

using namespace qv_test;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class NamingSsl : public testing::Test {
  protected:
    /// Runs nameclt by SSL with the certificate of `files`; null: with none.
    RunResult SslClient(const std::vector<std::string>& arguments, const IssuedFiles* files) {
        ChildOptions options;
        options.env["LD_PRELOAD"] = "libomnisslTP4.so.2";
        std::vector<std::string> command{
            QV_NAMECLT,
            "-ORBclientTransportRule",
            "* ssl",
            "-ORBsslCAFile",
            authority.File(),
            "-ORBInitRef",
            "NameService=corbaloc:ssliop:127.0.0.1:" + std::to_string(run.SslPort()) + "/NameService"};
        if (files != nullptr) {
            const std::string both =
                dir.Write("both.pem", ReadFile(files->certificate) + ReadFile(files->key));
            command.insert(command.end(), {"-ORBsslKeyFile", both, "-ORBsslKeyPassword", files->pass_phrase});
        }
        command.insert(command.end(), arguments.begin(), arguments.end());
        return qv_test::Run(command, options);
    }
    RunResult SslClient(const std::vector<std::string>& arguments) { return SslClient(arguments, &client); }

    bool StartWith(const qv_tools::ProfileOptions& options) {
        run.UseSsl(WriteProfile(dir, "ssl.conf", options));
        return run.StartAndWait();
    }
    /// What a start with these options says that fails.
    std::string Refusal(const qv_tools::ProfileOptions& options) {
        run.UseSsl(WriteProfile(dir, "ssl.conf", options));
        ChildProcess& service = run.Start();
        EXPECT_EQ(service.Wait(), 1);
        EXPECT_EQ(service.Out(), "");
        const std::string said = service.Err();
        EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
        EXPECT_THAT(said, Not(HasSubstr("secret")));
        return said;
    }
    static std::string Contents(const std::string& file) {
        std::ifstream stream(file);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    TempDir dir;
    TestAuthority authority{dir, "authority"};
    IssuedFiles server = authority.Issue("server", "server-secret");
    IssuedFiles client = authority.Issue("client", "client-secret");
    NamingRun run;
};

TEST_F(NamingSsl, NamesAreBoundAndFound) {
    ASSERT_TRUE(StartWith(OptionsFor(server)));
    EXPECT_THAT(run.Service().Out(), HasSubstr("serving corbaloc:ssliop:127.0.0.1:" +
                                               std::to_string(run.SslPort()) + "/NameService, bindings in "));
    EXPECT_EQ(SslClient({"bind_new_context", "a"}).code, 0) << run.Service().Err();
    EXPECT_EQ(SslClient({"list"}).out, "a/\n");
    EXPECT_EQ(run.Service().Err(), "");
}

TEST_F(NamingSsl, TheReferenceCarriesBothEndPoints) {
    ASSERT_TRUE(StartWith(OptionsFor(server)));
    const std::string text = qv_test::Run({QV_CATIOR, ReadFile(run.IorFile())}).out;
    EXPECT_THAT(text, AllOf(HasSubstr("127.0.0.1 " + std::to_string(run.Port())),
                            HasSubstr("TAG_SSL_SEC_TRANS port = " + std::to_string(run.SslPort()))));
}

TEST_F(NamingSsl, WhatComesInClearIsRefused) {
    ASSERT_TRUE(StartWith(OptionsFor(server)));
    const RunResult result = run.Client({"list"});
    EXPECT_NE(result.code, 0);
    EXPECT_THAT(result.out + result.err, HasSubstr("NO_PERMISSION"));
    EXPECT_TRUE(run.Service().WaitForErr("sent a request in clear to the plain port, which was refused"));
}

TEST_F(NamingSsl, WithNoProtectionBothPortsServe) {
    qv_tools::ProfileOptions options = OptionsFor(server);
    options.no_protection = true;
    ASSERT_TRUE(StartWith(options));
    EXPECT_EQ(run.Client({"bind_new_context", "a"}).code, 0);
    EXPECT_EQ(SslClient({"list"}).out, "a/\n");
    EXPECT_EQ(run.Service().Err(), "");
}

TEST_F(NamingSsl, WhoShowsNoGoodCertificateIsRefusedAndNamed) {
    ASSERT_TRUE(StartWith(OptionsFor(server)));
    EXPECT_NE(SslClient({"list"}, nullptr).code, 0);
    EXPECT_TRUE(run.Service().WaitForErr("shows no certificate; give it one of a known authority"));
    const TestAuthority other(dir, "other");
    const IssuedFiles stranger = other.Issue("stranger");
    EXPECT_NE(SslClient({"list"}, &stranger).code, 0);
    EXPECT_TRUE(run.Service().WaitForErr("shows a certificate of an authority that is not known here"));
    EXPECT_EQ(SslClient({"list"}).code, 0);
}

TEST_F(NamingSsl, ThePassPhraseStaysInItsFile) {
    ASSERT_TRUE(StartWith(OptionsFor(server)));
    for (const pid_t pid : {run.Service().pid(), run.ServerPid()}) {
        for (const char* file : {"/cmdline", "/environ"}) {
            const std::string text = Contents("/proc/" + std::to_string(pid) + file);
            EXPECT_FALSE(text.empty());
            EXPECT_EQ(text.find("secret"), std::string::npos) << file;
        }
    }
}

TEST_F(NamingSsl, BindingsSurviveTheStepToSsl) {
    ASSERT_TRUE(run.StartAndWait());
    EXPECT_EQ(run.Client({"bind_new_context", "a"}).code, 0);
    run.Service().Signal(SIGTERM);
    EXPECT_EQ(run.Service().Wait(), 0);
    ASSERT_TRUE(StartWith(OptionsFor(server)));
    EXPECT_EQ(SslClient({"list"}).out, "a/\n");
    run.Service().Signal(SIGTERM);
    EXPECT_EQ(run.Service().Wait(), 0);
}

TEST_F(NamingSsl, AFileThatCantBeUsedStopsTheStartInOneSentence) {
    qv_tools::ProfileOptions options = OptionsFor(server);
    options.pass_phrase = "wrong";
    EXPECT_THAT(Refusal(options),
                HasSubstr("SSL can't be set up: the private key file " + server.key +
                          " can't be used: the pass phrase of -SSLPrivateKeyPasswd does not open it"));
    options = OptionsFor(server);
    options.key = client.key;
    options.pass_phrase = client.pass_phrase;
    EXPECT_THAT(Refusal(options),
                HasSubstr("its key is not that of the certificate in " + server.certificate));
    options = OptionsFor(server);
    options.certificate = dir.File("none.pem");
    EXPECT_THAT(Refusal(options),
                HasSubstr(dir.File("none.pem") + " can't be used: No such file or directory"));
    EXPECT_TRUE(PortIsFree(run.Port()));
    EXPECT_FALSE(std::filesystem::exists(run.IorFile()));
}

TEST_F(NamingSsl, AMissingLibraryStopsTheStart) {
    run.Options().env["QV_NAMING_SSL_LIBRARY"] = "/no/such/library.so";
    EXPECT_THAT(Refusal(OptionsFor(server)),
                HasSubstr("QV_NAMING_SSL_LIBRARY names \"/no/such/library.so\""));
}

TEST_F(NamingSsl, AnSslPortInUseStopsTheStart) {
    run.UseSsl(WriteProfile(dir, "ssl.conf", server));
    const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(run.SslPort()));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ASSERT_EQ(bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(listen(fd, 1), 0);
    EXPECT_THAT(Refusal(OptionsFor(server)),
                HasSubstr("127.0.0.1:" + std::to_string(run.SslPort()) + " is in use"));
    close(fd);
}

TEST_F(NamingSsl, ItsOwnCertificateOfAnotherAuthorityDoesNotStopTheStart) {
    const TestAuthority other(dir, "other");
    qv_tools::ProfileOptions options = OptionsFor(other.Issue("foreign"));
    options.authorities = authority.File();
    EXPECT_TRUE(StartWith(options));
}

TEST_F(NamingSsl, ANewCertificateIsTakenWithoutARestart) {
    ASSERT_TRUE(StartWith(OptionsFor(server)));
    EXPECT_EQ(SslClient({"list"}).code, 0);
    const IssuedFiles successor = authority.Issue("successor", server.pass_phrase);
    std::filesystem::rename(successor.key, server.key);
    std::filesystem::rename(successor.certificate, server.certificate);
    EXPECT_TRUE(WaitFor([&] {
        return SslClient({"list"}).code == 0 &&
               run.Service().Err().find("is shown to peers from now on") != std::string::npos;
    })) << run.Service().Err();
}

}  // namespace
