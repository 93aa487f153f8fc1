#include "tests/support/notification/notify_client.h"

#include <tao/PortableServer/PortableServer.h>

#include <chrono>
#include <thread>

namespace qv_test {

namespace {

CORBA::ORB_ptr StartOrb() {
    std::vector<std::string> options = ClientOrbOptions();
    std::vector<char*> argv;
    for (std::string& option : options) {
        argv.push_back(option.data());
    }
    int argc = static_cast<int>(argv.size());
    argv.push_back(nullptr);
    CORBA::ORB_var orb = CORBA::ORB_init(argc, argv.data());
    const CORBA::Object_var object = orb->resolve_initial_references("RootPOA");
    const PortableServer::POA_var root = PortableServer::POA::_narrow(object.in());
    const PortableServer::POAManager_var manager = root->the_POAManager();
    manager->activate();
    return orb._retn();
}

void Note(std::vector<std::string>& list, const CosNotification::EventTypeSeq& types, const char* sign) {
    for (CORBA::ULong i = 0; i < types.length(); ++i) {
        list.push_back(sign + std::string(types[i].type_name.in()));
    }
}

}  // namespace

std::vector<std::string>& ClientOrbOptions() {
    static std::vector<std::string> options;
    return options;
}

CORBA::ORB_ptr ClientOrb() {
    static const CORBA::ORB_var orb = StartOrb();
    return orb.in();
}

CosNotifyChannelAdmin::EventChannelFactory_var FactoryAt(const std::string& reference) {
    const CORBA::Object_var object = ClientOrb()->string_to_object(reference.c_str());
    return CosNotifyChannelAdmin::EventChannelFactory::_narrow(object.in());
}

CosNotification::PropertySeq Properties(const std::vector<CosNotification::Property>& properties) {
    CosNotification::PropertySeq sequence;
    sequence.length(static_cast<CORBA::ULong>(properties.size()));
    CORBA::ULong next = 0;
    for (const CosNotification::Property& property : properties) {
        sequence[next++] = property;
    }
    return sequence;
}

CosNotifyChannelAdmin::EventChannel_var MakeChannel(CosNotifyChannelAdmin::EventChannelFactory_ptr factory,
                                                    bool persistent) {
    const auto reliability = static_cast<CORBA::Short>(persistent ? 1 : 0);
    const CosNotification::QoSProperties qos = Properties(
        {PropertyOf("OrderPolicy", CORBA::Short{1}), PropertyOf("DiscardPolicy", CORBA::Short{1}),
         PropertyOf("EventReliability", reliability), PropertyOf("ConnectionReliability", reliability)});
    CosNotification::Property reject;
    reject.name = CORBA::string_dup("RejectNewEvents");
    reject.value <<= CORBA::Any::from_boolean(true);
    CORBA::Long id = 0;
    return factory->create_channel(qos, Properties({reject}), id);
}

CosNotification::StructuredEvent EventOf(const char* type, std::int32_t number) {
    CosNotification::StructuredEvent event;
    event.header.fixed_header.event_type.domain_name = CORBA::string_dup("tmf_mtnm");
    event.header.fixed_header.event_type.type_name = CORBA::string_dup(type);
    event.header.fixed_header.event_name = CORBA::string_dup("");
    event.filterable_data = Properties({PropertyOf("notificationId", std::to_string(number).c_str()),
                                        PropertyOf("number", static_cast<CORBA::Long>(number))});
    event.remainder_of_body <<= "";
    return event;
}

std::int32_t NumberOf(const CosNotification::StructuredEvent& event) {
    CORBA::Long number = -1;
    event.filterable_data[1].value >>= number;
    return number;
}

PortableServer::Servant_var<RecordingConsumer> RecordingConsumer::Connect(
    CosNotifyChannelAdmin::ConsumerAdmin_ptr admin, Hook hook) {
    PortableServer::Servant_var<RecordingConsumer> consumer(new RecordingConsumer(std::move(hook)));
    const auto proxy = CosNotifyChannelAdmin::ProxySupplier_var(
        admin->obtain_notification_push_supplier(CosNotifyChannelAdmin::STRUCTURED_EVENT, consumer->m_id));
    consumer->m_proxy = CosNotifyChannelAdmin::StructuredProxyPushSupplier::_narrow(proxy.in());
    ClientOrb();
    const CosNotifyComm::StructuredPushConsumer_var reference = consumer->_this();
    consumer->m_proxy->connect_structured_push_consumer(reference.in());
    return consumer;
}

std::vector<std::int32_t> RecordingConsumer::Numbers() const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_numbers;
}

