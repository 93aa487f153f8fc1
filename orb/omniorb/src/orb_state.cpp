#include "orb_state.h"

#include <mutex>

namespace qv_orb {
namespace {

struct Registry {
    std::mutex mutex;
    std::vector<PortableInterceptor::ORBInitializer_var> initializers;
};

// Never destroyed: an initializer may be registered, and an ORB thread may still run, at any time of the
// process.
Registry& registry() {
    static Registry* const instance = new Registry;
    return *instance;
}

}  // namespace

OrbState& orb_state() {
    static OrbState* const instance = new OrbState;
    return *instance;
}

std::vector<PortableInterceptor::ORBInitializer_var> RegisteredInitializers() {
    std::lock_guard<std::mutex> guard(registry().mutex);
    return registry().initializers;
}

}  // namespace qv_orb

void PortableInterceptor::register_orb_initializer(ORBInitializer_ptr initializer) {
    if (CORBA::is_nil(initializer)) {
        throw CORBA::BAD_PARAM(0, CORBA::COMPLETED_NO);
    }
    std::lock_guard<std::mutex> guard(qv_orb::registry().mutex);
    qv_orb::registry().initializers.emplace_back(ORBInitializer::_duplicate(initializer));
}
