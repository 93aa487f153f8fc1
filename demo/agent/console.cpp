#include "demo/agent/console.h"

#include <iostream>
#include <mutex>

#include "logging/corbalogutil.h"
#include "orb/portability.h"

namespace qv_demo {

void Say(const std::string& line) {
    static std::mutex mutex;
    const std::lock_guard<std::mutex> guard(mutex);
    std::cout << line << std::endl;
}

void TellOfTheOrb() {
    qv_orb::SetDiagnosticSink([](const std::string& line) {
        std::cerr << line + "\n" << std::flush;
        TA_POS;
        NS_CORBA::TaDebug(1, line.c_str());
    });
}

}  // namespace qv_demo
