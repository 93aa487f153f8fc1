#include "tests/unit/notification/fake_servants.h"

namespace qv_test {

namespace {

using namespace CosNotifyChannelAdmin;
using StatePtr = std::shared_ptr<FakeNotifyState>;
using QosRanges = CosNotification::NamedPropertyRangeSeq_out;

[[noreturn]] void NotHere() {
    throw CORBA::NO_IMPLEMENT();
}

template <class Base>
class WithoutQos : public Base {
  public:
    CosNotification::QoSProperties* get_qos() override { NotHere(); }
    void set_qos(const CosNotification::QoSProperties&) override { NotHere(); }
    void validate_qos(const CosNotification::QoSProperties&, QosRanges) override { NotHere(); }
};

template <class Base>
class WithoutFilters : public Base {
  public:
    CosNotifyFilter::FilterID add_filter(CosNotifyFilter::Filter_ptr) override { NotHere(); }
    void remove_filter(CosNotifyFilter::FilterID) override { NotHere(); }
    CosNotifyFilter::Filter_ptr get_filter(CosNotifyFilter::FilterID) override { NotHere(); }
    CosNotifyFilter::FilterIDSeq* get_all_filters() override { NotHere(); }
    void remove_all_filters() override { NotHere(); }
};

/// A proxy of which no more is known than that it takes events.
template <class Base>
class AnyProxyServant : public WithoutFilters<WithoutQos<Base>> {
  public:
    ProxyType MyType() override { return PUSH_STRUCTURED; }
    SupplierAdmin_ptr MyAdmin() override { NotHere(); }
    CosNotification::EventTypeSeq* obtain_subscription_types(ObtainInfoMode) override { NotHere(); }
    void validate_event_qos(const CosNotification::QoSProperties&, QosRanges) override { NotHere(); }
};

using GeneralProxyServant = AnyProxyServant<POA_CosNotifyChannelAdmin::ProxyConsumer>;

class ProxyServant : public AnyProxyServant<POA_CosNotifyChannelAdmin::StructuredProxyPushConsumer> {
  public:
    ProxyServant(StatePtr state, ProxyID id) : m_state(std::move(state)), m_id(id) {}

    void connect_structured_push_supplier(CosNotifyComm::StructuredPushSupplier_ptr supplier) override {
        m_state->script.Enter("connect_structured_push_supplier");
        const std::lock_guard<std::mutex> guard(m_state->lock);
        FakeProxyEntry& proxy = m_state->proxies[m_id];
        if (proxy.connected) {
            throw CosEventChannelAdmin::AlreadyConnected();
        }
        proxy.connected = true;
        proxy.supplier = CosNotifyComm::StructuredPushSupplier::_duplicate(supplier);
    }
    void push_structured_event(const CosNotification::StructuredEvent& event) override {
        m_state->script.Enter("push_structured_event");
        const std::lock_guard<std::mutex> guard(m_state->lock);
        if (!m_state->proxies[m_id].connected) {
            throw CosEventComm::Disconnected();
        }
        m_state->events.push_back(event);
    }
    void disconnect_structured_push_consumer() override {
        m_state->script.Enter("disconnect_structured_push_consumer");
        const std::lock_guard<std::mutex> guard(m_state->lock);
        m_state->proxies[m_id].connected = false;
    }
    void offer_change(const CosNotification::EventTypeSeq& added,
                      const CosNotification::EventTypeSeq& removed) override {
        m_state->script.Enter("offer_change");
        m_state->AddOffer("proxy", added, removed);
    }

  private:
    const StatePtr m_state;
    const ProxyID m_id;
};

class AdminServant : public WithoutFilters<WithoutQos<POA_CosNotifyChannelAdmin::SupplierAdmin>> {
  public:
    AdminServant(StatePtr state, ChannelID channel) : m_state(std::move(state)), m_channel(channel) {}

    AdminID MyID() override { NotHere(); }
    EventChannel_ptr MyChannel() override { NotHere(); }
    InterFilterGroupOperator MyOperator() override { NotHere(); }
    ProxyIDSeq* pull_consumers() override { NotHere(); }
    ProxyConsumer_ptr obtain_notification_pull_consumer(ClientType, ProxyID&) override { NotHere(); }
    void destroy() override { NotHere(); }
    CosEventChannelAdmin::ProxyPushConsumer_ptr obtain_push_consumer() override { NotHere(); }
    CosEventChannelAdmin::ProxyPullConsumer_ptr obtain_pull_consumer() override { NotHere(); }

