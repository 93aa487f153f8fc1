#include "notification/supplier_impl.h"

#include <mutex>

#include "agent/corbabaseagentconfig.h"
#include "logging/corbalogutil.h"
#include "notification/event_customize_handle.h"

namespace NS_CORBA {

namespace {

using CosNotifyChannelAdmin::StructuredProxyPushConsumer;

// Guards m_proxyConsumer against being replaced while a pusher takes its reference; never held across a call.
// There is one servant in a process.
std::mutex g_proxyLock;

/// Asks the bundle's handle for events of this type, if there is one. @return false to discard the event
bool PassesCustomisation(const CosNotification::StructuredEvent& event) {
    if (g_mapEventCustomizeHandle.empty()) {
        return true;
    }
    const auto found = g_mapEventCustomizeHandle.find(event.header.fixed_header.event_type.type_name.in());
    return found == g_mapEventCustomizeHandle.end() || !found->second || found->second->CustomizeEvent(event);
}

void DeactivateCalledObject(CORBA::ORB_ptr orb) {
    if (CORBA::is_nil(orb)) {
        return;
    }
    const CORBA::Object_var object = orb->resolve_initial_references("POACurrent");
    const PortableServer::Current_var current = PortableServer::Current::_narrow(object.in());
    if (CORBA::is_nil(current.in())) {
        return;
    }
    const PortableServer::POA_var poa = current->get_POA();
    if (CORBA::is_nil(poa.in())) {
        return;
    }
    const PortableServer::ObjectId_var id = current->get_object_id();
    poa->deactivate_object(id.in());
}

}  // namespace

SuppilerImpl::SuppilerImpl() = default;
SuppilerImpl::~SuppilerImpl() = default;

void SuppilerImpl::subscription_change(const CosNotification::EventTypeSeq& /*added*/,
                                       const CosNotification::EventTypeSeq& /*removed*/) {}

void SuppilerImpl::disconnect_structured_push_supplier() {
    try {
        const CORBA::ORB_var orb = CorbaBaseAgentConfig::Instance()->GetOrb();
        DeactivateCalledObject(orb.in());
    } catch (CORBA::Exception& ex) {
        TA_POS;
        TaException(ex,
                    "[SuppilerImpl::disconnect_structured_push_supplier] Exception raised during "
                    "disconnecting supplier!");
    }
}

PortableServer::POA_ptr SuppilerImpl::_default_POA() {
    return PortableServer::POA::_duplicate(m_poa.in());
}

int SuppilerImpl::do_push(const CosNotification::StructuredEvent& event) {
    try {
        if (!PassesCustomisation(event)) {
            TA_POS;
            TaTrace("[SuppilerImpl::do_push] Fail to customize event,the event is discarded!");
            return 0;
        }
        return Push(event);
    } catch (CosEventComm::Disconnected&) {
        TA_POS;
        TaTrace(
            "[SuppilerImpl::do_push] CORBA Notification Service: Push event failed due to disconnect from "
            "channel!");
    } catch (CORBA::Exception& ex) {
        TA_POS;
        TaException(ex, "[SuppilerImpl::do_push] Exception occurred during pushing event!");
    }
    return -1;
}

int SuppilerImpl::Push(const CosNotification::StructuredEvent& event) {
    const CosNotifyChannelAdmin::StructuredProxyPushConsumer_var proxy = Proxy();
    if (CORBA::is_nil(proxy.in())) {
        TA_POS;
        TaTrace("[SuppilerImpl::do_push] Proxy object is nil!");
        return -1;
    }
    proxy->push_structured_event(event);
    return 0;
}

int SuppilerImpl::connect(CosNotifyChannelAdmin::StructuredProxyPushConsumer_ptr proxy) {
    if (CORBA::is_nil(proxy)) {
        TA_POS;
        TaTrace("[SuppilerImpl::connect] Proxy object is nil!");
        return -1;
    }
    StoreProxy(StructuredProxyPushConsumer::_duplicate(proxy));
    try {
        const CosNotifyComm::StructuredPushSupplier_var self = _this();
        proxy->connect_structured_push_supplier(self.in());
    } catch (CosEventChannelAdmin::AlreadyConnected&) {
        TA_POS;
        TaTrace(
            "[SuppilerImpl::connect] CORBA Notification Service: Already connected structured push "
            "supplier!");
    } catch (CORBA::Exception& ex) {
        TA_POS;
        TaException(ex, "[SuppilerImpl::connect] Exception occurred during connect push supplier!");
        return -1;
    }
    return 0;
}

void SuppilerImpl::disconnect() {
    const CosNotifyChannelAdmin::StructuredProxyPushConsumer_var proxy = Proxy();
    if (CORBA::is_nil(proxy.in())) {
        return;
    }
    try {
        proxy->disconnect_structured_push_consumer();
        StoreProxy(StructuredProxyPushConsumer::_nil());
    } catch (CORBA::Exception& ex) {
        TA_POS;
        TaException(ex, "Exception during disconnect push consumer failed!");
    }
}

CosNotifyChannelAdmin::StructuredProxyPushConsumer_ptr SuppilerImpl::Proxy() const {
    const std::lock_guard<std::mutex> guard(g_proxyLock);
    return StructuredProxyPushConsumer::_duplicate(m_proxyConsumer.in());
}

void SuppilerImpl::StoreProxy(CosNotifyChannelAdmin::StructuredProxyPushConsumer_ptr proxy) {
    CosNotifyChannelAdmin::StructuredProxyPushConsumer_var former = proxy;
    {
        const std::lock_guard<std::mutex> guard(g_proxyLock);
        CosNotifyChannelAdmin::StructuredProxyPushConsumer_ptr stored = former._retn();
        former = m_proxyConsumer._retn();
        m_proxyConsumer = stored;
    }
}

}  // namespace NS_CORBA
