#include "tools/ssl/certificate_check.h"

#include <openssl/err.h>

#include <chrono>
#include <memory>

#include "orb/ssl/credential_source.h"
#include "orb/ssl/credentials.h"
#include "orb/ssl/ssl_error.h"
#include "orb/ssl/tls_setup.h"
#include "tools/ssl/certificate_text.h"
#include "tools/ssl/chain_check.h"
#include "tools/ssl/file_access.h"

namespace qv_tools {
namespace {

using qv_ssl::CertificatePtr;
using qv_ssl::SslError;
using qv_ssl::SslSettings;

constexpr const char* kCertificate = "certificate";
constexpr const char* kKey = "key";
constexpr const char* kAuthority = "authority";

std::vector<CertificatePtr> Load(const char* check, const std::string& file, Findings& findings) {
    if (file.empty() || !CheckReadable(check, file, findings)) {
        return {};
    }
    CheckPermissions(file, Secrecy::kPublic, findings);
    try {
        std::vector<CertificatePtr> certificates = qv_ssl::LoadCertificates(file);
        findings.Ok(
            check, file,
            OwnerText(certificates.front().get()) +
                (certificates.size() > 1 ? " and " + std::to_string(certificates.size() - 1) + " more" : ""));
        return certificates;
    } catch (const SslError& error) {
        findings.Error(check, file, error.what(), "Put a file with certificates in PEM form there.");
        return {};
    }
}

bool OpensWithoutPassPhrase(const std::string& file) {
    try {
        qv_ssl::LoadPrivateKey(file, std::nullopt);
        return true;
    } catch (const SslError&) {
        return false;
    }
}

/// True when the key can be used.
bool CheckKey(const SslSettings& settings, X509* certificate, Findings& findings) {
    const std::string& file = settings.private_key_file;
    if (file.empty() || !CheckReadable(kKey, file, findings)) {
        return false;
    }
    CheckPermissions(file, Secrecy::kSecret, findings);
    try {
        const qv_ssl::KeyPtr key = qv_ssl::LoadPrivateKey(file, settings.pass_phrase);
        if (certificate == nullptr) {
            findings.Ok(kKey, file, "the key can be loaded");
        } else {
            qv_ssl::RequireKeyFits(certificate, settings.certificate_file, key.get(), file);
            findings.Ok(kKey, file, "the key can be loaded and is that of the certificate");
        }
    } catch (const SslError& error) {
        findings.Error(kKey, file, error.what(),
                       "Name the key that the certificate was made for, with its pass phrase.");
        return false;
    }
    if (settings.pass_phrase && OpensWithoutPassPhrase(file)) {
        findings.Warn(kKey, file, "the key isn't encrypted, so the pass phrase of the profile has no effect",
                      "Encrypt it (openssl pkcs8 -topk8), or take -SSLPrivateKeyPasswd out.");
    }
    return true;
}

/// What is wrong only with the whole, as the ORB will find at its start.
void CheckStart(const SslSettings& settings, Findings& findings) {
    const std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> context(SSL_CTX_new(TLS_method()), &SSL_CTX_free);
    try {
        const auto source = std::make_shared<qv_ssl::CredentialSource>(
            settings, [] { return std::chrono::steady_clock::now(); }, [](const std::string&) {});
        qv_ssl::SetUpContext(context.get(), settings, source);
        findings.Ok("start", settings.profile, "the ORB can set up SSL with it");
    } catch (const SslError& error) {
        findings.Error("start", settings.profile, error.what(),
                       "Correct it; the processes don't start like this.");
    }
}

void CheckValidity(const std::vector<CertificatePtr>& certificates, const std::string& file,
                   const CheckTime& time, Findings& findings) {
    for (const CertificatePtr& certificate : certificates) {
        findings.Add(ValidityFinding(certificate.get(), file, time));
    }
}

}  // namespace

LoadedCertificates CheckCertificates(const SslSettings& settings, const CheckTime& time, Findings& findings) {
    LoadedCertificates loaded;
    loaded.own = Load(kCertificate, settings.certificate_file, findings);
    const bool usable = CheckKey(settings, loaded.own.empty() ? nullptr : loaded.own.front().get(), findings);
    loaded.authorities = Load(kAuthority, settings.authority_file, findings);
    CheckChain(settings, loaded.own, findings);
    CheckValidity(loaded.own, settings.certificate_file, time, findings);
    CheckValidity(loaded.authorities, settings.authority_file, time, findings);
    if (usable && !loaded.own.empty()) {
        CheckStart(settings, findings);
    }
    ERR_clear_error();
    return loaded;
}

}  // namespace qv_tools
