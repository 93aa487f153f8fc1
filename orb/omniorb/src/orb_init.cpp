#include <mutex>
#include <stdexcept>

#include "diagnostics.h"
#include "hooks.h"
#include "interposed.h"
#include "orb/all_signals_blocked.h"
#include "orb_init_info.h"
#include "orb_options.h"
#include "orb_state.h"
#include "policy_managers.h"
#include "slots.h"
#include "ssl_options.h"
#include "underlying_orb.h"

namespace qv_orb {
namespace {

std::mutex g_init_mutex;

void ForgetInterceptors() {
    OrbState& state = orb_state();
    for (const auto& interceptor : state.server_interceptors) {
        try {
            interceptor->destroy();
        } catch (...) {
            Report("an interceptor raised an exception from destroy(); it is dropped all the same");
        }
    }
    state.server_interceptors.clear();
    state.slot_count = 0;
}

void OrbDestroyed() {
    ForgetInterceptors();
    orb_state().orb_exists = false;
}

OrbOptions TakeOptions(int& argc, char** argv) {
    try {
        return TakeOrbOptions(argc, argv);
    } catch (const std::invalid_argument& problem) {
        Report(problem.what());
        throw CORBA::BAD_PARAM(0, CORBA::COMPLETED_NO);
    }
}

void StartState(const std::vector<std::string>& arguments, const OrbOptions& options, const char* orb_id) {
    OrbState& state = orb_state();
    state.arguments = arguments;
    state.orb_id = orb_id != nullptr && *orb_id != '\0' ? orb_id : options.orb_id;
    state.server_id = options.server_id;
    state.slot_count = 0;
    ++state.orb_number;
    state.server_interceptors.clear();
}

void ReportInertOptions(const OrbOptions& options) {
    for (const std::string& option : options.without_effect) {
        ReportOnce("the option " + option + " has no counterpart in this ORB and no effect");
    }
}

void CheckGate() {
    std::string what;
    if (!orb_state().server_interceptors.empty() && !InterpositionInForce(what)) {
        Report(what);
        throw CORBA::INITIALIZE(0, CORBA::COMPLETED_NO);
    }
}

// The time in which initializers may use their ORBInitInfo.
class InitialisationRun {
  public:
    InitialisationRun() { orb_state().initialising = true; }
    ~InitialisationRun() {
        info_->Close();
        orb_state().initialising = false;
    }
    InitialisationRun(const InitialisationRun&) = delete;
    InitialisationRun& operator=(const InitialisationRun&) = delete;

    InitInfo* info() { return info_; }

  private:
    LocalVar<InitInfo> info_{new InitInfo};
};

void RegisterCurrent(CORBA::ORB_ptr orb) {
    PortableInterceptor::Current_var current = new PICurrent;
    orb->register_initial_reference("PICurrent", current);
}

using Initializers = std::vector<PortableInterceptor::ORBInitializer_var>;

// Without an ORB nothing would ever tell the interceptors that they are not needed any more.
CORBA::ORB_ptr PrepareAndMakeUnderlyingOrb(const OrbOptions& options, const Initializers& initializers,
                                           InitInfo* info) {
    try {
        for (const auto& initializer : initializers) {
            initializer->pre_init(info);
        }
        OrbOptions with_ssl = options;
        ApplySslOptions(with_ssl);
        return MakeUnderlyingOrb(with_ssl);
    } catch (...) {
        ForgetInterceptors();
        throw;
    }
}

CORBA::ORB_ptr MakeOrb(const OrbOptions& options) {
    const Initializers initializers = RegisteredInitializers();
    InitialisationRun run;
    CORBA::ORB_var orb = PrepareAndMakeUnderlyingOrb(options, initializers, run.info());
    orb_state().orb_exists = true;
    try {
        InstallHooks();
        RegisterCurrent(orb);
        InstallPolicyManagers(orb);
        run.info()->OrbMade(orb);
        for (const auto& initializer : initializers) {
            initializer->post_init(run.info());
        }
        CheckGate();
    } catch (...) {
        orb->destroy();
        throw;
    }
    return orb._retn();
}

CORBA::ORB_ptr InitOrb(int& argc, char** argv, const char* orb_id) {
    const std::vector<std::string> arguments(argv, argv + argc);
    const OrbOptions options = TakeOptions(argc, argv);
    std::lock_guard<std::mutex> guard(g_init_mutex);
    if (orb_state().orb_exists) {
        ReportOnce("a process has one ORB here; the options of a further ORB_init have no effect");
        return MakeUnderlyingOrb({});
    }
    ReportInertOptions(options);
    StartState(arguments, options, orb_id);
    OnOrbDestroyed(OrbDestroyed);
    const AllSignalsBlocked blocked;
    return MakeOrb(options);
}

}  // namespace
}  // namespace qv_orb

CORBA::ORB_ptr CORBA::ORB_init(int& argc, char** argv, const char* orb_id) {
    return qv_orb::InitOrb(argc, argv, orb_id);
}
