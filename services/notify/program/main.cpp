// Notify_Service: serves OMG event channels to an agent and its clients.
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

#include "orb/portability.h"
#include "services/common/version.h"
#include "services/notify/program/check.h"
#include "services/notify/program/notify_front.h"

int main(int argc, char** argv) {
    // Sockets of the process that started this one must not stay open in here.
    close_range(3, ~0U, 0);
    try {
        const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
        const qv_notify::Settings settings = qv_notify::ParseCommandLine(arguments);
        if (settings.help) {
            std::fputs(qv_notify::UsageText().c_str(), stdout);
            return 0;
        }
        if (settings.version) {
            std::fputs(qv_service::VersionText("Notify_Service").c_str(), stdout);
            return 0;
        }
        qv_orb::SetDiagnosticSink([](const std::string& line) { qv_notify::Tell(line); });
        if (settings.check) {
            return qv_notify::CheckSetup(settings);
        }
        qv_notify::NotifyFront(settings).Run();
    } catch (...) {
        return qv_notify::TellFailure();
    }
}
