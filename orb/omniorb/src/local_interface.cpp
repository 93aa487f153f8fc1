#include "qv_orb/local_interface.h"

#include "qv_orb/request_info.h"

namespace qv_orb {

CountedLocalObject::CountedLocalObject() {
    // A local object has no remote half; without this mark the ORB takes it for nil.
    _PR_setobj(reinterpret_cast<omniObjRef*>(1));
}

CountedLocalObject::~CountedLocalObject() = default;

void CountedLocalObject::_add_ref() {
    references_.fetch_add(1, std::memory_order_relaxed);
}

void CountedLocalObject::_remove_ref() {
    if (references_.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        delete this;
    }
}

}  // namespace qv_orb

PortableInterceptor::RequestInfo::RequestInfo() {
    _PR_setobj(reinterpret_cast<omniObjRef*>(1));
}
