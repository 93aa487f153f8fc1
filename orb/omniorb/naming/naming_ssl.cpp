// Loaded into omniNames ahead of its own libraries: has it speak SSL as the service configuration file says
// that QV_NAMING_SSL_PROFILE names. omniNames' own options would put the pass phrase on its command line,
// take a certificate only once, and serve requests in clear.

#include <omniORB4/CORBA.h>
// clang-format off
#include <omniORB4/omniInterceptors.h>
#include <initialiser.h>
// clang-format on

#include <unistd.h>

#include <cstdlib>
#include <optional>

#include "diagnostics.h"
#include "orb/ssl/service_config_file.h"
#include "orb/ssl/ssl_error.h"
#include "plain_requests.h"
#include "ssl_transport.h"

namespace qv_orb {

void Report(const std::string& line) {
    const std::string text = line + "\n";
    // Nobody can be told of a failure here.
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, text.data(), text.size());
}

namespace {

CORBA::Boolean RequestReceived(omni::omniInterceptors::serverReceiveRequest_T::info_T& info) {
    AdmitRequest(info.giop_s);
    return true;
}

// The ORB's interface has no virtual destructor; this one lives as long as the process.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
// NOLINTNEXTLINE(cppcoreguidelines-virtual-class-destructor): nobody deletes it
class NamingInitialiser final : public omni::omniInitialiser {
  public:
    void attach() override { omniORB::getInterceptors()->serverReceiveRequest.add(RequestReceived); }
    void detach() override {}
};
#pragma GCC diagnostic pop

void SetUp(const char* profile) {
    const qv_ssl::ServiceConfig config = qv_ssl::ReadServiceConfigFile(profile);
    PrepareSsl(config.ssl.value_or(qv_ssl::SslSettings{}), true);
    static NamingInitialiser initialiser;
    omni::omniInitialiser::install(&initialiser);
}

// Ahead of main: the ORB looks for an SSL context while it is made.
__attribute__((constructor)) void Loaded() {
    const char* const profile = std::getenv("QV_NAMING_SSL_PROFILE");
    if (profile == nullptr) {
        return;
    }
    try {
        SetUp(profile);
    } catch (const qv_ssl::SslError& problem) {
        Report(std::string("SSL can't be set up: ") + problem.what());
        _exit(EXIT_FAILURE);
    }
}

}  // namespace
}  // namespace qv_orb
