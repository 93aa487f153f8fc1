#include "tools/ssl/chain_check.h"

#include <openssl/err.h>
#include <openssl/x509_vfy.h>
#include <openssl/x509v3.h>

#include <memory>
#include <optional>

#include "orb/ssl/credentials.h"
#include "tools/ssl/certificate_text.h"

namespace qv_tools {
namespace {

using qv_ssl::CertificatePtr;
using qv_ssl::SslSettings;

using StorePtr = std::unique_ptr<X509_STORE, qv_ssl::FreeBy<X509_STORE_free>>;
using VerificationPtr = std::unique_ptr<X509_STORE_CTX, qv_ssl::FreeBy<X509_STORE_CTX_free>>;

struct StackFree {
    void operator()(STACK_OF(X509) * stack) const { sk_X509_free(stack); }
};
using StackPtr = std::unique_ptr<STACK_OF(X509), StackFree>;

StorePtr Authorities(const SslSettings& settings) {
    StorePtr store(X509_STORE_new());
    if (store && !settings.authority_file.empty()) {
        X509_STORE_load_file(store.get(), settings.authority_file.c_str());
    }
    if (store && !settings.authority_directory.empty()) {
        X509_STORE_load_path(store.get(), settings.authority_directory.c_str());
    }
    return store;
}

/// Why a peer won't trust the certificate for that purpose; nothing when it will.
std::optional<std::string> Distrust(const SslSettings& settings, const std::vector<CertificatePtr>& own,
                                    int purpose) {
    const StorePtr store = Authorities(settings);
    const StackPtr chain(sk_X509_new_null());
    for (const CertificatePtr& certificate : own) {
        sk_X509_push(chain.get(), certificate.get());
    }
    const VerificationPtr verification(X509_STORE_CTX_new());
    if (!store || !verification ||
        X509_STORE_CTX_init(verification.get(), store.get(), own.front().get(), chain.get()) != 1 ||
        X509_STORE_CTX_set_purpose(verification.get(), purpose) != 1) {
        return "OpenSSL can't begin to verify it";
    }
    X509_STORE_CTX_set_flags(verification.get(), X509_V_FLAG_NO_CHECK_TIME);
    if (X509_verify_cert(verification.get()) == 1) {
        return std::nullopt;
    }
    const X509* const at = X509_STORE_CTX_get_current_cert(verification.get());
    return std::string(X509_verify_cert_error_string(X509_STORE_CTX_get_error(verification.get()))) +
           (at != nullptr ? " (at " + OwnerText(at) + ")" : "");
}

}  // namespace

void CheckChain(const SslSettings& settings, const std::vector<CertificatePtr>& own, Findings& findings) {
    if (own.empty() || (settings.authority_file.empty() && settings.authority_directory.empty())) {
        return;
    }
    const std::optional<std::string> server = Distrust(settings, own, X509_PURPOSE_SSL_SERVER);
    const std::optional<std::string> client = Distrust(settings, own, X509_PURPOSE_SSL_CLIENT);
    const std::string& file = settings.certificate_file;
    if (!server && !client) {
        findings.Ok("chain", file, "it leads to an authority that is trusted");
    } else if (server == client) {
        findings.Error("chain", file, "peers won't trust it: " + *server,
                       "Put the certificates between it and the authority behind it in the file, and the "
                       "authority's into the file of -SSLCAfile.");
    } else {
        findings.Error("chain", file,
                       server ? "peers won't trust it as a server's certificate: " + *server
                              : "peers won't trust it as a client's certificate: " + *client,
                       "Ask for a certificate that is good for servers and clients.");
    }
    ERR_clear_error();
}

Finding ValidityFinding(const X509* certificate, const std::string& file, const CheckTime& time) {
    Finding finding;
    finding.check = "validity";
    finding.file = file;
    const std::string owner = NameText(X509_get_subject_name(certificate));
    const ASN1_TIME* const end = X509_get0_notAfter(certificate);
    finding.days_left = DaysUntil(end, time.now);
    if (qv_ssl::ValidityProblem(certificate, file, time.now)) {
        std::time_t now = time.now;
        const bool early = X509_cmp_time(X509_get0_notBefore(certificate), &now) > 0;
        finding.level = Level::kError;
        finding.text = owner +
                       (early ? " isn't valid before " + qv_ssl::TimeText(X509_get0_notBefore(certificate))
                              : " expired on " + qv_ssl::TimeText(end)) +
                       ", so peers refuse it";
        finding.advice = early ? "Check this machine's clock, or ask for another certificate."
                               : "Ask for a new certificate and put it in its place.";
        return finding;
    }
    finding.text = owner + " is valid for " + std::to_string(*finding.days_left) + " more days, until " +
                   qv_ssl::TimeText(end);
    if (*finding.days_left < time.warn_days) {
        finding.level = Level::kWarning;
        finding.advice = "Ask for a new certificate now and put it in its place before that day.";
    }
    return finding;
}

}  // namespace qv_tools