    ProxyIDSeq* push_consumers() override {
        m_state->script.Enter("push_consumers");
        const std::lock_guard<std::mutex> guard(m_state->lock);
        ProxyIDSeq_var ids = new ProxyIDSeq;
        for (const auto& [id, proxy] : m_state->proxies) {
            if (proxy.channel == m_channel && proxy.alive) {
                ids->length(ids->length() + 1);
                ids[ids->length() - 1] = id;
            }
        }
        return ids._retn();
    }
    ProxyConsumer_ptr get_proxy_consumer(ProxyID id) override {
        if (m_state->script.Enter("get_proxy_consumer")) {
            return ProxyConsumer::_nil();
        }
        const std::lock_guard<std::mutex> guard(m_state->lock);
        const auto found = m_state->proxies.find(id);
        if (found == m_state->proxies.end() || found->second.channel != m_channel || !found->second.alive) {
            throw ProxyNotFound();
        }
        return ProxyConsumer::_duplicate(found->second.reference.in());
    }
    ProxyConsumer_ptr obtain_notification_push_consumer(ClientType type, ProxyID& id) override {
        id = 0;
        if (m_state->script.Enter("obtain_notification_push_consumer")) {
            return ProxyConsumer::_nil();
        }
        if (type != STRUCTURED_EVENT) {
            NotHere();
        }
        return m_state->MakeProxy(m_channel, id);
    }
    void offer_change(const CosNotification::EventTypeSeq& added,
                      const CosNotification::EventTypeSeq& removed) override {
        m_state->script.Enter("offer_change");
        m_state->AddOffer("admin", added, removed);
    }

  private:
    const StatePtr m_state;
    const ChannelID m_channel;
};

class ChannelServant : public WithoutQos<POA_CosNotifyChannelAdmin::EventChannel> {
  public:
    ChannelServant(StatePtr state, ChannelID id) : m_state(std::move(state)), m_id(id) {}

    CosNotification::AdminProperties* get_admin() override { NotHere(); }
    void set_admin(const CosNotification::AdminProperties&) override { NotHere(); }
    CosEventChannelAdmin::ConsumerAdmin_ptr for_consumers() override { NotHere(); }
    CosEventChannelAdmin::SupplierAdmin_ptr for_suppliers() override { NotHere(); }
    EventChannelFactory_ptr MyFactory() override { NotHere(); }
    ConsumerAdmin_ptr default_consumer_admin() override { NotHere(); }
    CosNotifyFilter::FilterFactory_ptr default_filter_factory() override { NotHere(); }
    ConsumerAdmin_ptr new_for_consumers(InterFilterGroupOperator, AdminID&) override { NotHere(); }
    SupplierAdmin_ptr new_for_suppliers(InterFilterGroupOperator, AdminID&) override { NotHere(); }
    ConsumerAdmin_ptr get_consumeradmin(AdminID) override { NotHere(); }
    SupplierAdmin_ptr get_supplieradmin(AdminID) override { NotHere(); }
    AdminIDSeq* get_all_consumeradmins() override { NotHere(); }
    AdminIDSeq* get_all_supplieradmins() override { NotHere(); }

    void destroy() override {
        m_state->script.Enter("destroy");
        m_state->EndChannel(m_id);
    }
    SupplierAdmin_ptr default_supplier_admin() override {
        if (m_state->script.Enter("default_supplier_admin")) {
            return SupplierAdmin::_nil();
        }
        const std::lock_guard<std::mutex> guard(m_state->lock);
        return SupplierAdmin::_duplicate(m_state->channels[m_id].admin.in());
    }

  private:
    const StatePtr m_state;
    const ChannelID m_id;
};

class FactoryServant : public POA_CosNotifyChannelAdmin::EventChannelFactory {
  public:
    explicit FactoryServant(StatePtr state) : m_state(std::move(state)) {}

