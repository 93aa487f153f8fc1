// Runs a fuzz target over files, for builds without a fuzzer: each argument is a file or a folder of files.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

bool RunFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    if (!file.good() && !file.eof()) {
        std::fprintf(stderr, "%s can't be read\n", path.c_str());
        return false;
    }
    std::printf("%s\n", path.c_str());  // the last one named is the one that crashed
    std::fflush(stdout);
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    return true;
}

std::set<fs::path> FilesOf(const fs::path& path) {
    std::set<fs::path> files;
    if (!fs::is_directory(path)) {
        files.insert(path);
        return files;
    }
    for (const fs::directory_entry& entry : fs::directory_iterator(path)) {
        if (entry.is_regular_file()) {
            files.insert(entry.path());
        }
    }
    return files;
}

}  // namespace

int main(int argc, char** argv) {
    std::size_t count = 0;
    for (int i = 1; i < argc; ++i) {
        for (const fs::path& file : FilesOf(argv[i])) {
            if (!RunFile(file)) {
                return 1;
            }
            ++count;
        }
    }
    std::printf("%zu inputs\n", count);
    return count != 0 ? 0 : 1;  // nothing run is nothing tested
}
