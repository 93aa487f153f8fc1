#include "orb/ssl/handshake_report.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <openssl/err.h>
#include <sys/socket.h>

#include <atomic>
#include <optional>

#include "orb/ssl/handshake_failure.h"

namespace qv_ssl {
namespace {

std::atomic<HandshakeSink> g_sink{nullptr};

std::atomic<int> g_under_way{0};

/// One handshake among those that peers began, while it lasts.
class Place {
  public:
    Place() : number_(++g_under_way) {}
    ~Place() { --g_under_way; }
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;

    bool TooMany() const { return number_ > kMostHandshakes; }

  private:
    const int number_;
};

/// What is known of one connection, from the beginning of its handshake to its end. Used by one thread at a
/// time.
struct Handshake {
    std::string peer;
    bool serving = false;
    bool settled = false;    // completed, or its failure was told
    int renegotiations = 0;  // that were asked for
    std::optional<Place> place;
};

// A client that asks by mistake stays connected; one that goes on asking wants to keep this machine busy.
constexpr int kRenegotiations = 3;

std::string PeerOf(const SSL* connection) {
    sockaddr_storage address{};
    socklen_t size = sizeof address;
    char host[NI_MAXHOST] = "";
    char port[NI_MAXSERV] = "";
    if (getpeername(SSL_get_fd(connection), reinterpret_cast<sockaddr*>(&address), &size) != 0 ||
        getnameinfo(reinterpret_cast<const sockaddr*>(&address), size, host, sizeof host, port, sizeof port,
                    NI_NUMERICHOST | NI_NUMERICSERV) != 0) {
        return "of unknown address";
    }
    return address.ss_family == AF_INET6 ? "[" + std::string(host) + "]:" + port
                                         : std::string(host) + ":" + port;
}

void Tell(Handshake& handshake, const std::string& what) {
    if (handshake.settled) {
        return;
    }
    handshake.settled = true;
    handshake.place.reset();
    if (const HandshakeSink sink = g_sink) {
        sink("SSL: the peer " + handshake.peer + " " + what);
    }
}

bool HeardAnything(const SSL* connection) {
    BIO* const input = SSL_get_rbio(connection);
    return input != nullptr && BIO_number_read(input) > 0;
}

// The connection goes and its handshake never came to an end: the ORB gave it up.
void Forget(void* parent, void* state, CRYPTO_EX_DATA* /*data*/, int /*index*/, long /*argl*/,
            void* /*argp*/) {
    auto* const handshake = static_cast<Handshake*>(state);
    if (handshake == nullptr) {
        return;
    }
    if (handshake->serving) {
        Tell(*handshake, HeardAnything(static_cast<SSL*>(parent))
                             ? "did not go on with the handshake in time; the connection was closed"
                             : "connected and sent nothing in time; the connection was closed");
    } else {
        Tell(*handshake, "did not answer the handshake in time; check that it serves SSL on this port");
    }
    delete handshake;
    // What is left of a failure would be taken for that of the next connection that this thread serves.
    ERR_clear_error();
}

int HandshakeIndex() {
    static const int index = SSL_get_ex_new_index(0, nullptr, nullptr, nullptr, &Forget);
    return index;
}

Handshake* HandshakeOf(const SSL* connection) {
    return static_cast<Handshake*>(SSL_get_ex_data(connection, HandshakeIndex()));
}

void Begin(SSL* connection) {
    if (HandshakeOf(connection) != nullptr) {
        return;  // TLS 1.3 says so again for each message after the handshake
    }
    auto* const handshake = new Handshake;
    handshake->peer = PeerOf(connection);
    handshake->serving = SSL_is_server(connection) == 1;
    if (SSL_set_ex_data(connection, HandshakeIndex(), handshake) != 1) {
        delete handshake;
        return;
    }
    if (handshake->serving && handshake->place.emplace().TooMany()) {
        Tell(*handshake, "was turned away: " + std::to_string(kMostHandshakes) +
                             " others have not finished their handshakes; see who keeps them open");
        shutdown(SSL_get_fd(connection), SHUT_RDWR);
    }
}

// A handshake step came back without success: it waits for the peer, or it has failed.
void Failed(const SSL* connection, Handshake& handshake) {
    const unsigned long error = ERR_peek_last_error();
    BIO* const input = SSL_get_rbio(connection);
    if (error == 0 && input != nullptr && BIO_should_retry(input)) {
        return;
    }
    if (!HeardAnything(connection) && handshake.serving) {
        handshake.settled = true;  // a port check
        handshake.place.reset();
        return;
    }
    Tell(handshake, DescribeFailure(error, SSL_get_verify_result(connection)));
}

// OpenSSL answers each with a warning.
void RenegotiationRefused(const SSL* connection, Handshake& handshake) {
    if (++handshake.renegotiations == kRenegotiations) {
        handshake.settled = false;
        Tell(handshake,
             "asks for a renegotiation again and again, which is not offered; the connection was closed");
        shutdown(SSL_get_fd(connection), SHUT_RDWR);
    }
}

}  // namespace

void SetHandshakeSink(HandshakeSink sink) {
    g_sink = sink;
}

void WatchHandshake(const SSL* connection, int where, int result) {
    if ((where & SSL_CB_HANDSHAKE_START) != 0) {
        Begin(const_cast<SSL*>(connection));
    }
    Handshake* const handshake = HandshakeOf(connection);
    if (handshake == nullptr) {
        return;
    }
    if ((where & SSL_CB_HANDSHAKE_DONE) != 0) {
        handshake->settled = true;
        handshake->place.reset();
    } else if ((where & SSL_CB_EXIT) != 0 && result <= 0) {
        Failed(connection, *handshake);
    } else if (where == SSL_CB_WRITE_ALERT && (result & 0xff) == SSL_AD_NO_RENEGOTIATION) {
        RenegotiationRefused(connection, *handshake);
    } else if (where == SSL_CB_READ_ALERT && (result >> 8) == SSL3_AL_FATAL &&
               SSL_is_init_finished(connection)) {
        // With TLS 1.3 a client believes itself connected when the server looks at its certificate.
        handshake->settled = false;
        Tell(*handshake, DescribeAlert(result & 0xff));
    }
}

}  // namespace qv_ssl
