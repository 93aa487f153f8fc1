#pragma once

#include <filesystem>
#include <string>

namespace qv_test {

/// A directory of its own for one test, removed with all it holds when the object goes.
class TempDir {
  public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::filesystem::path& path() const { return m_path; }
    std::string str() const { return m_path.string(); }

    /// The path of `name` in this directory.
    std::string File(const std::string& name) const { return (m_path / name).string(); }

    /// Writes `contents` to `name` in this directory, making directories between, and returns the file's
    /// path.
    std::string Write(const std::string& name, const std::string& contents) const;

  private:
    std::filesystem::path m_path;
};

/// The whole contents of a file; empty when it can't be read.
std::string ReadFile(const std::filesystem::path& path);

}  // namespace qv_test
