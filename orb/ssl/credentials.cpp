#include "orb/ssl/credentials.h"

#include <openssl/err.h>
#include <openssl/pem.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "orb/ssl/ssl_error.h"

namespace qv_ssl {
namespace {

[[noreturn]] void Fail(const std::string& what, const std::string& file, const std::string& reason) {
    throw SslError(what + " " + file + " can't be used: " + reason);
}

// What OpenSSL noted last on this thread; the notes are cleared, for they would be taken for those of a later
// call.
std::string LastReason() {
    const unsigned long code = ERR_peek_last_error();
    const char* reason = code == 0 ? nullptr : ERR_reason_error_string(code);
    ERR_clear_error();
    return reason != nullptr ? reason : "OpenSSL gives no reason";
}

BioPtr Open(const std::string& what, const std::string& file) {
    struct stat status {};
    if (stat(file.c_str(), &status) != 0) {
        Fail(what, file, std::strerror(errno));
    }
    if (S_ISDIR(status.st_mode)) {
        Fail(what, file, "it is a directory");
    }
    errno = 0;
    BioPtr bio(BIO_new_file(file.c_str(), "r"));
    if (!bio) {
        const int reason = errno;
        ERR_clear_error();
        Fail(what, file, std::strerror(reason));
    }
    return bio;
}

bool AtEnd() {
    return ERR_GET_REASON(ERR_peek_last_error()) == PEM_R_NO_START_LINE;
}

// A certificate may claim to be encrypted; OpenSSL would ask on the terminal then.
int GiveNothing(char* /*buffer*/, int /*size*/, int /*writing*/, void* /*user*/) {
    return -1;
}

// Hands the pass phrase to OpenSSL, which would ask on the terminal otherwise.
struct PassPhrase {
    const std::optional<std::string>& text;
    bool asked = false;

    static int Give(char* buffer, int size, int /*writing*/, void* self) {
        auto* const phrase = static_cast<PassPhrase*>(self);
        phrase->asked = true;
        if (!phrase->text || size < 0 || phrase->text->size() > static_cast<std::size_t>(size)) {
            return -1;
        }
        std::copy(phrase->text->begin(), phrase->text->end(), buffer);
        return static_cast<int>(phrase->text->size());
    }
};

}  // namespace

std::vector<CertificatePtr> LoadCertificates(const std::string& file) {
    constexpr char kWhat[] = "the certificate file";
    const BioPtr bio = Open(kWhat, file);
    ERR_clear_error();
    std::vector<CertificatePtr> certificates;
    for (;;) {
        CertificatePtr certificate(PEM_read_bio_X509_AUX(bio.get(), nullptr, &GiveNothing, nullptr));
        if (!certificate) {
            break;
        }
        certificates.push_back(std::move(certificate));
    }
    if (!AtEnd()) {
        Fail(kWhat, file,
             "certificate " + std::to_string(certificates.size() + 1) + " is damaged (" + LastReason() + ")");
    }
    ERR_clear_error();
    if (certificates.empty()) {
        Fail(kWhat, file, "it holds no certificate in PEM form");
    }
    return certificates;
}

KeyPtr LoadPrivateKey(const std::string& file, const std::optional<std::string>& pass_phrase) {
    constexpr char kWhat[] = "the private key file";
    const BioPtr bio = Open(kWhat, file);
    ERR_clear_error();
    PassPhrase phrase{pass_phrase};
    KeyPtr key(PEM_read_bio_PrivateKey(bio.get(), nullptr, &PassPhrase::Give, &phrase));
    if (key) {
        ERR_clear_error();
        return key;
    }
    if (phrase.asked) {
        ERR_clear_error();
        Fail(kWhat, file,
             pass_phrase ? "the pass phrase of -SSLPrivateKeyPasswd does not open it"
                         : "it is encrypted and no -SSLPrivateKeyPasswd is given");
    }
    ERR_clear_error();
    Fail(kWhat, file, "it holds no readable private key in PEM form");
}

void RequireKeyFits(X509* certificate, const std::string& certificate_file, EVP_PKEY* key,
                    const std::string& key_file) {
    ERR_clear_error();
    const bool fits = X509_check_private_key(certificate, key) == 1;
    ERR_clear_error();
    if (!fits) {
        Fail("the private key file", key_file,
             "its key is not that of the certificate in " + certificate_file);
    }
}

Credentials LoadCredentials(const SslSettings& settings) {
    Credentials credentials;
    std::vector<CertificatePtr> certificates = LoadCertificates(settings.certificate_file);
    credentials.certificate = std::move(certificates.front());
    certificates.erase(certificates.begin());
    credentials.chain = std::move(certificates);
    credentials.key = LoadPrivateKey(settings.private_key_file, settings.pass_phrase);
    RequireKeyFits(credentials.certificate.get(), settings.certificate_file, credentials.key.get(),
                   settings.private_key_file);
    return credentials;
}

std::string TimeText(const ASN1_TIME* time) {
    std::tm parts{};
    char text[32];
    if (time == nullptr || ASN1_TIME_to_tm(time, &parts) != 1 ||
        std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S UTC", &parts) == 0) {
        return "an unknown time";
    }
    return text;
}

std::optional<std::string> ValidityProblem(const X509* certificate, const std::string& file,
                                           std::time_t now) {
    const ASN1_TIME* const begin = X509_get0_notBefore(certificate);
    const ASN1_TIME* const end = X509_get0_notAfter(certificate);
    if (X509_cmp_time(end, &now) < 0) {
        return "the certificate in " + file + " expired on " + TimeText(end) +
               ", so peers refuse it; put a new one in its place";
    }
    if (X509_cmp_time(begin, &now) > 0) {
        return "the certificate in " + file + " is not valid before " + TimeText(begin) +
               ", so peers refuse it until then; check this machine's clock or the certificate";
    }
    return std::nullopt;
}

}  // namespace qv_ssl
