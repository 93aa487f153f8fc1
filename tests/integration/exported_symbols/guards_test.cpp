// The scripts that guard the binary interface, on a tiny library made here.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/child_process.h"
#include "tests/support/temp_dir.h"

namespace {

using namespace qv_test;
using testing::HasSubstr;
using testing::Not;

constexpr const char* kHeader =
    "namespace Tiny {\n"
    "class Thing {\n"
    "  public:\n"
    "    Thing();\n"
    "    int Get() const;\n"
    "  private:\n"
    "    int m_value = 0;\n"
    "};\n"
    "int Count();\n"
    "}\n";
constexpr const char* kSource =
    "#include \"tiny.h\"\n"
    "namespace Tiny {\n"
    "Thing::Thing() = default;\n"
    "int Thing::Get() const { return m_value; }\n"
    "int Count() { return 1; }\n"
    "}\n";

std::string Without(std::string text, const std::string& part) {
    const std::size_t at = text.find(part);
    EXPECT_NE(at, std::string::npos) << part;
    return text.erase(at, part.size());
}

class AbiGuards : public testing::Test {
  protected:
    /// Builds the library under the name of one of ours, in a prefix of its own; returns the prefix.
    std::string Build(const std::string& prefix, const std::string& header, const std::string& source) const {
        dir.Write(prefix + "/include/tiny.h", header);
        const std::string file = dir.Write(prefix + "/tiny.cpp", source);
        std::filesystem::create_directories(dir.File(prefix + "/lib"));
        const RunResult run =
            Run({QV_CXX, "-g", "-fPIC", "-shared", "-Wl,-soname,libqv_callchain.so", "-I",
                 dir.File(prefix + "/include"), file, "-o", dir.File(prefix + "/lib/libqv_callchain.so")});
        EXPECT_EQ(run.code, 0) << run.err;
        return dir.File(prefix);
    }
    RunResult Symbols(const std::string& action, const std::string& prefix) const {
        return Run({QV_ABI_DIR "/symbols.sh", action, prefix + "/lib", dir.File("lists")});
    }
    static RunResult Compare(const std::string& old, const std::string& now) {
        return Run({QV_ABI_DIR "/compare_abi.sh", old, now, "v1.0.0"});
    }
    static RunResult Run(const std::vector<std::string>& command) { return qv_test::Run(command); }
    static bool CanCompare() { return Run({"sh", "-c", "command -v abidiff"}).code == 0; }

    const TempDir dir;
};

TEST_F(AbiGuards, RecordedListsFitUntilASymbolIsRemovedOrAdded) {
    const std::string old = Build("old", kHeader, kSource);
    ASSERT_EQ(Symbols("--record", old).code, 0);
    EXPECT_EQ(Symbols("--check", old).code, 0);

    const RunResult removed =
        Symbols("--check", Build("removed", kHeader, Without(kSource, "int Count() { return 1; }\n")));
    EXPECT_EQ(removed.code, 1);
    EXPECT_THAT(removed.err, HasSubstr("libqv_callchain.so no longer exports"));
    EXPECT_THAT(removed.err, HasSubstr("\n  Tiny::Count()\n"));

    const RunResult added =
        Symbols("--check", Build("added", kHeader, kSource + std::string("int Extra() { return 2; }\n")));
    EXPECT_EQ(added.code, 1);
    EXPECT_THAT(added.err, HasSubstr("\n  Extra()\n"));
    EXPECT_THAT(added.err, HasSubstr("record it: packaging/abi/symbols.sh --record"));
}

TEST_F(AbiGuards, MissingListAndMissingLibrariesAreNamed) {
    EXPECT_THAT(Symbols("--check", Build("old", kHeader, kSource)).err,
                HasSubstr("no list for libqv_callchain.so"));
    EXPECT_THAT(Symbols("--check", dir.File("nothing")).err, HasSubstr("holds none of the libraries"));
}

TEST_F(AbiGuards, ComparisonCatchesWhatBreaksProgramsAndLetsAdditionsPass) {
    if (!CanCompare()) {
        GTEST_SKIP() << "abidiff is not installed; the package abigail-tools has it";
    }
    const std::string old = Build("old", kHeader, kSource);
    const RunResult added = Compare(old, Build("added", kHeader + std::string("int Extra();\n"),
                                               kSource + std::string("int Extra() { return 2; }\n")));
    EXPECT_EQ(added.code, 0) << added.out << added.err;

    const RunResult removed = Compare(old, Build("removed", Without(kHeader, "int Count();\n"),
                                                 Without(kSource, "int Count() { return 1; }\n")));
    EXPECT_EQ(removed.code, 1);
    EXPECT_THAT(removed.err,
                HasSubstr("libqv_callchain.so breaks programs built on v1.0.0. removed: int Tiny::Count()"));

    const std::string wider = Without(kHeader, "    int m_value = 0;\n").insert(0, "#include <string>\n");
    const std::string changed_header = wider.substr(0, wider.find("  private:\n") + 11) +
                                       "    int m_value = 0;\n    std::string m_name;\n" +
                                       wider.substr(wider.find("  private:\n") + 11);
    const RunResult changed = Compare(old, Build("changed", changed_header, kSource));
    EXPECT_EQ(changed.code, 1);
    EXPECT_THAT(changed.err, HasSubstr("changed: class Tiny::Thing"));
    EXPECT_THAT(changed.err, Not(HasSubstr("removed")));
}

TEST_F(AbiGuards, ComparisonNoticesAMissingLibrary) {
    if (!CanCompare()) {
        GTEST_SKIP() << "abidiff is not installed; the package abigail-tools has it";
    }
    const std::string old = Build("old", kHeader, kSource);
    std::filesystem::create_directories(dir.File("empty/lib"));
    const RunResult gone = Compare(old, dir.File("empty"));
    EXPECT_EQ(gone.code, 1);
    EXPECT_THAT(gone.err, HasSubstr("libqv_callchain.so is gone"));
}

TEST_F(AbiGuards, WithoutAReleaseThereIsNothingToCompare) {
    const std::string repository = dir.File("repository");
    std::filesystem::create_directories(repository + "/packaging/abi");
    std::filesystem::copy(QV_ABI_DIR "/check_abi.sh", repository + "/packaging/abi/check_abi.sh");
    std::filesystem::create_directories(repository + "/scripts");
    std::filesystem::copy(QV_ABI_DIR "/../../scripts/build_lib.sh", repository + "/scripts/build_lib.sh");
    ASSERT_EQ(Run({"git", "init", "--quiet", repository}).code, 0);
    const RunResult run = Run({repository + "/packaging/abi/check_abi.sh", dir.File("work")});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_THAT(run.out, HasSubstr("there is no release to compare with"));
}

}  // namespace
