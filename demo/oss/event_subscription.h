#pragma once

#include <orbsvcs/CosNotifyChannelAdminC.h>
#include <tao/PortableServer/PortableServer.h>

#include <string>
#include <vector>

#include "demo/oss/event_watch.h"
#include "demo/oss/oss_orb.h"
#include "demo/oss/oss_session.h"
#include "demo/oss/remote_call.h"

namespace qv_oss {

/// What an OSS wants of the events.
struct EventInterest {
    std::string constraint;          ///< empty: no condition
    std::vector<std::string> types;  ///< empty: of all types
};

/// A subscription to the EMS's event channel: a consumer admin of its own with one proxy, which calls the OSS
/// for each event. Where the channel is persistent it outlives the notification service. Operations raise
/// Problem. One thread uses it.
class EventSubscription {
  public:
    /// Asks the EMS for the channel and subscribes. `watch` outlives this object.
    EventSubscription(const OssOrb& orb, const RemoteCaller& caller, const OssSession& session,
                      const EventInterest& interest, EventWatch& watch);
    /// Tells the notification service nothing: End does.
    ~EventSubscription();
    EventSubscription(const EventSubscription&) = delete;
    EventSubscription& operator=(const EventSubscription&) = delete;

    /// Whether the notification service still knows it. It forgets what a transient channel had when it ends.
    bool Stands() const;

    /// Disconnects, and takes the admin away.
    void End();

  private:
    void MakeConsumer(EventWatch& watch);
    void Connect(const EventInterest& interest);
    void AddFilter(const EventInterest& interest);
    template <class Call>
    auto Ask(Call call) const;

    const OssOrb& orb_;
    const RemoteCaller& caller_;
    CosNotifyChannelAdmin::EventChannel_var channel_;
    CosNotifyChannelAdmin::ConsumerAdmin_var admin_;
    CosNotifyChannelAdmin::StructuredProxyPushSupplier_var proxy_;
    CosNotifyFilter::Filter_var filter_;
    PortableServer::ServantBase_var servant_;
    PortableServer::ObjectId_var id_;
    CosNotifyComm::StructuredPushConsumer_var consumer_;
};

}  // namespace qv_oss