    EventChannel_ptr create_channel(const CosNotification::QoSProperties& qos,
                                    const CosNotification::AdminProperties& admin, ChannelID& id) override {
        id = 0;
        return m_state->script.Enter("create_channel") ? EventChannel::_nil()
                                                       : m_state->MakeChannel(qos, admin, id);
    }
    ChannelIDSeq* get_all_channels() override {
        m_state->script.Enter("get_all_channels");
        const std::lock_guard<std::mutex> guard(m_state->lock);
        ChannelIDSeq_var ids = new ChannelIDSeq;
        for (const auto& [id, channel] : m_state->channels) {
            if (channel.record.alive) {
                ids->length(ids->length() + 1);
                ids[ids->length() - 1] = id;
            }
        }
        return ids._retn();
    }
    EventChannel_ptr get_event_channel(ChannelID id) override {
        if (m_state->script.Enter("get_event_channel")) {
            return EventChannel::_nil();
        }
        const std::lock_guard<std::mutex> guard(m_state->lock);
        const auto found = m_state->channels.find(id);
        if (found == m_state->channels.end() || !found->second.record.alive) {
            throw ChannelNotFound();
        }
        return EventChannel::_duplicate(found->second.reference.in());
    }

  private:
    const StatePtr m_state;
};

FakeOffer::Types TypesOf(const CosNotification::EventTypeSeq& sequence) {
    FakeOffer::Types types;
    for (CORBA::ULong i = 0; i < sequence.length(); ++i) {
        types.emplace_back(sequence[i].domain_name.in(), sequence[i].type_name.in());
    }
    return types;
}

}  // namespace

CORBA::Object_ptr FakeNotifyState::Activate(PortableServer::ServantBase* servant) {
    const PortableServer::ServantBase_var owner(servant);
    const PortableServer::ObjectId_var id = poa->activate_object(servant);
    return poa->id_to_reference(id.in());
}

void FakeNotifyState::Deactivate(CORBA::Object_ptr object) {
    const PortableServer::ObjectId_var id = poa->reference_to_id(object);
    poa->deactivate_object(id.in());
}

void FakeNotifyState::MakeFactory() {
    const CORBA::Object_var object = Activate(new FactoryServant(shared_from_this()));
    factory = EventChannelFactory::_narrow(object.in());
}

EventChannel_ptr FakeNotifyState::MakeChannel(const CosNotification::QoSProperties& qos,
                                              const CosNotification::AdminProperties& admin, ChannelID& id) {
    const std::lock_guard<std::mutex> guard(lock);
    id = static_cast<ChannelID>(channels.size()) + 1;
    FakeChannelEntry& entry = channels[id];
    entry.record.id = id;
    entry.record.qos = qos;
    entry.record.admin = admin;
    const CORBA::Object_var channel = Activate(new ChannelServant(shared_from_this(), id));
    entry.reference = EventChannel::_narrow(channel.in());
    const CORBA::Object_var supplierAdmin = Activate(new AdminServant(shared_from_this(), id));
    entry.admin = SupplierAdmin::_narrow(supplierAdmin.in());
    return EventChannel::_duplicate(entry.reference.in());
}

ProxyConsumer_ptr FakeNotifyState::MakeProxy(ChannelID channel, ProxyID& id) {
    const std::lock_guard<std::mutex> guard(lock);
    id = 100 + static_cast<ProxyID>(proxies.size()) + 1;
    FakeProxyEntry& entry = proxies[id];
    entry.channel = channel;
    const CORBA::Object_var proxy = generalProxies ? Activate(new GeneralProxyServant)
                                                   : Activate(new ProxyServant(shared_from_this(), id));
    entry.reference = ProxyConsumer::_narrow(proxy.in());
    return ProxyConsumer::_duplicate(entry.reference.in());
}

void FakeNotifyState::EndChannel(ChannelID id) {
    std::vector<CORBA::Object_var> ended;
    {
        const std::lock_guard<std::mutex> guard(lock);
        const auto found = channels.find(id);
        if (found == channels.end() || !found->second.record.alive) {
            return;
        }
        found->second.record.alive = false;
        ended.emplace_back(CORBA::Object::_duplicate(found->second.reference.in()));
        ended.emplace_back(CORBA::Object::_duplicate(found->second.admin.in()));
        for (auto& [proxyId, proxy] : proxies) {
            if (proxy.channel == id && proxy.alive) {
                proxy.alive = false;
                ended.emplace_back(CORBA::Object::_duplicate(proxy.reference.in()));
            }
        }
    }
    for (const CORBA::Object_var& object : ended) {
        Deactivate(object.in());
    }
}

void FakeNotifyState::AddOffer(const char* target, const CosNotification::EventTypeSeq& added,
                               const CosNotification::EventTypeSeq& removed) {
    const std::lock_guard<std::mutex> guard(lock);
    offers.push_back({target, TypesOf(added), TypesOf(removed)});
}

}  // namespace qv_test
