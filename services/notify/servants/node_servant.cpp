#include "services/notify/servants/node_servant.h"

#include "services/notify/servants/repository_ids.h"

namespace qv_notify {

void RaiseNotOffered(ServiceContext& service, const char* operation) {
    service.Log().Tell(
        std::string("not offered: ") + operation,
        std::string("a client asked for ") + operation +
            ", which this service does not offer; it was answered with NO_IMPLEMENT. Structured "
            "events, pushed, are what clients can use.");
    throw CORBA::NO_IMPLEMENT(0, CORBA::COMPLETED_NO);
}

CosNotifyFilter::Filter_ptr ReferToFilter(ServiceContext& service, const FilterBody& filter) {
    const CORBA::Object_var object = service.Reference(filter.Path(), filter.Kept(), kFilterType);
    return CosNotifyFilter::Filter::_unchecked_narrow(object.in());
}

}  // namespace qv_notify
