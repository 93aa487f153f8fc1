// The factory of event channels, which holds them all.
#pragma once

#include <orbsvcs/CosNotifyChannelAdminS.h>

#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "services/notify/model/channel_node.h"
#include "services/notify/servants/channel_servant.h"

namespace qv_notify {

/// Any thread may call.
class FactoryServant final : public POA_CosNotifyChannelAdmin::EventChannelFactory {
  public:
    explicit FactoryServant(ServiceContext& service) : m_service(service) {}

    /// The reference under which the factory is published; before anything else.
    void SetReference(CosNotifyChannelAdmin::EventChannelFactory_ptr factory);
    /// How much a restart has brought back.
    struct Restored {
        std::size_t channels = 0;
        std::size_t consumers = 0;
        std::size_t events = 0;
    };
    /// Brings back what was kept: channels, filters, admins, proxies, and the events that were not delivered.
    /// Returns how many channels and events there are. Throws StoreError.
    Restored Restore(Store& store);

    CosNotifyChannelAdmin::EventChannel_ptr create_channel(
        const CosNotification::QoSProperties& initial_qos,
        const CosNotification::AdminProperties& initial_admin, CORBA::Long& id) override;
    CosNotifyChannelAdmin::ChannelIDSeq* get_all_channels() override;
    CosNotifyChannelAdmin::EventChannel_ptr get_event_channel(CosNotifyChannelAdmin::ChannelID id) override;

    /// The channels there are now, for reports.
    std::vector<std::shared_ptr<ChannelNode>> Channels() const;

  private:
    void Make(const std::shared_ptr<ChannelNode>& channel);
    void TakeBack(const std::shared_ptr<ChannelNode>& channel);
    void EndHalfMade();
    void Add(const std::shared_ptr<ChannelNode>& channel);
    void Forget(std::int32_t id);

    ServiceContext& m_service;
    CosNotifyChannelAdmin::EventChannelFactory_var m_reference;

    mutable std::mutex m_mutex;
    std::map<std::int32_t, std::shared_ptr<ChannelNode>> m_channels;

    std::mutex m_half_made_mutex;                           // taken before a channel's
    std::vector<std::shared_ptr<ChannelNode>> m_half_made;  // nobody knows them, but the store may
};

}  // namespace qv_notify
