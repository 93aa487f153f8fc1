#include "services/naming/locate_probe.h"

#include <array>
#include <cstring>

#include "services/naming/probe_connection.h"

namespace qv_naming {
namespace {

constexpr unsigned char kLocateReply = 4;
constexpr unsigned char kObjectHere = 1;
constexpr std::size_t kReplySize = 20;  // header, request id, locate status

// GIOP 1.0, big-endian: header with message type 3 and size 19, request id 1, key length 11, key.
constexpr char kLocateRequest[] =
    "GIOP\x01\x00\x00\x03"
    "\x00\x00\x00\x13"
    "\x00\x00\x00\x01"
    "\x00\x00\x00\x0b"
    "NameService";

}  // namespace

bool RootContextAnswers(const std::string& address, std::uint16_t port, std::chrono::milliseconds limit,
                        SSL_CTX* context) {
    ProbeConnection connection(address, port, limit, context);
    std::array<unsigned char, kReplySize> reply{};
    if (!connection.Send(kLocateRequest, sizeof kLocateRequest - 1) ||
        !connection.Receive(reply.data(), reply.size())) {
        return connection.HeardSsl();
    }
    const bool little_endian = (reply[6] & 1) != 0;
    const unsigned char status = little_endian ? reply[16] : reply[19];
    return std::memcmp(reply.data(), "GIOP", 4) == 0 && reply[7] == kLocateReply && status == kObjectHere;
}

}  // namespace qv_naming
