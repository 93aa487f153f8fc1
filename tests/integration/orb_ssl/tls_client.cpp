#include "tls_client.h"

#include <arpa/inet.h>
#include <openssl/err.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <stdexcept>
#include <system_error>

namespace qv_test {
namespace {

// Ten seconds without an answer are none.
void LimitWaits(int fd) {
    const timeval limit{10, 0};
    setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
}

// A LocateRequest of GIOP 1.0 for the key "x".
constexpr char kLocateRequest[] =
    "GIOP\1\0\1\3"
    "\x09\0\0\0"
    "\1\0\0\0"
    "\1\0\0\0x";

}  // namespace

int ConnectTo(int port) {
    const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (fd < 0 || connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        const int reason = errno;
        close(fd);
        throw std::system_error(reason, std::generic_category(), "connect");
    }
    LimitWaits(fd);
    return fd;
}

TlsClient::TlsClient(int port, const TlsClientOptions& options)
    : m_context(SSL_CTX_new(TLS_client_method())), m_fd(ConnectTo(port)) {
    if (options.highest_version != 0) {
        SSL_CTX_set_cipher_list(m_context, "ALL:@SECLEVEL=0");
        SSL_CTX_set_min_proto_version(m_context, 0);
        SSL_CTX_set_max_proto_version(m_context, options.highest_version);
    }
    if (options.identity != nullptr) {
        SSL_CTX_set_default_passwd_cb_userdata(m_context,
                                               const_cast<char*>(options.identity->pass_phrase.c_str()));
        if (SSL_CTX_use_certificate_chain_file(m_context, options.identity->certificate.c_str()) != 1 ||
            SSL_CTX_use_PrivateKey_file(m_context, options.identity->key.c_str(), SSL_FILETYPE_PEM) != 1) {
            throw std::runtime_error("the test's certificate can't be used");
        }
    }
    m_ssl = SSL_new(m_context);
    SSL_set_fd(m_ssl, m_fd);
}

TlsClient::~TlsClient() {
    SSL_free(m_ssl);
    SSL_CTX_free(m_context);
    close(m_fd);
    ERR_clear_error();
}

bool TlsClient::Connect() {
    ERR_clear_error();
    char answer[4] = "";
    return SSL_connect(m_ssl) == 1 && SSL_write(m_ssl, kLocateRequest, sizeof kLocateRequest - 1) > 0 &&
           SSL_read(m_ssl, answer, sizeof answer) == static_cast<int>(sizeof answer) &&
           std::string(answer, sizeof answer) == "GIOP";
}

bool TlsClient::Renegotiate() {
    ERR_clear_error();
    return SSL_renegotiate(m_ssl) == 1 && SSL_do_handshake(m_ssl) == 1;
}

std::string TlsClient::ServerName() const {
    const X509* const certificate = SSL_get0_peer_certificate(m_ssl);
    char name[256] = "";
    if (certificate != nullptr) {
        X509_NAME_get_text_by_NID(X509_get_subject_name(certificate), NID_commonName, name, sizeof name);
    }
    return name;
}

}  // namespace qv_test
