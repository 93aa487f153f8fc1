#include "tests/support/temp_dir.h"

#include <stdlib.h>

#include <cerrno>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

namespace qv_test {

TempDir::TempDir() {
    std::string pattern = (std::filesystem::temp_directory_path() / "qv-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        throw std::system_error(errno, std::generic_category(), "no temporary directory " + pattern);
    }
    m_path = pattern;
}

TempDir::~TempDir() {
    std::error_code error;
    for (auto it = std::filesystem::recursive_directory_iterator(m_path, error);
         !error && it != std::filesystem::recursive_directory_iterator(); it.increment(error)) {
        if (it->is_directory(error) && !it->is_symlink(error)) {
            std::filesystem::permissions(it->path(), std::filesystem::perms::owner_all, error);
        }
    }
    std::filesystem::remove_all(m_path, error);
}

std::string TempDir::Write(const std::string& name, const std::string& contents) const {
    const std::filesystem::path file = m_path / name;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out << contents;
    out.close();
    if (!out) {
        throw std::runtime_error("can't write " + file.string());
    }
    return file.string();
}

std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

}  // namespace qv_test
