// Notify_Service: serves OMG event channels to an agent and its clients.
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "orb/portability.h"
#include "services/common/start_error.h"
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
        qv_orb::SetDiagnosticSink([](const std::string& line) { qv_notify::Tell(line); });
        return settings.check ? qv_notify::CheckSetup(settings) : qv_notify::NotifyFront(settings).Run();
    } catch (const qv_service::StartError& error) {
        qv_notify::Tell(error.what());
        return error.ExitCode();
    } catch (const CORBA::Exception& error) {
        qv_notify::Tell("An unexpected error ended the notification service: " +
                        qv_orb::ExceptionText(error));
        return qv_service::kExitFailure;
    } catch (const std::exception& error) {
        qv_notify::Tell(std::string("An unexpected error ended the notification service: ") + error.what());
        return qv_service::kExitFailure;
    }
}