std::size_t RecordingConsumer::Count() const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_numbers.size();
}

bool RecordingConsumer::WaitForCount(std::size_t count, std::chrono::milliseconds timeout) const {
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_changed.wait_for(lock, timeout, [&] { return m_numbers.size() >= count; });
}

bool RecordingConsumer::Disconnected() const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_disconnected;
}

std::vector<std::string> RecordingConsumer::OfferedTypes() const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_offered;
}

void RecordingConsumer::End() {
    const PortableServer::POA_var poa = _default_POA();
    const PortableServer::ObjectId_var id = poa->servant_to_id(this);
    poa->deactivate_object(id.in());
}

void RecordingConsumer::push_structured_event(const CosNotification::StructuredEvent& notification) {
    if (m_hook) {
        m_hook(notification);
    }
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_numbers.push_back(NumberOf(notification));
    m_changed.notify_all();
}

void RecordingConsumer::disconnect_structured_push_consumer() {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_disconnected = true;
    m_changed.notify_all();
}

void RecordingConsumer::offer_change(const CosNotification::EventTypeSeq& added,
                                     const CosNotification::EventTypeSeq& removed) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    Note(m_offered, added, "+");
    Note(m_offered, removed, "-");
}

PortableServer::Servant_var<RecordingSupplier> RecordingSupplier::Connect(
    CosNotifyChannelAdmin::SupplierAdmin_ptr admin) {
    PortableServer::Servant_var<RecordingSupplier> supplier(new RecordingSupplier);
    const auto proxy = CosNotifyChannelAdmin::ProxyConsumer_var(
        admin->obtain_notification_push_consumer(CosNotifyChannelAdmin::STRUCTURED_EVENT, supplier->m_id));
    supplier->m_proxy = CosNotifyChannelAdmin::StructuredProxyPushConsumer::_narrow(proxy.in());
    ClientOrb();
    const CosNotifyComm::StructuredPushSupplier_var reference = supplier->_this();
    supplier->m_proxy->connect_structured_push_supplier(reference.in());
    return supplier;
}

void RecordingSupplier::PushUntilTaken(const CosNotification::StructuredEvent& event) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    for (;;) {
        try {
            return Push(event);
        } catch (const CORBA::SystemException&) {
            if (std::chrono::steady_clock::now() > end) {
                throw;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
}

bool RecordingSupplier::Disconnected() const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_disconnected;
}

std::vector<std::string> RecordingSupplier::SubscribedTypes() const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_subscribed;
}

void RecordingSupplier::disconnect_structured_push_supplier() {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_disconnected = true;
}

void RecordingSupplier::subscription_change(const CosNotification::EventTypeSeq& added,
                                            const CosNotification::EventTypeSeq& removed) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    Note(m_subscribed, added, "+");
    Note(m_subscribed, removed, "-");
}

CosNotifyFilter::Filter_var AddFilter(CosNotifyChannelAdmin::EventChannel_ptr channel,
                                      CosNotifyFilter::FilterAdmin_ptr where, const char* constraint) {
    const CosNotifyFilter::FilterFactory_var factory = channel->default_filter_factory();
    CosNotifyFilter::Filter_var filter = factory->create_filter("EXTENDED_TCL");
    CosNotifyFilter::ConstraintExpSeq constraints;
    constraints.length(1);
    constraints[0].constraint_expr = CORBA::string_dup(constraint);
    const CosNotifyFilter::ConstraintInfoSeq_var added = filter->add_constraints(constraints);
    where->add_filter(filter.in());
    return filter;
}

}  // namespace qv_test
