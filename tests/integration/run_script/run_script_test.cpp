// What run.sh tells people, with the package tools of the system replaced by ones of the test's own.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/support/child_process.h"
#include "tests/support/temp_dir.h"

namespace qv_test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

constexpr const char* kScript = QV_SOURCE_DIR "/run.sh";

class RunScript : public ::testing::Test {
  protected:
    // The script finds this program in place of the system's.
    void Replace(const std::string& name, const std::string& body) const {
        chmod(m_tools.Write(name, "#!/bin/sh\n" + body + "\n").c_str(), 0755);
    }

    RunResult Script(const std::vector<std::string>& arguments) const {
        std::vector<std::string> command{kScript};
        command.insert(command.end(), arguments.begin(), arguments.end());
        ChildOptions options;
        options.env["PATH"] = m_tools.str() + ":/usr/bin:/bin";
        return qv_test::Run(command, options);
    }

    std::string Called(const std::string& name) const { return ReadFile(m_tools.path() / name); }

    TempDir m_tools;
};

TEST_F(RunScript, PrintsEveryCommand) {
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"help"}, {}, {"--help"}}) {
        const RunResult result = Script(arguments);
        EXPECT_EQ(result.code, 0);
        for (const char* command :
             {"  demo ", "  agent ", "  test ", "  docs ", "  packages ", "  bench ", "  faults ",
              "  asan, tsan ", "  valgrind ", "  tidy ", "  fuzz ", "  abi ", "  install-deps ", "  help "}) {
            EXPECT_THAT(result.out, HasSubstr(command));
        }
        EXPECT_EQ(result.err, "");
    }
}

TEST_F(RunScript, NamesAnUnknownCommandAndWhereTheKnownOnesAre) {
    const RunResult result = Script({"dance"});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.err, "run.sh: there is no command \"dance\". ./run.sh help lists them.\n");
    EXPECT_EQ(result.out, "");
}

TEST_F(RunScript, CallsNoAptWhenNothingIsMissing) {
    Replace("dpkg-query", "echo installed");
    Replace("apt-get", "echo called >\"$(dirname \"$0\")/apt-calls\"");
    const RunResult result = Script({"install-deps"});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_THAT(result.out, HasSubstr("packages are installed"));
    EXPECT_EQ(Called("apt-calls"), "");
}

TEST_F(RunScript, InstallsOnlyWhatIsMissing) {
    Replace("dpkg-query", "case \"$*\" in *libcos4-dev*|*ccache*) exit 1;; *) echo installed;; esac");
    Replace("id", "echo 0");
    Replace("apt-get", "echo \"$*\" >>\"$(dirname \"$0\")/apt-calls\"");
    const RunResult result = Script({"install-deps"});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(Called("apt-calls"), "update\ninstall --yes --no-install-recommends ccache libcos4-dev\n");
}

TEST_F(RunScript, InstallsWhatOneCommandNeedsBeyondTheOthers) {
    Replace("dpkg-query", "case \"$*\" in *gnuplot*|*valgrind*) exit 1;; *) echo installed;; esac");
    Replace("id", "echo 0");
    Replace("apt-get", "echo \"$*\" >>\"$(dirname \"$0\")/apt-calls\"");
    EXPECT_EQ(Script({"install-deps"}).code, 0);
    EXPECT_EQ(Called("apt-calls"), "");
    EXPECT_EQ(Script({"install-deps", "valgrind"}).code, 0);
    EXPECT_EQ(Called("apt-calls"), "update\ninstall --yes --no-install-recommends valgrind\n");
}

TEST_F(RunScript, UsesSudoForOtherUsers) {
    Replace("dpkg-query", "case \"$*\" in *ccache*) exit 1;; *) echo installed;; esac");
    Replace("id", "echo 1000");
    Replace("sudo", "echo \"$*\" >>\"$(dirname \"$0\")/sudo-calls\"");
    EXPECT_EQ(Script({"install-deps"}).code, 0);
    EXPECT_THAT(Called("sudo-calls"), StartsWith("apt-get update\n"));
}

TEST_F(RunScript, SaysWhatToDoWithoutNetwork) {
    Replace("dpkg-query", "exit 1");
    Replace("id", "echo 0");
    Replace("apt-get", "exit 100");
    const RunResult result = Script({"test"});
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.err, HasSubstr("package lists could not be fetched. Check the network"));
    EXPECT_THAT(result.out, Not(HasSubstr("building")));
}

TEST_F(RunScript, NamesThePackagesWhenInstallingFails) {
    Replace("dpkg-query", "case \"$*\" in *ccache*) exit 1;; *) echo installed;; esac");
    Replace("id", "echo 0");
    Replace("apt-get", "[ \"$1\" = update ]");
    const RunResult result = Script({"install-deps"});
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.err, HasSubstr("installing failed"));
    EXPECT_THAT(result.err, HasSubstr("ccache"));
}

}  // namespace
}  // namespace qv_test
