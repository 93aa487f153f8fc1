// Event channels.
#pragma once

#include <orbsvcs/CosNotifyChannelAdminS.h>

#include <functional>
#include <memory>

#include "services/notify/servants/node_servant.h"

namespace qv_notify {

/// Any thread may call.
class ChannelServant final
    : public NodeServant<POA_CosNotifyChannelAdmin::EventChannel, ChannelNode, QosLevel::kChannel> {
  public:
    /// What a channel asks of the factory that it came from.
    struct Origin {
        CosNotifyChannelAdmin::EventChannelFactory_var factory;
        std::function<void(std::int32_t id)> forget;  ///< the channel has ended
    };

    ChannelServant(std::shared_ptr<ChannelNode> node, Origin origin);

    CosNotifyChannelAdmin::EventChannelFactory_ptr MyFactory() override;
    CosNotifyChannelAdmin::ConsumerAdmin_ptr default_consumer_admin() override;
    CosNotifyChannelAdmin::SupplierAdmin_ptr default_supplier_admin() override;
    CosNotifyFilter::FilterFactory_ptr default_filter_factory() override;
    CosNotifyChannelAdmin::ConsumerAdmin_ptr new_for_consumers(
        CosNotifyChannelAdmin::InterFilterGroupOperator op, CORBA::Long& id) override;
    CosNotifyChannelAdmin::SupplierAdmin_ptr new_for_suppliers(
        CosNotifyChannelAdmin::InterFilterGroupOperator op, CORBA::Long& id) override;
    CosNotifyChannelAdmin::ConsumerAdmin_ptr get_consumeradmin(CosNotifyChannelAdmin::AdminID id) override;
    CosNotifyChannelAdmin::SupplierAdmin_ptr get_supplieradmin(CosNotifyChannelAdmin::AdminID id) override;
    CosNotifyChannelAdmin::AdminIDSeq* get_all_consumeradmins() override;
    CosNotifyChannelAdmin::AdminIDSeq* get_all_supplieradmins() override;
    CosNotification::AdminProperties* get_admin() override;
    void set_admin(const CosNotification::AdminProperties& admin) override;

    CosEventChannelAdmin::ConsumerAdmin_ptr for_consumers() override;
    CosEventChannelAdmin::SupplierAdmin_ptr for_suppliers() override;
    void destroy() override;

  private:
    std::shared_ptr<AdminNode> NewAdmin(bool for_consumers,
                                        CosNotifyChannelAdmin::InterFilterGroupOperator op) const;
    std::shared_ptr<AdminNode> RequireAdmin(bool for_consumers, CosNotifyChannelAdmin::AdminID id) const;

    const Origin m_origin;
};

}  // namespace qv_notify
