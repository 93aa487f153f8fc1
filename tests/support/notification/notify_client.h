// Suppliers and consumers of a notification channel, as other programs would write them.
#pragma once

#include <orbsvcs/CosNotifyChannelAdminC.h>
#include <orbsvcs/CosNotifyCommS.h>

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace qv_test {

/// The ORB of this process, whose POAs serve; the first call starts it.
CORBA::ORB_ptr ClientOrb();
/// Further options for that ORB, to be set ahead of the first call.
std::vector<std::string>& ClientOrbOptions();

/// The factory behind a corbaloc or IOR text.
CosNotifyChannelAdmin::EventChannelFactory_var FactoryAt(const std::string& reference);

/// A property with a value that an Any can be made of.
template <class T>
CosNotification::Property PropertyOf(const char* name, T value) {
    CosNotification::Property property;
    property.name = CORBA::string_dup(name);
    property.value <<= value;
    return property;
}
CosNotification::PropertySeq Properties(const std::vector<CosNotification::Property>& properties);

/// A channel; persistent ones keep events, too.
CosNotifyChannelAdmin::EventChannel_var MakeChannel(CosNotifyChannelAdmin::EventChannelFactory_ptr factory,
                                                    bool persistent);

/// An event of domain "tmf_mtnm" and that type, with "notificationId" and "number" (a long) to filter by.
CosNotification::StructuredEvent EventOf(const char* type, std::int32_t number);
std::int32_t NumberOf(const CosNotification::StructuredEvent& event);

/// A structured push consumer that remembers the numbers of the events in the order in which they came. Any
/// thread may call. It serves until End, or the end of the process.
class RecordingConsumer : public POA_CosNotifyComm::StructuredPushConsumer {
  public:
    /// Called in each push, ahead of the recording: may block, or raise.
    using Hook = std::function<void(const CosNotification::StructuredEvent& event)>;

    /// Makes and activates one, and connects it to a new proxy of the admin.
    static PortableServer::Servant_var<RecordingConsumer> Connect(
        CosNotifyChannelAdmin::ConsumerAdmin_ptr admin, Hook hook = {});

    CosNotifyChannelAdmin::StructuredProxyPushSupplier_ptr Proxy() const { return m_proxy.in(); }
    CosNotifyChannelAdmin::ProxyID Id() const { return m_id; }
    std::vector<std::int32_t> Numbers() const;
    std::size_t Count() const;
    bool WaitForCount(std::size_t count, std::chrono::milliseconds timeout = std::chrono::seconds(30)) const;
    bool Disconnected() const;
    std::vector<std::string> OfferedTypes() const;  ///< as told by offer_change: "+type" and "-type"
    /// Calls end with OBJECT_NOT_EXIST from now on.
    void End();

    void push_structured_event(const CosNotification::StructuredEvent& notification) override;
    void disconnect_structured_push_consumer() override;
    void offer_change(const CosNotification::EventTypeSeq& added,
                      const CosNotification::EventTypeSeq& removed) override;

  private:
    explicit RecordingConsumer(Hook hook) : m_hook(std::move(hook)) {}

    const Hook m_hook;
    CosNotifyChannelAdmin::StructuredProxyPushSupplier_var m_proxy;
    CosNotifyChannelAdmin::ProxyID m_id = 0;
    mutable std::mutex m_mutex;
    mutable std::condition_variable m_changed;
    std::vector<std::int32_t> m_numbers;
    std::vector<std::string> m_offered;
    bool m_disconnected = false;
};

/// A structured push supplier that remembers what it was told. Any thread may call.
class RecordingSupplier : public POA_CosNotifyComm::StructuredPushSupplier {
  public:
    static PortableServer::Servant_var<RecordingSupplier> Connect(
        CosNotifyChannelAdmin::SupplierAdmin_ptr admin);

    CosNotifyChannelAdmin::StructuredProxyPushConsumer_ptr Proxy() const { return m_proxy.in(); }
    CosNotifyChannelAdmin::ProxyID Id() const { return m_id; }
    void Push(const CosNotification::StructuredEvent& event) { m_proxy->push_structured_event(event); }
    /// Pushes until the service has answered, over a restart of it.
    void PushUntilTaken(const CosNotification::StructuredEvent& event);
    bool Disconnected() const;
    std::vector<std::string> SubscribedTypes()
        const;  ///< as told by subscription_change: "+type" and "-type"

    void disconnect_structured_push_supplier() override;
    void subscription_change(const CosNotification::EventTypeSeq& added,
                             const CosNotification::EventTypeSeq& removed) override;

  private:
    CosNotifyChannelAdmin::StructuredProxyPushConsumer_var m_proxy;
    CosNotifyChannelAdmin::ProxyID m_id = 0;
    mutable std::mutex m_mutex;
    std::vector<std::string> m_subscribed;
    bool m_disconnected = false;
};

/// Adds a filter with one constraint to an admin or proxy.
CosNotifyFilter::Filter_var AddFilter(CosNotifyChannelAdmin::EventChannel_ptr channel,
                                      CosNotifyFilter::FilterAdmin_ptr where, const char* constraint);

}  // namespace qv_test
