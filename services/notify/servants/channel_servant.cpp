#include "services/notify/servants/channel_servant.h"

#include <utility>

#include "services/notify/properties/admin_properties.h"
#include "services/notify/servants/admin_parts.h"
#include "services/notify/servants/repository_ids.h"

namespace qv_notify {

ChannelServant::ChannelServant(std::shared_ptr<ChannelNode> node, Origin origin)
    : NodeServant(std::move(node)), m_origin(std::move(origin)) {}

CosNotifyChannelAdmin::EventChannelFactory_ptr ChannelServant::MyFactory() {
    return CosNotifyChannelAdmin::EventChannelFactory::_duplicate(m_origin.factory.in());
}

CosNotifyChannelAdmin::ConsumerAdmin_ptr ChannelServant::default_consumer_admin() {
    return get_consumeradmin(0);
}

CosNotifyChannelAdmin::SupplierAdmin_ptr ChannelServant::default_supplier_admin() {
    return get_supplieradmin(0);
}

CosNotifyFilter::FilterFactory_ptr ChannelServant::default_filter_factory() {
    const auto lock = Lock();
    return Refer<CosNotifyFilter::FilterFactory>(m_node->Path() + "/ff", kFilterFactoryType);
}

std::shared_ptr<AdminNode> ChannelServant::NewAdmin(
    bool for_consumers, CosNotifyChannelAdmin::InterFilterGroupOperator op) const {
    std::shared_ptr<AdminNode> admin = m_node->MakeAdmin(for_consumers, op == CosNotifyChannelAdmin::AND_OP);
    Serve(admin);
    return admin;
}

std::shared_ptr<AdminNode> ChannelServant::RequireAdmin(bool for_consumers,
                                                        CosNotifyChannelAdmin::AdminID id) const {
    std::shared_ptr<AdminNode> admin = m_node->FindAdmin(for_consumers, id);
    if (admin == nullptr) {
        throw CosNotifyChannelAdmin::AdminNotFound();
    }
    return admin;
}

CosNotifyChannelAdmin::ConsumerAdmin_ptr ChannelServant::new_for_consumers(
    CosNotifyChannelAdmin::InterFilterGroupOperator op, CORBA::Long& id) {
    const auto lock = Lock();
    const std::shared_ptr<AdminNode> admin = NewAdmin(true, op);
    id = admin->Id();
    return Refer<CosNotifyChannelAdmin::ConsumerAdmin>(admin->Path(), kConsumerAdminType);
}

CosNotifyChannelAdmin::SupplierAdmin_ptr ChannelServant::new_for_suppliers(
    CosNotifyChannelAdmin::InterFilterGroupOperator op, CORBA::Long& id) {
    const auto lock = Lock();
    const std::shared_ptr<AdminNode> admin = NewAdmin(false, op);
    id = admin->Id();
    return Refer<CosNotifyChannelAdmin::SupplierAdmin>(admin->Path(), kSupplierAdminType);
}

CosNotifyChannelAdmin::ConsumerAdmin_ptr ChannelServant::get_consumeradmin(
    CosNotifyChannelAdmin::AdminID id) {
    const auto lock = Lock();
    return Refer<CosNotifyChannelAdmin::ConsumerAdmin>(RequireAdmin(true, id)->Path(), kConsumerAdminType);
}

CosNotifyChannelAdmin::SupplierAdmin_ptr ChannelServant::get_supplieradmin(
    CosNotifyChannelAdmin::AdminID id) {
    const auto lock = Lock();
    return Refer<CosNotifyChannelAdmin::SupplierAdmin>(RequireAdmin(false, id)->Path(), kSupplierAdminType);
}

CosNotifyChannelAdmin::AdminIDSeq* ChannelServant::get_all_consumeradmins() {
    const auto lock = Lock();
    return IdsOf<CosNotifyChannelAdmin::AdminIDSeq>(m_node->Admins(true));
}

CosNotifyChannelAdmin::AdminIDSeq* ChannelServant::get_all_supplieradmins() {
    const auto lock = Lock();
    return IdsOf<CosNotifyChannelAdmin::AdminIDSeq>(m_node->Admins(false));
}

CosNotification::AdminProperties* ChannelServant::get_admin() {
    const auto lock = Lock();
    return ToSequence(m_node->AdminProperties());
}

void ChannelServant::set_admin(const CosNotification::AdminProperties& admin) {
    const auto lock = Lock();
    PropertyValues values = m_node->AdminProperties();
    ApplyAdmin(admin, values);
    m_node->SetAdminProperties(std::move(values));
}

CosEventChannelAdmin::ConsumerAdmin_ptr ChannelServant::for_consumers() {
    return default_consumer_admin();
}

CosEventChannelAdmin::SupplierAdmin_ptr ChannelServant::for_suppliers() {
    return default_supplier_admin();
}

void ChannelServant::destroy() {
    {
        const auto lock = Lock();
        m_node->Destroy();
    }
    m_origin.forget(m_node->Id());
}

}  // namespace qv_notify
