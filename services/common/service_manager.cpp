#include "services/common/service_manager.h"

#include <systemd/sd-daemon.h>

#include <algorithm>
#include <cstring>

namespace qv_service {

std::string TellReady(const std::string& status) {
    // Lines are assignments: one in the text must not become one.
    std::string line = status;
    std::replace(line.begin(), line.end(), '\n', ' ');
    const int result = sd_notify(0, ("READY=1\nSTATUS=" + line).c_str());
    if (result >= 0) {
        return {};
    }
    return std::string("The service manager could not be told that the service is up (") +
           std::strerror(-result) +
           "), so it may end the service. Check the socket that NOTIFY_SOCKET names.";
}

void TellStopping() {
    sd_notify(0, "STOPPING=1");
}

}  // namespace qv_service
