// Installs this build into a folder of its own and builds separate projects on what is found there.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <sstream>

#include "tests/support/child_process.h"
#include "tests/support/temp_dir.h"
#include "tests/support/wait_for.h"

namespace qv_test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

constexpr std::chrono::minutes kBuildLimit{5};

std::string SanitizerFlags() {
    const std::string sanitizers = QV_SANITIZE;
    return sanitizers.empty() ? "" : "-fsanitize=" + sanitizers;
}

class InstallConsume : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        s_dir = std::make_unique<TempDir>();
        s_installed =
            qv_test::Run({QV_CMAKE, "--install", QV_BINARY_DIR, "--prefix", Prefix()}, {}, kBuildLimit);
    }
    static void TearDownTestSuite() { s_dir.reset(); }

    void SetUp() override { ASSERT_EQ(s_installed.code, 0) << s_installed.out << s_installed.err; }

    static std::string Prefix() { return s_dir->File("prefix"); }

    static ::testing::AssertionResult Succeeds(const std::vector<std::string>& command,
                                               RunResult* result = nullptr) {
        ChildOptions options;
        options.env["PKG_CONFIG_PATH"] = Prefix() + "/" QV_LIBDIR "/pkgconfig";
        options.env["LD_LIBRARY_PATH"] = std::nullopt;
        const RunResult run = qv_test::Run(command, options, kBuildLimit);
        if (result != nullptr) {
            *result = run;
        }
        if (run.code == 0) {
            return ::testing::AssertionSuccess();
        }
        return ::testing::AssertionFailure() << command.front() << " ended with " << run.code << "\n"
                                             << run.out << run.err;
    }

    static std::unique_ptr<TempDir> s_dir;
    static RunResult s_installed;
};

std::unique_ptr<TempDir> InstallConsume::s_dir;
RunResult InstallConsume::s_installed;

TEST_F(InstallConsume, CmakeProjectServesAndCallsAnInterfaceOfItsOwn) {
    const std::string build = s_dir->File("consumer");
    ASSERT_TRUE(
        Succeeds({QV_CMAKE, "-G", "Ninja", "-S", QV_TEST_DIR "/consumer", "-B", build,
                  "-DCMAKE_PREFIX_PATH=" + Prefix(), "-DCMAKE_CXX_COMPILER=" QV_CXX,
                  "-DCMAKE_CXX_COMPILER_LAUNCHER=" QV_LAUNCHER, "-DCMAKE_CXX_FLAGS=" + SanitizerFlags()}));
    ASSERT_TRUE(Succeeds({QV_CMAKE, "--build", build}));

    const std::string reference = s_dir->File("host.ior");
    ChildProcess server({build + "/consumer", "serve", reference});
    ASSERT_TRUE(WaitFor([&] { return std::filesystem::exists(reference) || !server.Running(); }));
    const std::string ior = ReadFile(reference);
    ASSERT_EQ(ior.rfind("IOR:", 0), 0U) << server.Err();
    RunResult shown;
    EXPECT_TRUE(Succeeds({QV_CATIOR, ior}, &shown));
    EXPECT_THAT(shown.out, HasSubstr("IDL:Greeting/Host:1.0"));

    RunResult called;
    EXPECT_TRUE(Succeeds({build + "/consumer", "call", ior}, &called));
    EXPECT_THAT(called.out, HasSubstr("hello world\nnobody: the empty name\n"));
    EXPECT_EQ(server.Wait(), 0) << server.Err();
}

TEST_F(InstallConsume, PlainProgramBuildsWithPkgConfig) {
    RunResult flags;
    ASSERT_TRUE(Succeeds({"pkg-config", "--cflags", "--libs", "qv_corba_pub"}, &flags));
    const std::string program = s_dir->File("plain");
    std::vector<std::string> command{QV_CXX, "-std=c++17", "-Wall", "-Werror", QV_TEST_DIR "/plain/main.cpp",
                                     "-o",   program};
    if (const std::string sanitizers = SanitizerFlags(); !sanitizers.empty()) {
        command.push_back(sanitizers);
    }
    std::istringstream words(flags.out);
    for (std::string word; words >> word;) {
        command.push_back(word);
    }
    command.push_back("-Wl,-rpath," + Prefix() + "/" QV_LIBDIR);
    ASSERT_TRUE(Succeeds(command));
    RunResult run;
    EXPECT_TRUE(Succeeds({program}, &run));
    EXPECT_THAT(run.out, HasSubstr("threads 4\n"));
    EXPECT_THAT(run.out, HasSubstr("NO_PERMISSION"));
}

TEST_F(InstallConsume, InstalledLibraryFindsItsNeighbours) {
    RunResult run;
    ASSERT_TRUE(Succeeds({"ldd", Prefix() + "/" QV_LIBDIR "/libqv_corba_pub.so"}, &run));
    EXPECT_THAT(run.out, Not(HasSubstr("not found")));
    EXPECT_THAT(run.out, HasSubstr(Prefix() + "/" QV_LIBDIR "/libqv_orb.so"));
    EXPECT_THAT(run.out, Not(HasSubstr(QV_BINARY_DIR))) << "installed libraries must not look into the build";
}

TEST_F(InstallConsume, InstalledFilesDoNotNameTheBuildOrTheSource) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(Prefix())) {
        const std::string extension = entry.path().extension();
        if (extension == ".h" || extension == ".hh" || extension == ".cmake" || extension == ".pc") {
            const std::string text = ReadFile(entry.path());
            EXPECT_EQ(text.find(QV_BINARY_DIR), std::string::npos) << entry.path();
            EXPECT_EQ(text.find(QV_TEST_DIR), std::string::npos) << entry.path();
        }
    }
}

TEST_F(InstallConsume, NamingServiceIsInstalled) {
    RunResult run;
    EXPECT_TRUE(Succeeds({Prefix() + "/bin/Naming_Service", "-h"}, &run));
    EXPECT_THAT(run.out, HasSubstr("-ORBEndpoint iiop://HOST:PORT"));
}

}  // namespace
}  // namespace qv_test
