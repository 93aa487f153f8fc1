#include "plain_requests.h"

// clang-format off
#include <omniORB4/IOP_S.h>
#include <omniORB4/callDescriptor.h>
#include <omniORB4/omniInterceptors.h>
#include <giopStream.h>
#include <giopStrand.h>
#include <GIOP_S.h>
// clang-format on

#include <atomic>
#include <cstring>
#include <string>

#include "limited_report.h"

namespace qv_orb {
namespace {

std::atomic<bool> g_refuse{false};
LimitedReport g_requests("messages about requests in clear");

void ReportRefusal(const char* peer) {
    constexpr std::size_t kScheme = sizeof "giop:tcp:" - 1;
    g_requests.Tell(
        std::string("SSL: the peer ") + (std::strlen(peer) > kScheme ? peer + kScheme : peer) +
        " sent a request in clear to the plain port, which was refused; let it use SSL (ssliop), or "
        "write -SSLNoProtection into the service configuration file to serve such requests");
}

}  // namespace

void RefusePlainRequests(bool refuse) {
    g_requests.Restart();
    g_refuse = refuse;
}

void AdmitRequest(omni::GIOP_S& request) {
    constexpr char kSsl[] = "giop:ssl:";
    if (!g_refuse) {
        return;
    }
    omni::giopConnection* const connection = request.strand().connection;
    if (std::strncmp(connection->myaddress(), kSsl, sizeof kSsl - 1) != 0) {
        ReportRefusal(connection->peeraddress());
        throw CORBA::NO_PERMISSION(0, CORBA::COMPLETED_NO);
    }
}

}  // namespace qv_orb
