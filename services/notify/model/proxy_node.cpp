#include "services/notify/model/proxy_node.h"

#include <algorithm>
#include <utility>

#include "orb/event_octets.h"
#include "services/notify/model/structured_port.h"
#include "services/notify/properties/queue_policy.h"

namespace qv_notify {

namespace {

std::chrono::nanoseconds PacingOf(const PropertyValues& holding) {
    constexpr std::uint64_t kLongest = std::uint64_t{3600} * 10000000;  // in units of 100 ns
    const auto units =
        std::min(ValueOf<std::uint64_t>(holding, CosNotification::PacingInterval, 0), kLongest);
    return std::chrono::nanoseconds(units * 100);
}

}  // namespace

ProxyNode::ProxyNode(std::shared_ptr<AdminNode> admin, std::int32_t id)
    : m_admin(std::move(admin)), m_id(id), m_path(m_admin->Path() + "/p" + std::to_string(id)) {
    if (m_admin->ForConsumers()) {
        MakeFeed();
    }
}

void ProxyNode::MakeFeed() {
    ChannelNode& channel = Channel();
    ServiceContext& service = channel.Service();
    RetryPolicy retry = service.Limits().retry;
    Feed::Surroundings around{&service.DeliveryPool(), &service.Log(), nullptr, nullptr};
    if (channel.Persistent()) {
        retry.give_up_after.reset();
        around.done = [&service, path = m_path](const std::vector<std::int64_t>& sequences) {
            service.Done(path, sequences);
        };
    }
    around.gone = [admin = std::weak_ptr<AdminNode>(m_admin), id = m_id] {
        if (const std::shared_ptr<AdminNode> held = admin.lock()) {
            const std::lock_guard<std::mutex> guard(held->Channel()->Mutex());
            try {
                held->LoseProxy(id);
            } catch (const CORBA::Exception&) {
                return false;  // the store does not work, which has been told
            }
        }
        return true;
    };
    m_feed = std::make_shared<Feed>(m_path, QueuePolicyOf(Holding(), service.Limits().events_per_consumer),
                                    retry, std::move(around));
}

PropertyValues ProxyNode::Holding() const {
    return Inherit(m_admin->Holding(), m_data.qos);
}

void ProxyNode::Keep(const ProxyData& data) const {
    ProxyState state;
    state.id = m_id;
    state.supplier = m_admin->ForConsumers();
    state.peer = data.peer;
    state.suspended = data.suspended;
    state.qos = data.qos;
    state.types = data.types.Types();
    state.filters = data.filters.States();
    state.next_filter_id = data.filters.NextId();
    Channel().Service().Keep(Channel().Persistent(), m_path, Text(state));
}

void ProxyNode::SetData(ProxyData data) {
    Keep(data);
    m_data = std::move(data);
    Refresh();
    m_admin->Refresh();
}

void ProxyNode::Restore(const ProxyState& state) {
    ServiceContext& service = Channel().Service();
    m_data.qos = state.qos;
    m_data.types = TypeSet(state.types);
    m_data.suspended = state.suspended;
    m_data.peer = state.peer;
    m_data.filters.Restore(state.filters, state.next_filter_id,
                           [&service](std::int32_t id) { return service.FilterOf(id); });
    if (!m_data.peer.empty()) {
        const CORBA::Object_var peer = service.Orb()->string_to_object(m_data.peer.c_str());
        ConnectPeer(peer.in());
    }
    if (m_feed != nullptr && m_data.suspended) {
        m_feed->Suspend();  // connected, so that the operator is told of whom
    }
    if (m_feed == nullptr) {
        if (Store* const store = service.StoreFor(Channel().Persistent())) {
            m_repetitions.Restore(store->LastEventsOf(m_path, Store::kRemembered),
                                  std::chrono::steady_clock::now());
        }
        Channel().RestoreOffer(m_path, m_data.types.Types());
    } else if (!m_data.peer.empty()) {
        Channel().RestoreSubscription(m_path, m_data.types.Types());
    }
    Refresh();
}

void ProxyNode::Refresh() {
    if (m_feed != nullptr) {
        const PropertyValues holding = Holding();
        m_feed->SetPolicy(QueuePolicyOf(holding, Channel().Service().Limits().events_per_consumer));
        m_feed->SetPacing(PacingOf(holding));
        return;
    }
    auto gate = std::make_shared<SupplierGate>();
    gate->connected = !m_data.peer.empty() && m_alive;
    gate->and_operator = m_admin->AndOperator();
    gate->admin_filters = m_admin->Data().filters.List();
    gate->filters = m_data.filters.List();
    gate->qos = Holding();
    const std::lock_guard<std::mutex> guard(m_gate_mutex);
    m_gate = std::move(gate);
}

void ProxyNode::Lose() {
    m_lost = true;
    m_feed->Close();
}

void ProxyNode::ChangeTypes(const std::vector<EventTypeName>& added,
                            const std::vector<EventTypeName>& removed) {
    ProxyData data = m_data;
    data.types = Changed(m_data.types, added, removed);
    SetData(std::move(data));
    if (m_feed == nullptr) {
        Channel().Offer(m_path, m_data.types.Types());
    } else if (!m_data.peer.empty()) {
        Channel().Subscribe(m_path, m_data.types.Types());
    }
}

void ProxyNode::ConnectPeer(CORBA::Object_ptr peer) {
    m_peer = CORBA::Object::_duplicate(peer);
    if (m_feed != nullptr) {
        const auto consumer = CosNotifyComm::StructuredPushConsumer_var(
            CosNotifyComm::StructuredPushConsumer::_unchecked_narrow(peer));
        m_feed->Connect(std::make_shared<StructuredPort>(consumer.in()));
        return;
    }
    const auto supplier = CosNotifyComm::StructuredPushSupplier_var(
        CosNotifyComm::StructuredPushSupplier::_unchecked_narrow(peer));
    if (!CORBA::is_nil(supplier.in())) {
        m_supplier = std::make_shared<SupplierPort>(Channel().Service().DeliveryPool(), supplier.in());
    }
}

void ProxyNode::TellSupplier(const TypeSet::Change& change) const {
    if (m_supplier != nullptr) {
        const CosNotification::EventTypeSeq_var added = SequenceOf(change.added);
        const CosNotification::EventTypeSeq_var removed = SequenceOf(change.removed);
        m_supplier->SubscriptionChange(added.in(), removed.in());
    }
}

std::shared_ptr<const SupplierGate> ProxyNode::Gate() const {
    const std::lock_guard<std::mutex> guard(m_gate_mutex);
    return m_gate;
}

bool ProxyNode::TakeRepetition(const CosNotification::StructuredEvent& event) {
    return m_repetitions.Compares(std::chrono::steady_clock::now()) &&
           m_repetitions.Take(DigestOf(qv_orb::EventToOctets(event)));
}

void ProxyNode::End(bool tell) {
    m_alive = false;
    Refresh();
    Channel().Service().Deactivate(m_path, Channel().Persistent());
    if (m_feed != nullptr) {
        m_feed->Close();
        if (tell && !CORBA::is_nil(m_peer.in())) {
            const auto consumer = CosNotifyComm::StructuredPushConsumer_var(
                CosNotifyComm::StructuredPushConsumer::_unchecked_narrow(m_peer.in()));
            std::make_shared<ClientNotices>(Channel().Service().DeliveryPool())->Post([consumer] {
                consumer->disconnect_structured_push_consumer();
            });
        }
    } else if (tell && m_supplier != nullptr) {
        m_supplier->Disconnect();
    }
}

}  // namespace qv_notify
