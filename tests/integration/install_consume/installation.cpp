#include "tests/integration/install_consume/installation.h"

#include <chrono>
#include <filesystem>
#include <sstream>

namespace qv_test {

namespace {

constexpr std::chrono::minutes kBuildLimit{5};

}  // namespace

const std::vector<std::string> kComponents{"runtime", "development", "services", "tools", "documentation"};

Installation::Installation() {
    for (const std::string& component : kComponents) {
        const RunResult run = Install(component, Prefix());
        if (run.code != 0) {
            m_trouble += component + ": " + run.out + run.err;
        }
    }
}

::testing::AssertionResult Installation::Complete() const {
    return m_trouble.empty() ? ::testing::AssertionSuccess() : ::testing::AssertionFailure() << m_trouble;
}

std::string Installation::LibDir() const {
    return Prefix() + "/" QV_LIBDIR;
}

RunResult Installation::Install(const std::string& component, const std::string& prefix) const {
    return Run(
        {QV_CMAKE, "--install", QV_BINARY_DIR, "--strip", "--component", component, "--prefix", prefix}, {},
        kBuildLimit);
}

std::vector<std::string> Installation::Files(const std::string& folder) {
    std::vector<std::string> files;
    if (!std::filesystem::exists(folder)) {
        return files;
    }
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (!entry.is_directory()) {
            files.push_back(entry.path().lexically_relative(folder).string());
        }
    }
    return files;
}

::testing::AssertionResult Succeeds(const Installation& installation, const std::vector<std::string>& command,
                                    RunResult* result) {
    ChildOptions options;
    options.env["PKG_CONFIG_PATH"] = installation.LibDir() + "/pkgconfig";
    options.env["LD_LIBRARY_PATH"] = std::nullopt;
    const RunResult run = Run(command, options, kBuildLimit);
    if (result != nullptr) {
        *result = run;
    }
    if (run.code == 0) {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure() << command.front() << " ended with " << run.code << "\n"
                                         << run.out << run.err;
}

std::vector<std::string> Words(const std::string& line) {
    std::vector<std::string> words;
    std::istringstream text(line);
    for (std::string word; text >> word;) {
        words.push_back(word);
    }
    return words;
}

std::string SanitizerFlags() {
    const std::string sanitizers = QV_SANITIZE;
    return sanitizers.empty() ? "" : "-fsanitize=" + sanitizers;
}

::testing::AssertionResult BuildProject(const Installation& installation, const std::string& project) {
    const std::string build = installation.File(project);
    const auto configured =
        Succeeds(installation, {QV_CMAKE, "-G", "Ninja", "-S", std::string(QV_TEST_DIR) + "/" + project, "-B",
                                build, "-DCMAKE_PREFIX_PATH=" + installation.Prefix(),
                                std::string("-DCMAKE_CXX_COMPILER=") + QV_CXX,
                                std::string("-DCMAKE_CXX_COMPILER_LAUNCHER=") + QV_LAUNCHER,
                                "-DCMAKE_CXX_FLAGS=" + SanitizerFlags()});
    return configured ? Succeeds(installation, {QV_CMAKE, "--build", build}) : configured;
}

}  // namespace qv_test
