#include "underlying_orb.h"

#include <omniORB4/CORBA.h>

#include <cstring>

#include "limited_report.h"

namespace qv_orb {
namespace {

// An inventory reply of 50,000 elements is some 30 MB; the ORB's own limit is 2 MiB.
constexpr char kMaxMessageSize[] = "268435456";
// A call waits for the connection of another call to the same end point only beyond this number; the ORB's
// own limit is 5. Several consumers of one process must not wait for each other.
constexpr char kConnectionsPerServer[] = "64";

// An ORB without SSL is what was asked for then.
bool SaysThatThereIsNoSsl(const char* message) {
    return std::strstr(message, "SSL CA certificate location is not set") != nullptr;
}

// The ORB writes a line for each damaged message that a peer sends.
void LogOfOrb(const char* message) {
    if (SaysThatThereIsNoSsl(message)) {
        return;
    }
    static LimitedReport report("messages of the ORB");
    std::string line(message);
    while (!line.empty() && line.back() == '\n') {
        line.pop_back();
    }
    report.Tell(line);
}

}  // namespace

CORBA::ORB* MakeUnderlyingOrb(const OrbOptions& options) {
    omniORB::setLogFunction(LogOfOrb);
    std::vector<const char*> flat = {
        "giopMaxMsgSize",     kMaxMessageSize, "supportPerThreadTimeOut", "1", "maxGIOPConnectionPerServer",
        kConnectionsPerServer};
    for (const auto& [name, value] : options.underlying) {
        flat.push_back(name.c_str());
        flat.push_back(value.c_str());
    }
    flat.push_back(nullptr);
    flat.push_back(nullptr);
    using Pair = const char* [2];
    int argc = 0;
    char* argv[] = {nullptr};
    return CORBA::ORB_init(argc, argv, "", reinterpret_cast<Pair*>(flat.data()));
}

}  // namespace qv_orb
