// The types of the references that the service gives away.
#pragma once

namespace qv_notify {

constexpr const char* kChannelType = "IDL:omg.org/CosNotifyChannelAdmin/EventChannel:1.0";
constexpr const char* kConsumerAdminType = "IDL:omg.org/CosNotifyChannelAdmin/ConsumerAdmin:1.0";
constexpr const char* kSupplierAdminType = "IDL:omg.org/CosNotifyChannelAdmin/SupplierAdmin:1.0";
constexpr const char* kProxySupplierType =
    "IDL:omg.org/CosNotifyChannelAdmin/StructuredProxyPushSupplier:1.0";
constexpr const char* kProxyConsumerType =
    "IDL:omg.org/CosNotifyChannelAdmin/StructuredProxyPushConsumer:1.0";
constexpr const char* kFilterFactoryType = "IDL:omg.org/CosNotifyFilter/FilterFactory:1.0";
constexpr const char* kFilterType = "IDL:omg.org/CosNotifyFilter/Filter:1.0";

}  // namespace qv_notify
