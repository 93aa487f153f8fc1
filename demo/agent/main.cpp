// qv_demo_agent: a small EMS that serves the MTNM interfaces.
#include <signal.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>

#include "demo/agent/console.h"
#include "demo/agent/demo_agent.h"
#include "demo/agent/options.h"
#include "demo/agent/stop_signal.h"
#include "orb/portability.h"

namespace {

constexpr int kExitFailure = 1;

int Complain(const std::string& problem) {
    std::cerr << "qv_demo_agent: " << problem << std::endl;
    return kExitFailure;
}

int Serve(qv_demo::DemoAgent& agent, qv_demo::StopSignal& signal) {
    int exit_code = 0;
    try {
        agent.Start();
        signal.Wait();
    } catch (const std::exception& e) {
        exit_code = Complain(e.what());
    } catch (const CORBA::Exception& e) {
        exit_code = Complain("the ORB failed: " + qv_orb::ExceptionText(e));
    }
    agent.Stop();
    if (exit_code == 0) {
        qv_demo::Say("stopped");
    }
    return exit_code;
}

void SetEnvironment(const char* name, const std::string& value) {
    if (!value.empty()) {
        ::setenv(name, value.c_str(), 1);
    }
}

}  // namespace

int main(int argc, char** argv) {
    const qv_demo::ParsedOptions parsed = qv_demo::ParseOptions(argc, argv);
    if (!parsed.proceed) {
        return parsed.exit_code;
    }
    try {
        ::signal(SIGPIPE, SIG_IGN);
        SetEnvironment("QV_AGENT_CONFIG", parsed.options.config);
        SetEnvironment("QV_LOG_DIR", parsed.options.log_dir);
        qv_demo::StopSignal signal;
        qv_demo::TellOfTheOrb();
        qv_demo::DemoAgent agent(parsed.options);
        const int exit_code = Serve(agent, signal);
        // Threads of the ORB may still run on what would be destroyed at a return.
        std::cout.flush();
        std::fflush(nullptr);
        std::quick_exit(exit_code);
    } catch (const std::exception& e) {
        return Complain(e.what());
    }
}
