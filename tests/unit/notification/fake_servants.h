// The servants and the state behind FakeNotifyService.
#pragma once

#include <map>
#include <mutex>

#include "tests/unit/notification/fake_channel.h"

namespace qv_test {

struct FakeProxyEntry {
    CosNotifyChannelAdmin::ChannelID channel = 0;
    CosNotifyChannelAdmin::ProxyConsumer_var reference;
    CosNotifyComm::StructuredPushSupplier_var supplier;
    bool connected = false;
    bool alive = true;
};

struct FakeChannelEntry {
    FakeChannelRecord record;
    CosNotifyChannelAdmin::EventChannel_var reference;
    CosNotifyChannelAdmin::SupplierAdmin_var admin;
};

/// Shared by the service and its servants. `lock` guards everything behind it.
class FakeNotifyState : public std::enable_shared_from_this<FakeNotifyState> {
  public:
    NotifyScript script;
    PortableServer::POA_var poa;
    CosNotifyChannelAdmin::EventChannelFactory_var factory;

    std::mutex lock;
    std::map<CosNotifyChannelAdmin::ChannelID, FakeChannelEntry> channels;
    std::map<CosNotifyChannelAdmin::ProxyID, FakeProxyEntry> proxies;
    std::vector<CosNotification::StructuredEvent> events;
    std::vector<FakeOffer> offers;
    bool generalProxies = false;

    void MakeFactory();
    CosNotifyChannelAdmin::EventChannel_ptr MakeChannel(const CosNotification::QoSProperties& qos,
                                                        const CosNotification::AdminProperties& admin,
                                                        CosNotifyChannelAdmin::ChannelID& id);
    CosNotifyChannelAdmin::ProxyConsumer_ptr MakeProxy(CosNotifyChannelAdmin::ChannelID channel,
                                                       CosNotifyChannelAdmin::ProxyID& id);
    void EndChannel(CosNotifyChannelAdmin::ChannelID id);
    void AddOffer(const char* target, const CosNotification::EventTypeSeq& added,
                  const CosNotification::EventTypeSeq& removed);

  private:
    CORBA::Object_ptr Activate(PortableServer::ServantBase* servant);
    void Deactivate(CORBA::Object_ptr object);
};

}  // namespace qv_test
