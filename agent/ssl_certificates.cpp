#include <dirent.h>
#include <openssl/crypto.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <openssl/x509_vfy.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string_view>

#include "agent/corbabaseagentconfig.h"
#include "logging/corbalogutil.h"
#include "orb/ssl/openssl_types.h"
#include "platform/self_util_common.h"

namespace NS_CORBA {

namespace {

constexpr std::size_t kLineSize = 512;  // end mark included
constexpr std::size_t kPathSize = 4096;
constexpr std::size_t kStreamBuffer = 8192;

using RevocationList = std::unique_ptr<X509_CRL, qv_ssl::FreeBy<X509_CRL_free>>;
using Store = std::unique_ptr<X509_STORE, qv_ssl::FreeBy<X509_STORE_free>>;
using Verification = std::unique_ptr<X509_STORE_CTX, qv_ssl::FreeBy<X509_STORE_CTX_free>>;

/// The file that `name` leads to. Of a name that leads nowhere it is what the system got out of it, which
/// then can't be opened.
std::string Resolved(const std::string& name) {
    static_assert(kPathSize >= PATH_MAX);
    char path[kPathSize] = {};
    const char* const whole = ::realpath(name.c_str(), path);
    static_cast<void>(whole);
    return path;
}

/// What stands behind `key` in `text`; empty when it isn't there.
std::string_view RightOf(std::string_view key, std::string_view text) {
    const std::size_t found = text.find(key);
    return found == std::string_view::npos ? std::string_view() : text.substr(found + key.size());
}

bool IsRevoked(X509* certificate, X509* authority, X509_CRL* crl) {
    const Store store(X509_STORE_new());
    X509_STORE_add_cert(store.get(), authority);
    X509_STORE_set_flags(store.get(), X509_V_FLAG_CRL_CHECK);
    X509_STORE_add_crl(store.get(), crl);
    const Verification verification(X509_STORE_CTX_new());
    if (verification == nullptr) {
        return false;
    }
    int result = X509_STORE_CTX_init(verification.get(), store.get(), certificate, nullptr);
    if (result != 1) {
        TA_POS;
        TaDebugWithPara(1, "[CorbaBaseAgentConfig::verifyNBICertCRL]: X509_STORE_CTX_init error %d", result);
        return false;
    }
    result = X509_verify_cert(verification.get());
    const int error = X509_STORE_CTX_get_error(verification.get());
    if (result != 1) {
        TA_POS;
        TaTrace(
            "[CorbaBaseAgentConfig::verifyNBICertCRL]: X509_verify_cert ret error %d, verify cer error %d, "
            "info:%s",
            result, error, X509_verify_cert_error_string(error));
    }
    if (error != X509_V_ERR_CERT_REVOKED) {
        return false;
    }
    TA_POS;
    TaDebugWithPara(1, "[CorbaBaseAgentConfig::verifyNBICertCRL]: CORBA CERT REVOKED CheckRes:%d", error);
    return true;
}

}  // namespace

void CorbaBaseAgentConfig::GetNBISSLCertificateInfo() {
    // The pass phrase passes through here: the stream reads into a buffer that can be wiped.
    std::vector<char> buffer(kStreamBuffer);
    std::ifstream file;
    file.rdbuf()->pubsetbuf(buffer.data(), static_cast<std::streamsize>(buffer.size()));
    file.open(Resolved(m_SSLProfile));
    if (!file.is_open()) {
        TA_POS;
        TaDebug(1, "[CorbaBaseAgentConfig::GetNBISSLCertificateInfo]: open file error");
        return;
    }
    std::vector<char> line(kLineSize);
    std::string text;
    text.reserve(kLineSize);
    while (!file.eof()) {
        file.getline(line.data(), static_cast<std::streamsize>(line.size()));
        text = line.data();
        TakeSSLOption(text);
    }
    file.close();
    OPENSSL_cleanse(line.data(), line.size());
    OPENSSL_cleanse(text.data(), text.capacity());
    OPENSSL_cleanse(buffer.data(), buffer.size());
    m_NBISSLCRL = NS_UTIL::SelfUtilCommon::getEnvValue("_APP_SHARE_DIR") + "/etc/ssl/nbi/crl/";
}

void CorbaBaseAgentConfig::TakeSSLOption(const std::string& line) {
    const auto holds = [&line](const char* word) { return line.find(word) != std::string::npos; };
    // The pass phrase goes first: its word begins with that of the key.
    if (holds("-SSLPrivateKeyPasswd")) {
        OPENSSL_cleanse(m_NBISSLPrivateKeyPasswd.data(), m_NBISSLPrivateKeyPasswd.size());
        m_NBISSLPrivateKeyPasswd.assign(RightOf("-SSLPrivateKeyPasswd ", line));
    } else if (holds("-SSLPrivateKey")) {
        m_NBISSLPrivateKey = GetRightSubStr("PEM:", line);
    } else if (holds("-SSLCertificate")) {
        m_NBISSLCertificate = GetRightSubStr("PEM:", line);
    } else if (holds("-SSLCAfile")) {
        m_NBISSLCAfile = GetRightSubStr("PEM:", line);
    }
}

bool CorbaBaseAgentConfig::IsCRLFile(const std::string& name) {
    return name.find(".crl") != std::string::npos || name.find(".CRL") != std::string::npos;
}

void CorbaBaseAgentConfig::GetCRLFileList(std::vector<std::string>& files, const std::string& directory) {
    DIR* const stream = ::opendir(directory.c_str());
    if (stream == nullptr) {
        return;
    }
    // readdir_r is deprecated: readdir is as safe on streams that no other thread uses.
    while (const dirent* const entry = ::readdir(stream)) {
        if (IsCRLFile(entry->d_name)) {
            files.emplace_back(entry->d_name);
        }
    }
    ::closedir(stream);
}

bool CorbaBaseAgentConfig::CheckNBISSLCRL() {
    if (m_SSLMode == 0) {
        return true;
    }
    OPENSSL_init_ssl(0, nullptr);
    OPENSSL_init_ssl(OPENSSL_INIT_LOAD_SSL_STRINGS | OPENSSL_INIT_LOAD_CRYPTO_STRINGS, nullptr);
    OPENSSL_init_crypto(OPENSSL_INIT_ADD_ALL_CIPHERS | OPENSSL_INIT_ADD_ALL_DIGESTS, nullptr);
    std::vector<std::string> files;
    GetCRLFileList(files, m_NBISSLCRL);
    TA_POS;
    TaTrace("CheckNBISSLCRL debug.");
    for (const std::string& file : files) {
        if (!verifyNBICertCRL(m_NBISSLCAfile, m_NBISSLCertificate, m_NBISSLCRL + file)) {
            TA_POS;
            TaTrace("CheckNBISSLCRL false.");
            return false;
        }
    }
    return true;
}

bool CorbaBaseAgentConfig::verifyNBICertCRL(const std::string& caFile, const std::string& certFile,
                                            const std::string& crlFile) {
    X509* read = nullptr;
    GetX509Ptr(read, caFile);
    const qv_ssl::CertificatePtr authority(read);
    if (authority == nullptr) {
        return true;
    }
    read = nullptr;
    GetX509Ptr(read, certFile);
    const qv_ssl::CertificatePtr certificate(read);
    if (certificate == nullptr) {
        return true;
    }
    X509_CRL* list = nullptr;
    GetX509CRLPtr(list, crlFile);
    const RevocationList crl(list);
    return crl == nullptr || !IsRevoked(certificate.get(), authority.get(), crl.get());
}

void CorbaBaseAgentConfig::GetX509Ptr(x509_st*& certificate, const std::string& file) {
    if (file.empty()) {
        certificate = nullptr;
        return;
    }
    std::FILE* const stream = std::fopen(Resolved(file).c_str(), "r");
    if (stream == nullptr) {
        TA_POS;
        TaDebug(1, "[CorbaBaseAgentConfig::verifyNBICert]: open file error");
        return;
    }
    certificate = PEM_read_X509(stream, nullptr, nullptr, nullptr);
    if (certificate == nullptr) {
        TA_POS;
        TaDebug(1, "[CorbaBaseAgentConfig::verifyNBICert]: PEM_read_X509 file error");
    }
    std::fclose(stream);
}

void CorbaBaseAgentConfig::GetX509CRLPtr(X509_crl_st*& crl, const std::string& file) {
    if (file.empty()) {
        crl = nullptr;
        return;
    }
    std::FILE* const stream = std::fopen(Resolved(file).c_str(), "r");
    if (stream == nullptr) {
        TA_POS;
        TaDebugWithPara(1, "[CorbaBaseAgentConfig::verifyNBICert]: open file %s error", file.c_str());
        return;
    }
    crl = PEM_read_X509_CRL(stream, nullptr, nullptr, nullptr);
    if (crl == nullptr) {
        TA_POS;
        TaDebugWithPara(1, "[CorbaBaseAgentConfig::verifyNBICert]: PEM_read_X509_CRL file %s error",
                        file.c_str());
    }
    std::fclose(stream);
}

}  // namespace NS_CORBA
