// A client that speaks GIOP 1.0 by hand, to see and send what no ORB lets through.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace qv_test {

using ContextList = std::vector<std::pair<std::uint32_t, std::string>>;  // id and bytes

/// One TCP connection to 127.0.0.1. Throws std::system_error when it can't be made.
class RawConnection {
  public:
    explicit RawConnection(int port);
    ~RawConnection();
    RawConnection(const RawConnection&) = delete;
    RawConnection& operator=(const RawConnection&) = delete;

    /// Sends all of it, or as much as the peer takes before it closes.
    void Send(const std::string& bytes);
    /// Reads `count` bytes, or fewer when the peer closes or ten seconds pass.
    std::string Read(std::size_t count);

  private:
    int m_fd;
};

struct GiopReply {
    ContextList contexts;
    std::uint32_t request_id = 0;
    std::uint32_t status = 0;  ///< 0 no exception, 1 user exception, 2 system exception, 3 location forward
};

/// The object key in a stringified reference with an IIOP profile.
std::string ObjectKey(const std::string& ior);

/// A GIOP 1.0 request, little-endian, for an operation without arguments.
std::string GiopRequest(const std::string& object_key, const std::string& operation, std::uint32_t id,
                        const ContextList& contexts, bool response_expected = true);

/// Reads one reply; nothing when the connection ends or what comes is no GIOP 1.0 reply.
std::optional<GiopReply> ReadReply(RawConnection& connection);

}  // namespace qv_test
