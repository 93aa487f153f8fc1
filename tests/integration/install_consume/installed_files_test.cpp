// What lies where after an installation, and that it doesn't lead back here.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <memory>

#include "tests/integration/install_consume/installation.h"

namespace qv_test {
namespace {

using ::testing::Contains;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using ::testing::Not;
using ::testing::StartsWith;

class InstalledFiles : public ::testing::Test {
  protected:
    static void SetUpTestSuite() { s_installation = std::make_unique<Installation>(); }
    static void TearDownTestSuite() { s_installation.reset(); }
    void SetUp() override { ASSERT_TRUE(Installed().Complete()); }

    static const Installation& Installed() { return *s_installation; }

    /// The files of one component alone.
    static std::vector<std::string> FilesOf(const std::string& component) {
        const std::string prefix = Installed().File("only_" + component);
        EXPECT_EQ(Installed().Install(component, prefix).code, 0);
        return Installation::Files(prefix);
    }

    static bool IsElf(const std::string& path) {
        return ReadFile(path).rfind(
                   "\x7f"
                   "ELF",
                   0) == 0;
    }

  private:
    static std::unique_ptr<Installation> s_installation;
};

std::unique_ptr<Installation> InstalledFiles::s_installation;

TEST_F(InstalledFiles, RuntimeIsTheLibrariesAndNothingElse) {
    const std::vector<std::string> files = FilesOf("runtime");
    EXPECT_THAT(files, ::testing::UnorderedElementsAre(
                           QV_LIBDIR "/libqv_corba_pub.so.1", QV_LIBDIR "/libqv_corba_pub.so." QV_VERSION,
                           QV_LIBDIR "/libqv_orb.so.1", QV_LIBDIR "/libqv_orb.so." QV_VERSION,
                           QV_LIBDIR "/libqv_bundlemgr.so", QV_LIBDIR "/libqv_selfgovernedutil.so",
                           QV_LIBDIR "/libqv_callchain.so"));
}

TEST_F(InstalledFiles, DevelopmentHasWhatABuildNeedsAndNoProgram) {
    const std::vector<std::string> files = FilesOf("development");
    EXPECT_THAT(files, IsSupersetOf({QV_LIBDIR "/libqv_corba_pub.so", QV_LIBDIR "/libqv_orb.so",
                                     QV_LIBDIR "/pkgconfig/qv_corba_pub.pc", QV_LIBDIR "/pkgconfig/qv_orb.pc",
                                     QV_LIBDIR "/cmake/qv_corba_pub/QvIdl.cmake",
                                     QV_LIBDIR "/cmake/qv_corba_pub/idl/qv_tables.py"}));
    EXPECT_THAT(files, Contains("include/qv_corba_pub/agent/agentserver.h"));
    EXPECT_THAT(files, Not(Contains(StartsWith("bin/"))));
}

TEST_F(InstalledFiles, EveryProgramHasAManualPage) {
    std::size_t programs = 0;
    for (const char* component : {"services", "tools"}) {
        const std::vector<std::string> files = FilesOf(component);
        for (const std::string& file : files) {
            if (file.rfind("bin/", 0) == 0) {
                const std::string program = file.substr(4);
                const char* section = std::string(component) == "tools" ? "1" : "8";
                EXPECT_THAT(files,
                            Contains("share/man/man" + std::string(section) + "/" + program + "." + section));
                ++programs;
            }
        }
    }
    EXPECT_EQ(programs, 7U);
}

TEST_F(InstalledFiles, UnitsNameProgramsThatAreThere) {
    const std::vector<std::string> files = FilesOf("services");
    EXPECT_THAT(files, IsSupersetOf({"etc/default/qv-naming", "etc/default/qv-notify",
                                     "lib/sysusers.d/qv-corba-services.conf",
                                     QV_LIBDIR "/qv_corba_pub/libqv_naming_ssl.so"}));
    for (const char* unit : {"qv-naming", "qv-notify"}) {
        const std::string text = ReadFile(Installed().Prefix() + "/lib/systemd/system/" + unit + ".service");
        const std::size_t start = text.find("ExecStart=") + 10;
        const std::string program = text.substr(start, text.find(' ', start) - start);
        EXPECT_EQ(access(program.c_str(), X_OK), 0) << program;
        EXPECT_THAT(text,
                    HasSubstr("EnvironmentFile=-" + Installed().Prefix() + "/etc/default/" + unit + "\n"));
        EXPECT_THAT(text, Not(HasSubstr("dir@"))) << "something was left to be filled in";
    }
}

TEST_F(InstalledFiles, DocumentationHasThePagesAndTheProjectsOfTheTutorial) {
    const std::vector<std::string> files = FilesOf("documentation");
    EXPECT_THAT(files, Contains(EndsWith("/bundle/building.md")));
    EXPECT_THAT(files, Contains(EndsWith("/bundle/steps/01_orb/CMakeLists.txt")));
}

TEST_F(InstalledFiles, NothingIsLeftWithoutAComponent) {
    EXPECT_THAT(FilesOf("Unspecified"), IsEmpty());
}

TEST_F(InstalledFiles, NoneNamesTheBuildOrTheSources) {
    for (const std::string& file : Installation::Files(Installed().Prefix())) {
        const std::string text = ReadFile(Installed().Prefix() + "/" + file);
        EXPECT_EQ(text.find(QV_BINARY_DIR), std::string::npos) << file;
        EXPECT_EQ(text.find(QV_SOURCE_DIR "/"), std::string::npos) << file;
    }
}

TEST_F(InstalledFiles, LibrariesAreFoundBesideWhatNeedsThemOnly) {
    std::size_t with_path = 0;
    for (const std::string& file : Installation::Files(Installed().Prefix())) {
        const std::string path = Installed().Prefix() + "/" + file;
        if (std::filesystem::is_symlink(path) || !IsElf(path)) {
            continue;
        }
        const RunResult dynamic = qv_test::Run({"readelf", "--dynamic", "--wide", path});
        EXPECT_THAT(dynamic.out, Not(HasSubstr("(RPATH)"))) << file << " would win over LD_LIBRARY_PATH";
        const std::size_t runpath = dynamic.out.find("(RUNPATH)");
        if (runpath != std::string::npos) {
            ++with_path;
            EXPECT_THAT(dynamic.out.substr(dynamic.out.find('[', runpath)), StartsWith("[$ORIGIN")) << file;
        }
        const RunResult needed = qv_test::Run({"ldd", path});
        EXPECT_THAT(needed.out, Not(HasSubstr("not found"))) << file;
        EXPECT_THAT(needed.out, Not(HasSubstr(QV_BINARY_DIR))) << file;
    }
    EXPECT_GT(with_path, 5U);
}

TEST_F(InstalledFiles, SharedLibrariesCarryTheirNames) {
    const std::vector<std::pair<std::string, std::string>> names{
        {"libqv_corba_pub.so", "libqv_corba_pub.so.1"},
        {"libqv_orb.so", "libqv_orb.so.1"},
        // The platform of an EMS has libraries of these very names.
        {"libqv_bundlemgr.so", "libqv_bundlemgr.so"},
        {"libqv_selfgovernedutil.so", "libqv_selfgovernedutil.so"},
        {"libqv_callchain.so", "libqv_callchain.so"}};
    for (const auto& [file, name] : names) {
        RunResult run;
        ASSERT_TRUE(Succeeds(Installed(), {"readelf", "--dynamic", Installed().LibDir() + "/" + file}, &run));
        EXPECT_THAT(run.out, HasSubstr("soname: [" + name + "]"));
    }
}

TEST_F(InstalledFiles, InstalledNamingServiceFindsItsLibraryForSsl) {
    RunResult run;
    EXPECT_TRUE(Succeeds(Installed(), {Installed().Prefix() + "/bin/Naming_Service", "-h"}, &run));
    EXPECT_THAT(run.out, HasSubstr("-ORBEndpoint iiop://HOST:PORT"));
    // The profile is looked for after the library.
    run = qv_test::Run({Installed().Prefix() + "/bin/Naming_Service", "-ORBEndpoint",
                        "iiop://127.0.0.1:2/ssl_port=3", "-ORBSvcConf", "/nonexistent/profile"});
    EXPECT_EQ(run.code, 1);
    EXPECT_THAT(run.err, HasSubstr("/nonexistent/profile"));
}

}  // namespace
}  // namespace qv_test
