#pragma once

#include <orbsvcs/CosNotifyChannelAdminC.h>
#include <orbsvcs/CosNotifyCommS.h>
#include <tao/PortableServer/PortableServer.h>

#include "platform/export.h"

namespace NS_CORBA {

/// The servant by which the agent is a supplier of the channel, a StructuredPushSupplier of the OMG
/// Notification Service; do_push is the last step of every event.
///
/// Made and reference-counted by SuppilerMgr. Thread safety: do_push may run in several threads, also while
/// the proxy is replaced: each push uses the proxy that stood when it began. connect and disconnect are one
/// thread's at a time. The channel calls subscription_change and disconnect_structured_push_supplier on ORB
/// threads.
class QV_API SuppilerImpl : public virtual POA_CosNotifyComm::StructuredPushSupplier {
  public:
    SuppilerImpl();
    ~SuppilerImpl() override;

    /// Does nothing: the agent sends all it has, whatever consumers subscribe to.
    void subscription_change(const CosNotification::EventTypeSeq& added,
                             const CosNotification::EventTypeSeq& removed) override;
    /// Takes the called object out of its POA. What the manager thinks of the channel stays as it is: the
    /// loss shows at the next push.
    void disconnect_structured_push_supplier() override;
    /// A new reference, nil before the manager has set the POA.
    PortableServer::POA_ptr _default_POA() override;

    /// Pushes one event, or lets a customisation handle discard it, which counts as sent. Takes as long as
    /// the ORB's timeouts allow; no CORBA::Exception leaves it.
    /// @return 0, or -1 when there is no proxy or it did not take the event
    virtual int do_push(const CosNotification::StructuredEvent& event);
    /// Keeps a reference to `proxy` from now on, whatever comes of it, and connects to it. A proxy that is
    /// connected already counts as success. @return 0 or -1
    virtual int connect(CosNotifyChannelAdmin::StructuredProxyPushConsumer_ptr proxy);
    /// Disconnects from the proxy and forgets it. When that raises, which the log tells, the proxy is kept.
    virtual void disconnect();

  protected:
    friend class SuppilerMgr;
    friend class SuppilerMgrProbe;  // lets the unit tests see what nothing else shows

    CosNotifyChannelAdmin::StructuredProxyPushConsumer_var m_proxyConsumer;  ///< nil when not connected
    PortableServer::POA_var m_poa;  ///< set once, by SuppilerMgr's constructor

  private:
    int Push(const CosNotification::StructuredEvent& event);
    CosNotifyChannelAdmin::StructuredProxyPushConsumer_ptr Proxy() const;
    void StoreProxy(CosNotifyChannelAdmin::StructuredProxyPushConsumer_ptr proxy);
};

}  // namespace NS_CORBA
