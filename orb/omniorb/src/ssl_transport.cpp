#include "ssl_transport.h"

#include <omniORB4/CORBA.h>
#include <omniORB4/sslContext.h>

#include <chrono>
#include <ctime>
#include <memory>

#include "diagnostics.h"
#include "limited_report.h"
#include "orb/ssl/credential_source.h"
#include "orb/ssl/handshake_report.h"
#include "orb/ssl/ssl_error.h"
#include "orb/ssl/tls_setup.h"
#include "plain_requests.h"

namespace qv_orb {

namespace {

using SourcePtr = std::shared_ptr<qv_ssl::CredentialSource>;

/// Replaces the ORB's own way of setting up OpenSSL, which knows one file for certificate and key and never
/// reads it again. The ORB owns it and deletes it when it is destroyed.
class SslContext final : public sslContext {
  public:
    SslContext(qv_ssl::SslSettings settings, SourcePtr credentials)
        : settings_(std::move(settings)), credentials_(std::move(credentials)) {}

  private:
    // The first of these that the ORB calls. The same was tried ahead of ORB_init, so it fails only when a
    // file changed in between.
    void set_supported_versions() override {
        try {
            qv_ssl::SetUpContext(get_SSL_CTX(), settings_, credentials_);
        } catch (const qv_ssl::SslError& problem) {
            Report(problem.what());
            throw CORBA::INITIALIZE(0, CORBA::COMPLETED_NO);
        }
    }
    int set_verify_mode() override { return qv_ssl::VerifyMode(settings_); }
    void set_CA() override {}
    void set_certificate() override {}
    void set_cipher() override {}
    void set_privatekey() override {}
    void seed_PRNG() override {}
    void set_DH() override {}
    void set_ephemeralRSA() override {}

    const qv_ssl::SslSettings settings_;
    const SourcePtr credentials_;
};

LimitedReport g_handshakes("messages about SSL handshakes");

void ReportHandshake(const std::string& sentence) {
    g_handshakes.Tell(sentence);
}

SourcePtr LoadSource(const qv_ssl::SslSettings& settings) {
    if (settings.certificate_file.empty()) {
        return nullptr;
    }
    auto source = std::make_shared<qv_ssl::CredentialSource>(
        settings, &std::chrono::steady_clock::now,
        [](const std::string& sentence) { Report("SSL: " + sentence); });
    const auto problem = qv_ssl::ValidityProblem(source->Current()->certificate.get(),
                                                 settings.certificate_file, std::time(nullptr));
    if (problem) {
        Report("SSL: " + *problem);
    }
    return source;
}

void TryContext(const qv_ssl::SslSettings& settings, const SourcePtr& source) {
    const qv_ssl::ContextPtr context(SSL_CTX_new(TLS_method()));
    if (!context) {
        throw qv_ssl::SslError("OpenSSL has no room for an SSL context");
    }
    qv_ssl::SetUpContext(context.get(), settings, source);
}

}  // namespace

void PrepareWithoutSsl() {
    delete sslContext::singleton;  // of an ORB that could not be made
    sslContext::singleton = nullptr;
    RefusePlainRequests(false);
}

void PrepareSsl(const qv_ssl::SslSettings& settings, bool serves) {
    PrepareWithoutSsl();
    qv_ssl::RequireComplete(settings, serves);
    const SourcePtr source = LoadSource(settings);
    TryContext(settings, source);
    g_handshakes.Restart();
    qv_ssl::SetHandshakeSink(&ReportHandshake);
    sslContext::info_callback = &qv_ssl::WatchHandshake;
    sslContext::singleton = new SslContext(settings, source);
    RefusePlainRequests(!settings.no_protection);
}

const char* OutgoingTransports(const qv_ssl::SslSettings& settings) {
    return settings.no_protection ? "* unix,ssl,tcp" : "* unix,ssl";
}

}  // namespace qv_orb
