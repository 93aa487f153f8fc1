#include "giop_client.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace qv_test {
namespace {

[[noreturn]] void Fail(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

/// Writes little-endian CDR.
class CdrWriter {
  public:
    void Octet(unsigned value) { m_bytes.push_back(static_cast<char>(value)); }
    void Ulong(std::uint32_t value) {
        m_bytes.resize((m_bytes.size() + 3) / 4 * 4);
        for (int shift = 0; shift < 32; shift += 8) {
            Octet(value >> shift & 0xff);
        }
    }
    void Octets(const std::string& value) {
        Ulong(static_cast<std::uint32_t>(value.size()));
        m_bytes += value;
    }
    void String(const std::string& value) { Octets(value + '\0'); }
    const std::string& bytes() const { return m_bytes; }

  private:
    std::string m_bytes;
};

/// Reads CDR; throws std::out_of_range past the end.
class CdrReader {
  public:
    CdrReader(std::string bytes, bool little) : m_bytes(std::move(bytes)), m_little(little) {}

    unsigned Octet() { return static_cast<unsigned char>(m_bytes.at(m_next++)); }
    std::uint32_t Ushort() {
        Align(2);
        const unsigned first = Octet();
        const unsigned second = Octet();
        return m_little ? second << 8 | first : first << 8 | second;
    }
    std::uint32_t Ulong() {
        Align(4);
        const std::uint32_t first = Ushort();
        const std::uint32_t second = Ushort();
        return m_little ? second << 16 | first : first << 16 | second;
    }
    std::string Octets() {
        const std::uint32_t size = Ulong();
        if (size > m_bytes.size() - m_next) {
            throw std::out_of_range("a sequence is longer than its message");
        }
        m_next += size;
        return m_bytes.substr(m_next - size, size);
    }

  private:
    void Align(std::size_t to) { m_next = (m_next + to - 1) / to * to; }

    const std::string m_bytes;
    const bool m_little;
    std::size_t m_next = 0;
};

CdrReader Encapsulation(const std::string& bytes) {
    CdrReader reader(bytes, bytes.at(0) != 0);
    reader.Octet();
    return reader;
}

std::string FromHex(const std::string& text) {
    std::string bytes;
    for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
        bytes.push_back(static_cast<char>(std::stoi(text.substr(i, 2), nullptr, 16)));
    }
    return bytes;
}

constexpr std::size_t kHeader = 12;

}  // namespace

RawConnection::RawConnection(int port) : m_fd(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    if (m_fd < 0) {
        Fail("socket");
    }
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    if (connect(m_fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        Fail("connect");
    }
    const timeval patience{10, 0};
    setsockopt(m_fd, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
}

RawConnection::~RawConnection() {
    close(m_fd);
}

void RawConnection::Send(const std::string& bytes) {
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        const ssize_t count = send(m_fd, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (count <= 0) {
            return;
        }
        sent += static_cast<std::size_t>(count);
    }
}

std::string RawConnection::Read(std::size_t count) {
    std::string bytes(count, '\0');
    std::size_t got = 0;
    while (got < count) {
        const ssize_t now = recv(m_fd, bytes.data() + got, count - got, 0);
        if (now <= 0) {
            break;
        }
        got += static_cast<std::size_t>(now);
    }
    bytes.resize(got);
    return bytes;
}

std::string ObjectKey(const std::string& ior) {
    CdrReader reader = Encapsulation(FromHex(ior.substr(4)));
    reader.Octets();  // type id
    const std::uint32_t profiles = reader.Ulong();
    for (std::uint32_t i = 0; i < profiles; ++i) {
        const std::uint32_t tag = reader.Ulong();
        const std::string data = reader.Octets();
        if (tag == 0) {
            CdrReader profile = Encapsulation(data);
            profile.Octet();
            profile.Octet();   // version
            profile.Octets();  // host
            profile.Ushort();  // port
            return profile.Octets();
        }
    }
    throw std::invalid_argument("the reference has no IIOP profile");
}

std::string GiopRequest(const std::string& object_key, const std::string& operation, std::uint32_t id,
                        const ContextList& contexts, bool response_expected) {
    CdrWriter body;
    body.Ulong(static_cast<std::uint32_t>(contexts.size()));
    for (const auto& [context_id, data] : contexts) {
        body.Ulong(context_id);
        body.Octets(data);
    }
    body.Ulong(id);
    body.Octet(response_expected ? 1 : 0);
    body.Octets(object_key);
    body.String(operation);
    body.Octets("");  // principal
    CdrWriter header;
    for (const unsigned octet : {'G' + 0u, 'I' + 0u, 'O' + 0u, 'P' + 0u, 1u, 0u, 1u, 0u}) {
        header.Octet(octet);
    }
    header.Octets(body.bytes());
    return header.bytes();
}

std::optional<GiopReply> ReadReply(RawConnection& connection) {
    const std::string header = connection.Read(kHeader);
    if (header.size() < kHeader || header.substr(0, 4) != "GIOP" || header[5] != 0 || header[7] != 1) {
        return std::nullopt;
    }
    const bool little = (header[6] & 1) != 0;
    CdrReader size(header.substr(8), little);
    CdrReader body(connection.Read(size.Ulong()), little);
    GiopReply reply;
    reply.contexts.resize(body.Ulong());
    for (auto& [id, data] : reply.contexts) {
        id = body.Ulong();
        data = body.Octets();
    }
    reply.request_id = body.Ulong();
    reply.status = body.Ulong();
    return reply;
}

}  // namespace qv_test
