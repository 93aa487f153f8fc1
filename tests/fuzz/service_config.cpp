// The input stands ahead of a pass phrase in the options of an SSLIOP factory. Whatever it is, no message
// shows the pass phrase.

#include "orb/ssl/service_config_file.h"

#include <cstdint>
#include <cstdlib>
#include <string>

#include "orb/ssl/ssl_error.h"

namespace {

constexpr char kSecret[] = "S3cr3tOfTheKey";

void RequireSilence(const std::string& message) {
    if (message.find(kSecret) != std::string::npos) {
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string input(data, data + size);
    if (input.find(kSecret) != std::string::npos) {
        return 0;  // a fuzzer finds out
    }
    const std::string text =
        "dynamic SSLIOP_Factory \"" + input + "\n-SSLPrivateKeyPasswd " + kSecret + "\n-SSLNoProtection\"\n";
    try {
        const qv_ssl::ServiceConfig config = qv_ssl::ParseServiceConfig(text, "the.conf");
        for (const std::string& remark : config.remarks) {
            RequireSilence(remark);
        }
    } catch (const qv_ssl::SslError& problem) {
        RequireSilence(problem.what());
    }
    return 0;
}
