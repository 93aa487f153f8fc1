#include "services/naming/ssl_library.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "services/naming/common_parts.h"

namespace qv_naming {

std::string FindSslLibrary() {
    constexpr char kName[] = "libqv_naming_ssl.so";
    if (const char* given = std::getenv("QV_NAMING_SSL_LIBRARY"); given != nullptr && *given != '\0') {
        if (access(given, R_OK) != 0) {
            throw StartError("QV_NAMING_SSL_LIBRARY names \"" + std::string(given) +
                             "\", which this user can't read. Correct the variable or unset it.");
        }
        return given;
    }
    std::error_code error;
    const std::filesystem::path program =
        std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
    for (const char* folder : {"../" QV_LIBRARY_FOLDER "/qv_corba_pub", "../lib", "."}) {
        const std::filesystem::path candidate = (program / folder / kName).lexically_normal();
        if (access(candidate.c_str(), R_OK) == 0) {
            return candidate.string();
        }
    }
    throw StartError(std::string("The library ") + kName +
                     ", which has the name server speak SSL, is not beside " + program.string() +
                     ". Install it again, or name it in QV_NAMING_SSL_LIBRARY.");
}

}  // namespace qv_naming
