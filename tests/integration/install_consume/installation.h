// This build, installed component by component into folders that go with the object.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "tests/support/child_process.h"
#include "tests/support/temp_dir.h"

namespace qv_test {

/// Components of the installation, in the order in which the tests install them.
extern const std::vector<std::string> kComponents;

/// Thread safety: none; one test at a time uses it.
class Installation {
  public:
    /// Installs all components below Prefix(), without debugging information.
    Installation();

    /// Whether that went well, with what it said.
    ::testing::AssertionResult Complete() const;

    std::string Prefix() const { return m_dir.File("prefix"); }
    std::string LibDir() const;
    /// A path in a folder beside the prefix.
    std::string File(const std::string& name) const { return m_dir.File(name); }

    /// Installs one component below another prefix.
    RunResult Install(const std::string& component, const std::string& prefix) const;

    /// Paths below a folder, relative to it, of files and links.
    static std::vector<std::string> Files(const std::string& folder);

  private:
    const TempDir m_dir;
    std::string m_trouble;
};

/// Runs a command with nothing in the environment but the installation's pkg-config files to lead to it.
::testing::AssertionResult Succeeds(const Installation& installation, const std::vector<std::string>& command,
                                    RunResult* result = nullptr);

/// The words of a line.
std::vector<std::string> Words(const std::string& line);

/// Compiler flags that programs need to go with the libraries of this build.
std::string SanitizerFlags();

/// Configures and builds a project of its own, from a folder beside the test's sources, against the
/// installation; the result is in File(project).
::testing::AssertionResult BuildProject(const Installation& installation, const std::string& project);

}  // namespace qv_test
