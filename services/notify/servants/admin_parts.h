// What consumer and supplier admins do alike.
#pragma once

#include <memory>

#include "services/notify/servants/node_servant.h"

namespace qv_notify {

CosNotifyChannelAdmin::InterFilterGroupOperator OperatorOf(const AdminNode& admin);

/// A new proxy, for structured events only. Raises CosNotifyChannelAdmin::AdminLimitExceeded when the channel
/// has as many consumers or suppliers as it may. The channel's mutex is held.
std::shared_ptr<ProxyNode> ObtainProxy(AdminNode& admin, CosNotifyChannelAdmin::ClientType type);

/// Raises CosNotifyChannelAdmin::ProxyNotFound when there is none.
std::shared_ptr<ProxyNode> RequireProxy(const AdminNode& admin, CosNotifyChannelAdmin::ProxyID id);

/// Ends the admin; raises CORBA::NO_PERMISSION for a default admin, which lives as long as its channel.
void DestroyAdmin(AdminNode& admin);

/// Puts a servant behind the object of the node.
void Serve(const std::shared_ptr<ProxyNode>& proxy);
void Serve(const std::shared_ptr<AdminNode>& admin);

}  // namespace qv_notify
