// Separate projects, built and run on what is installed.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

#include "tests/integration/install_consume/installation.h"
#include "tests/support/free_port.h"
#include "tests/support/wait_for.h"

namespace qv_test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class InstallConsume : public ::testing::Test {
  protected:
    static void SetUpTestSuite() { s_installation = std::make_unique<Installation>(); }
    static void TearDownTestSuite() { s_installation.reset(); }
    void SetUp() override { ASSERT_TRUE(Installed().Complete()); }

    static const Installation& Installed() { return *s_installation; }

    /// Starts a bundle, has a client talk to it, and sees both end.
    static void ExpectAnswers(const std::string& bundle, const std::string& client,
                              const ChildOptions& options) {
        const TempDir work;
        ChildOptions with_config = options;
        with_config.working_dir = work.str();
        with_config.env["QV_AGENT_CONFIG"] =
            work.Write("agent.toml", "[agent]\nCORBAAgent_Host = \"127.0.0.1\"\nCORBAAgent_Port = " +
                                         std::to_string(FreePort()) + "\n[platform]\nenv_root = \".\"\n");
        const std::string reference = work.File("bundle.ior");
        ChildProcess server({bundle, reference}, with_config);
        ASSERT_TRUE(WaitFor([&] { return !ReadFile(reference).empty() || !server.Running(); }));
        const std::vector<std::string> ior = Words(ReadFile(reference));
        ASSERT_FALSE(ior.empty()) << server.Err();
        const RunResult called = qv_test::Run({client, ior.front(), "hello"}, options);
        EXPECT_EQ(called.code, 0) << called.err;
        EXPECT_EQ(server.Wait(), 0) << server.Err();
        EXPECT_THAT(server.Out(), HasSubstr("heard hello in 2 requests\n"));
    }

  private:
    static std::unique_ptr<Installation> s_installation;
};

std::unique_ptr<Installation> InstallConsume::s_installation;

TEST_F(InstallConsume, CmakeProjectServesAndCallsAnInterfaceOfItsOwn) {
    ASSERT_TRUE(BuildProject(Installed(), "consumer"));
    const std::string consumer = Installed().File("consumer") + "/consumer";
    const std::string reference = Installed().File("host.ior");
    ChildProcess server({consumer, "serve", reference});
    ASSERT_TRUE(WaitFor([&] { return std::filesystem::exists(reference) || !server.Running(); }));
    const std::string ior = ReadFile(reference);
    ASSERT_EQ(ior.rfind("IOR:", 0), 0U) << server.Err();
    RunResult shown;
    EXPECT_TRUE(Succeeds(Installed(), {QV_CATIOR, ior}, &shown));
    EXPECT_THAT(shown.out, HasSubstr("IDL:Greeting/Host:1.0"));

    RunResult called;
    EXPECT_TRUE(Succeeds(Installed(), {consumer, "call", ior}, &called));
    EXPECT_THAT(called.out, HasSubstr("hello world\nnobody: the empty name\n"));
    EXPECT_EQ(server.Wait(), 0) << server.Err();
}

TEST_F(InstallConsume, BundleBuiltWithCmakeAnswersAndNeedsNoMoreThanTheLibrariesToRun) {
    ASSERT_TRUE(BuildProject(Installed(), "bundle"));
    const std::string build = Installed().File("bundle");
    ChildOptions options;
    options.env["LD_LIBRARY_PATH"] = std::nullopt;
    ExpectAnswers(build + "/bundle", build + "/client", options);

    const std::string elsewhere = Installed().File("runtime_alone");
    ASSERT_EQ(Installed().Install("runtime", elsewhere).code, 0);
    options.env["LD_LIBRARY_PATH"] = elsewhere + "/" QV_LIBDIR;
    const RunResult found = qv_test::Run({"ldd", build + "/bundle"}, options);
    EXPECT_THAT(found.out, HasSubstr(elsewhere + "/" QV_LIBDIR "/libqv_corba_pub.so.1"));
    EXPECT_THAT(found.out, Not(HasSubstr(Installed().LibDir() + "/")))
        << "it still runs on the full installation";
    EXPECT_THAT(found.out, Not(HasSubstr("not found")));
    ExpectAnswers(build + "/bundle", build + "/client", options);
}

TEST_F(InstallConsume, BundleBuiltWithPkgConfigAnswers) {
    const std::vector<std::pair<std::string, std::string>> programs{{"bundle", "qv_corba_pub"},
                                                                    {"client", "qv_orb"}};
    for (const auto& [program, package] : programs) {
        RunResult flags;
        ASSERT_TRUE(Succeeds(Installed(), {"pkg-config", "--cflags", "--libs", package}, &flags));
        std::vector<std::string> command{QV_CXX, "-std=c++17", QV_TEST_DIR "/bundle/" + program + ".cpp",
                                         "-o", Installed().File("plain_" + program)};
        for (const std::string& text : {SanitizerFlags(), flags.out}) {
            const std::vector<std::string> words = Words(text);
            command.insert(command.end(), words.begin(), words.end());
        }
        command.push_back("-Wl,-rpath," + Installed().LibDir());
        ASSERT_TRUE(Succeeds(Installed(), command));
    }
    ChildOptions options;
    options.env["LD_LIBRARY_PATH"] = std::nullopt;
    ExpectAnswers(Installed().File("plain_bundle"), Installed().File("plain_client"), options);
}

TEST_F(InstallConsume, UnknownComponentOfThePackageIsRefusedByName) {
    const TempDir project;
    project.Write("CMakeLists.txt",
                  "cmake_minimum_required(VERSION 3.25)\nproject(wrong LANGUAGES CXX)\n"
                  "find_package(qv_corba_pub REQUIRED COMPONENTS orb nonsense)\n");
    const RunResult run = qv_test::Run({QV_CMAKE, "-S", project.str(), "-B", project.File("build"),
                                        "-DCMAKE_PREFIX_PATH=" + Installed().Prefix(),
                                        std::string("-DCMAKE_CXX_COMPILER=") + QV_CXX});
    EXPECT_NE(run.code, 0);
    EXPECT_THAT(run.err, HasSubstr("has no component \"nonsense\""));
    EXPECT_THAT(run.err, HasSubstr("corba_pub, orb, platform"));
}

}  // namespace
}  // namespace qv_test
