// A notification service for tests, as real CORBA objects of the test's own process:
//
//     CORBA::ORB_var orb = MakeOrb();                 // of AgentTest; anything with a RootPOA serves
//     FakeNotifyService service(orb.in());
//     service.WriteIor(path);                         // for "-nt<path>": the agent finds the factory there
//     service.script().Raise<CORBA::TRANSIENT>("push_structured_event");
//     ...
//     EXPECT_EQ(1, service.script().Count("push_structured_event"));
//     EXPECT_EQ(2u, service.Events().size());         // what got through, in order
//
// It does what the library asks of such a service: create_channel, get_all_channels, get_event_channel; of a
// channel destroy and default_supplier_admin; of the admin obtain_notification_push_consumer, push_consumers,
// get_proxy_consumer and offer_change; of a proxy connect_structured_push_supplier, push_structured_event,
// offer_change and disconnect_structured_push_consumer. Everything else raises NO_IMPLEMENT. Each of these
// can be told to raise, to return nil or to wait, see NotifyScript.
//
// Calls of one process don't need a running ORB: they are made on the thread of the caller.
#pragma once

#include <orbsvcs/CosNotifyChannelAdminS.h>
#include <tao/ORB.h>
#include <tao/PortableServer/PortableServer.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/unit/notification/notify_script.h"

namespace qv_test {

class FakeNotifyState;

/// What a fake channel was created with, and whether it still lives. A copy.
struct FakeChannelRecord {
    CosNotifyChannelAdmin::ChannelID id = 0;
    CosNotification::QoSProperties qos;
    CosNotification::AdminProperties admin;
    bool alive = true;
};

/// One offer_change: where it came in ("admin" or "proxy") and the pairs of domain and type name.
struct FakeOffer {
    using Types = std::vector<std::pair<std::string, std::string>>;
    std::string target;
    Types added;
    Types removed;
};

/// The service and its objects, alive until it is destroyed, which also lets all waiting calls go. Destroy it
/// before the ORB. Thread-safe.
class FakeNotifyService {
  public:
    explicit FakeNotifyService(CORBA::ORB_ptr orb);
    ~FakeNotifyService();
    FakeNotifyService(const FakeNotifyService&) = delete;
    FakeNotifyService& operator=(const FakeNotifyService&) = delete;

    NotifyScript& script();

    /// The factory; the caller owns the reference.
    CosNotifyChannelAdmin::EventChannelFactory_ptr Factory() const;
    /// Writes the factory's reference into a file.
    void WriteIor(const std::string& path) const;

    /// Makes a channel as if somebody else had asked for it; no call is noted. The caller owns the reference.
    CosNotifyChannelAdmin::EventChannel_ptr AddChannel();
    /// All channels in the order of their creation, the dead ones too.
    std::vector<FakeChannelRecord> Channels() const;
    /// The reference of a living or dead channel, nil for an unknown id. The caller owns it.
    CosNotifyChannelAdmin::EventChannel_ptr Channel(CosNotifyChannelAdmin::ChannelID id) const;
    /// Takes a channel away with its admin and proxies, as a restarted service would: calls on them raise
    /// OBJECT_NOT_EXIST, and the factory knows it no more. No call is noted.
    void Vanish(CosNotifyChannelAdmin::ChannelID id);

    /// From now on proxies are ProxyConsumers and no more: they take no structured events.
    void MakeGeneralProxies();
    /// The ids of all proxies made so far, in order.
    std::vector<CosNotifyChannelAdmin::ProxyID> Proxies() const;
    /// The supplier connected to a proxy, nil when there is none. The caller owns the reference.
    CosNotifyComm::StructuredPushSupplier_ptr Supplier(CosNotifyChannelAdmin::ProxyID proxy) const;
    /// The proxy's side of a disconnection, without a call to the supplier: pushes raise Disconnected.
    void Disconnect(CosNotifyChannelAdmin::ProxyID proxy);

    /// Events that push_structured_event took, of all proxies, in order.
    std::vector<CosNotification::StructuredEvent> Events() const;
    void ClearEvents();
    std::vector<FakeOffer> Offers() const;

  private:
    CORBA::ORB_var m_orb;
    PortableServer::POA_var m_poa;
    std::shared_ptr<FakeNotifyState> m_state;
};

}  // namespace qv_test
