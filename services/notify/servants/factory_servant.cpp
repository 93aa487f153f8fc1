#include "services/notify/servants/factory_servant.h"

#include <utility>

#include "services/notify/properties/admin_properties.h"
#include "services/notify/servants/admin_parts.h"
#include "services/notify/servants/filter_factory_servant.h"
#include "services/notify/servants/repository_ids.h"

namespace qv_notify {

namespace {

bool IsKept(const PropertyValues& qos) {
    return ValueOf<std::int16_t>(qos, CosNotification::ConnectionReliability, 0) ==
           CosNotification::Persistent;
}

}  // namespace

void FactoryServant::SetReference(CosNotifyChannelAdmin::EventChannelFactory_ptr factory) {
    m_reference = CosNotifyChannelAdmin::EventChannelFactory::_duplicate(factory);
}

CosNotifyChannelAdmin::EventChannel_ptr FactoryServant::create_channel(
    const CosNotification::QoSProperties& initial_qos, const CosNotification::AdminProperties& initial_admin,
    CORBA::Long& id) {
    ChannelState state;
    state.qos = DefaultQos();
    state.admin = DefaultAdmin();
    ApplyQos(QosLevel::kChannel, initial_qos, m_service.CapabilitiesOf(true), state.qos);
    ApplyAdmin(initial_admin, state.admin);
    EndHalfMade();
    state.id = m_service.NextNumber("channels");

    const auto channel = std::make_shared<ChannelNode>(m_service, state, IsKept(state.qos));
    try {
        const std::lock_guard<std::mutex> channel_guard(channel->Mutex());
        Make(channel);
    } catch (...) {
        TakeBack(channel);
        throw;
    }
    id = state.id;
    const CORBA::Object_var object =
        m_service.Reference(channel->Path(), channel->Persistent(), kChannelType);
    return CosNotifyChannelAdmin::EventChannel::_unchecked_narrow(object.in());
}

void FactoryServant::Make(const std::shared_ptr<ChannelNode>& channel) {
    channel->Save();
    const std::shared_ptr<AdminNode> for_consumers = channel->MakeAdmin(true, true);
    const std::shared_ptr<AdminNode> for_suppliers = channel->MakeAdmin(false, true);
    Serve(for_consumers);
    Serve(for_suppliers);
    Add(channel);
}

void FactoryServant::TakeBack(const std::shared_ptr<ChannelNode>& channel) {
    {
        const std::lock_guard<std::mutex> guard(m_half_made_mutex);
        m_half_made.push_back(channel);
    }
    try {
        EndHalfMade();
    } catch (const CORBA::SystemException&) {
        // What was in the way of making it is so still. The next channel is made after this one has gone.
    }
}

void FactoryServant::EndHalfMade() {
    const std::lock_guard<std::mutex> guard(m_half_made_mutex);
    while (!m_half_made.empty()) {
        const std::shared_ptr<ChannelNode> channel = m_half_made.back();
        const std::lock_guard<std::mutex> channel_guard(channel->Mutex());
        channel->Destroy();
        m_half_made.pop_back();
    }
}

void FactoryServant::Add(const std::shared_ptr<ChannelNode>& channel) {
    ChannelServant::Origin origin{m_reference, [this](std::int32_t id) { Forget(id); }};
    m_service.Activate(channel->Path() + "/ff", channel->Persistent(), new FilterFactoryServant(channel));
    m_service.Activate(channel->Path(), channel->Persistent(),
                       new ChannelServant(channel, std::move(origin)));
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_channels[channel->Id()] = channel;
}

void FactoryServant::Forget(std::int32_t id) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_channels.erase(id);
}

CosNotifyChannelAdmin::ChannelIDSeq* FactoryServant::get_all_channels() {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return IdsOf<CosNotifyChannelAdmin::ChannelIDSeq>(m_channels);
}

CosNotifyChannelAdmin::EventChannel_ptr FactoryServant::get_event_channel(
    CosNotifyChannelAdmin::ChannelID id) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    const auto found = m_channels.find(id);
    if (found == m_channels.end()) {
        throw CosNotifyChannelAdmin::ChannelNotFound();
    }
    const ChannelNode& channel = *found->second;
    const CORBA::Object_var object = m_service.Reference(channel.Path(), channel.Persistent(), kChannelType);
    return CosNotifyChannelAdmin::EventChannel::_unchecked_narrow(object.in());
}

std::vector<std::shared_ptr<ChannelNode>> FactoryServant::Channels() const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    std::vector<std::shared_ptr<ChannelNode>> channels;
    for (const auto& [id, channel] : m_channels) {
        channels.push_back(channel);
    }
    return channels;
}

}  // namespace qv_notify
