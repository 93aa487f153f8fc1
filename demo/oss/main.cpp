// qv_demo_oss: an OSS that calls an EMS over the MTNM interfaces.
#include <cstdlib>
#include <exception>
#include <iostream>
#include <memory>

#include "demo/oss/commands.h"
#include "demo/oss/oss_orb.h"
#include "demo/oss/problem.h"
#include "demo/oss/settings.h"
#include "demo/oss/stop_request.h"

namespace {

std::unique_ptr<qv_oss::OssOrb> MakeOrb(const qv_oss::Settings& settings, const char* program) try {
    return std::make_unique<qv_oss::OssOrb>(program, settings.ssl_profile);
} catch (const CORBA::INITIALIZE&) {
    if (settings.ssl_profile.empty()) {
        throw;
    }
    throw qv_oss::Problem(qv_oss::kUsage, "the file of --ssl-profile can't be used; the reason stands above");
}

int Work(const qv_oss::Settings& settings, const char* program) try {
    const auto orb = MakeOrb(settings, program);
    qv_oss::Commands(*orb, settings).Run();
    return qv_oss::kOk;
} catch (const qv_oss::Problem& problem) {
    qv_oss::Complain(problem.what());
    return problem.code();
} catch (const CORBA::Exception& e) {
    qv_oss::Complain(std::string("the ORB failed: ") + e._name());
    return qv_oss::kUnexpected;
} catch (const std::exception& e) {
    qv_oss::Complain(e.what());
    return qv_oss::kUnexpected;
}

}  // namespace

int main(int argc, char** argv) {
    const qv_oss::ParsedSettings parsed = qv_oss::ParseSettings(argc, argv);
    if (!parsed.proceed) {
        return parsed.exit_code;
    }
    if (parsed.settings.command == qv_oss::Command::kEvents) {
        qv_oss::HoldStopSignals();
    }
    return Work(parsed.settings, argv[0]);
}
