#include "demo/oss/event_subscription.h"

#include "demo/oss/event_consumer.h"
#include "demo/oss/text.h"

namespace qv_oss {
namespace {

namespace Channels = CosNotifyChannelAdmin;

constexpr const char* kTheService = "the notification service";
constexpr const char* kGrammar = "EXTENDED_TCL";
constexpr const char* kDomain = "tmf_mtnm";

CosNotifyFilter::ConstraintExpSeq ToConstraints(const EventInterest& interest) {
    CosNotifyFilter::ConstraintExpSeq constraints;
    constraints.length(1);
    constraints[0].constraint_expr = interest.constraint.empty() ? "TRUE" : interest.constraint.c_str();
    CosNotification::EventTypeSeq& types = constraints[0].event_types;
    types.length(static_cast<CORBA::ULong>(interest.types.size()));
    for (CORBA::ULong i = 0; i < types.length(); ++i) {
        types[i].domain_name = kDomain;
        types[i].type_name = interest.types[i].c_str();
    }
    return constraints;
}

}  // namespace

template <class Call>
auto EventSubscription::Ask(Call call) const {
    return caller_.Run(Peer::kNotification, kTheService, std::move(call));
}

EventSubscription::EventSubscription(const OssOrb& orb, const RemoteCaller& caller, const OssSession& session,
                                     const EventInterest& interest, EventWatch& watch)
    : orb_(orb), caller_(caller), channel_(session.EventChannel()) {
    MakeConsumer(watch);
    try {
        Ask([&] { Connect(interest); });
    } catch (const Problem&) {
        try {
            End();  // what was made so far
        } catch (const Problem&) {
            // The first problem is the one to tell.
        }
        orb_.poa()->deactivate_object(id_.in());
        throw;
    }
}

EventSubscription::~EventSubscription() {
    try {
        orb_.poa()->deactivate_object(id_.in());
    } catch (const CORBA::Exception&) {
        // The ORB is on its way out, and the object with it.
    }
}

void EventSubscription::MakeConsumer(EventWatch& watch) {
    servant_ = new EventConsumer(watch);
    id_ = orb_.poa()->activate_object(servant_.in());
    const CORBA::Object_var object = orb_.poa()->id_to_reference(id_.in());
    consumer_ = CosNotifyComm::StructuredPushConsumer::_narrow(object.in());
}

void EventSubscription::Connect(const EventInterest& interest) {
    Channels::AdminID admin_id = 0;
    admin_ = channel_->new_for_consumers(Channels::AND_OP, admin_id);
    Channels::ProxyID proxy_id = 0;
    const Channels::ProxySupplier_var proxy =
        admin_->obtain_notification_push_supplier(Channels::STRUCTURED_EVENT, proxy_id);
    proxy_ = Channels::StructuredProxyPushSupplier::_narrow(proxy.in());
    if (CORBA::is_nil(proxy_.in())) {
        throw Problem(kNoEvents, "the notification service gave no proxy for structured events");
    }
    if (!interest.constraint.empty() || !interest.types.empty()) {
        AddFilter(interest);
    }
    proxy_->connect_structured_push_consumer(consumer_.in());
}

void EventSubscription::AddFilter(const EventInterest& interest) {
    const CosNotifyFilter::FilterFactory_var factory = channel_->default_filter_factory();
    filter_ = factory->create_filter(kGrammar);
    try {
        const CosNotifyFilter::ConstraintInfoSeq_var added =
            filter_->add_constraints(ToConstraints(interest));
    } catch (const CosNotifyFilter::InvalidConstraint&) {
        throw Problem(kUsage, "the notification service doesn't understand the filter \"" +
                                  Printable(interest.constraint) +
                                  "\"; see --help for an example of a condition");
    }
    proxy_->add_filter(filter_.in());
}

bool EventSubscription::Stands() const {
    return Ask([&] {
        try {
            return !proxy_->_non_existent();
        } catch (const CORBA::OBJECT_NOT_EXIST&) {
            return false;
        }
    });
}

void EventSubscription::End() {
    Ask([&] {
        try {
            if (!CORBA::is_nil(proxy_.in())) {
                proxy_->disconnect_structured_push_supplier();
            }
            if (!CORBA::is_nil(filter_.in())) {
                filter_->destroy();
            }
            if (!CORBA::is_nil(admin_.in())) {
                admin_->destroy();
            }
        } catch (const CORBA::OBJECT_NOT_EXIST&) {
            // The channel went ahead, and all that belongs to it.
        }
    });
}

}  // namespace qv_oss
