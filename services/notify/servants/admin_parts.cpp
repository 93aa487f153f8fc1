#include "services/notify/servants/admin_parts.h"

#include "services/notify/servants/admin_servants.h"
#include "services/notify/servants/proxy_push_consumer.h"
#include "services/notify/servants/proxy_push_supplier.h"

namespace qv_notify {

namespace {

void RequireRoomForClient(const AdminNode& admin) {
    const ChannelNode& channel = *admin.Channel();
    const char* const name =
        admin.ForConsumers() ? CosNotification::MaxConsumers : CosNotification::MaxSuppliers;
    const auto limit = ValueOf<std::int32_t>(channel.AdminProperties(), name, 0);
    if (limit == 0 || channel.Clients(admin.ForConsumers()) < static_cast<std::size_t>(limit)) {
        return;
    }
    CosNotifyChannelAdmin::AdminLimitExceeded exceeded;
    exceeded.admin_property_err.name = CORBA::string_dup(name);
    exceeded.admin_property_err.value <<= static_cast<CORBA::Long>(limit);
    throw exceeded;
}

}  // namespace

CosNotifyChannelAdmin::InterFilterGroupOperator OperatorOf(const AdminNode& admin) {
    return admin.AndOperator() ? CosNotifyChannelAdmin::AND_OP : CosNotifyChannelAdmin::OR_OP;
}

std::shared_ptr<ProxyNode> ObtainProxy(AdminNode& admin, CosNotifyChannelAdmin::ClientType type) {
    if (type != CosNotifyChannelAdmin::STRUCTURED_EVENT) {
        RaiseNotOffered(admin.Channel()->Service(), type == CosNotifyChannelAdmin::ANY_EVENT
                                                        ? "a proxy for events of type any"
                                                        : "a proxy for sequences of events");
    }
    RequireRoomForClient(admin);
    std::shared_ptr<ProxyNode> proxy = admin.MakeProxy();
    Serve(proxy);
    return proxy;
}

std::shared_ptr<ProxyNode> RequireProxy(const AdminNode& admin, CosNotifyChannelAdmin::ProxyID id) {
    std::shared_ptr<ProxyNode> proxy = admin.FindProxy(id);
    if (proxy == nullptr) {
        throw CosNotifyChannelAdmin::ProxyNotFound();
    }
    return proxy;
}

void DestroyAdmin(AdminNode& admin) {
    if (admin.Id() == 0) {
        throw CORBA::NO_PERMISSION(0, CORBA::COMPLETED_NO);
    }
    admin.Channel()->DropAdmin(admin.ForConsumers(), admin.Id());
}

void Serve(const std::shared_ptr<ProxyNode>& proxy) {
    PortableServer::ServantBase* servant = nullptr;
    if (proxy->Admin()->ForConsumers()) {
        servant = new ProxyPushSupplier(proxy);
    } else {
        servant = new ProxyPushConsumer(proxy);
    }
    proxy->Channel().Service().Activate(proxy->Path(), proxy->Channel().Persistent(), servant);
}

void Serve(const std::shared_ptr<AdminNode>& admin) {
    PortableServer::ServantBase* servant = nullptr;
    if (admin->ForConsumers()) {
        servant = new ConsumerAdminServant(admin);
    } else {
        servant = new SupplierAdminServant(admin);
    }
    admin->Channel()->Service().Activate(admin->Path(), admin->Channel()->Persistent(), servant);
}

}  // namespace qv_notify
