// Naming_Service: serves the OMG naming service for an agent and its clients.
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "services/common/start_error.h"
#include "services/common/version.h"
#include "services/naming/command_line.h"
#include "services/naming/naming_front.h"

int main(int argc, char** argv) {
    // Sockets of the process that started this one must not stay open in here and in the name server.
    close_range(3, ~0U, 0);
    try {
        const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
        const qv_naming::Settings settings = qv_naming::ParseCommandLine(arguments);
        if (settings.help) {
            std::fputs(qv_naming::UsageText().c_str(), stdout);
            return 0;
        }
        if (settings.version) {
            std::fputs(qv_service::VersionText("Naming_Service").c_str(), stdout);
            return 0;
        }
        return qv_naming::NamingFront(settings).Run();
    } catch (const qv_naming::StartError& error) {
        qv_naming::Tell(error.what());
        return error.ExitCode();
    } catch (const std::exception& error) {
        qv_naming::Tell(std::string("An unexpected error ended the naming service: ") + error.what());
        return qv_naming::kExitFailure;
    }
}
