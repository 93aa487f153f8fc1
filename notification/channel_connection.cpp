#include "agent/corbabaseagentconfig.h"
#include "logging/corbalogutil.h"
#include "notification/event_buffer.h"
#include "notification/event_types.h"
#include "notification/eventmgr.h"
#include "notification/ref_count.h"
#include "notification/supplier.h"
#include "notification/supplier_impl.h"

namespace NS_CORBA {

namespace {

using namespace CosNotifyChannelAdmin;

CosNotification::EventTypeSeq OfferedTypes() {
    CosNotification::EventTypeSeq types;
    types.length(static_cast<CORBA::ULong>(CountOfferedTypes()));
    for (const EventType& type : kEventTypes) {
        if (type.offered != 0) {
            CosNotification::EventType& offer = types[static_cast<CORBA::ULong>(type.offered - 1)];
            offer.domain_name = CORBA::string_dup(kEventDomain);
            offer.type_name = CORBA::string_dup(type.name);
        }
    }
    return types;
}

ProxyConsumer_ptr NewProxy(SupplierAdmin_ptr admin) {
    ProxyID proxyId = 0;
    ProxyConsumer_var proxy = admin->obtain_notification_push_consumer(STRUCTURED_EVENT, proxyId);
    TA_POS;
    TaDebugWithPara(3, "[SuppilerMgr::ConnectChannel]: Get new proxy push consumer(proxy id = %d)!", proxyId);
    return proxy._retn();
}

/// Looks for the proxy that the agent's last run left on a channel which survived it.
bool FindFormerProxy(SupplierAdmin_ptr admin, ProxyID& proxyId) {
    ProxyIDSeq* const list = admin->push_consumers();
    const ProxyIDSeq_var owner = list;
    if (!list || list->length() == 0) {
        return false;
    }
    proxyId = (*list)[0];
    return true;
}

ProxyConsumer_ptr FormerProxy(SupplierAdmin_ptr admin, ProxyID proxyId) {
    ProxyConsumer_var proxy = admin->get_proxy_consumer(proxyId);
    TA_POS;
    TaDebugWithPara(3, "[SuppilerMgr::ConnectChannel]: Connect exsit proxy push consumer(proxy id = %d)!",
                    proxyId);
    return proxy._retn();
}

ProxyConsumer_ptr ObtainProxy(SupplierAdmin_ptr admin) {
    ProxyID proxyId = 0;
    if (CorbaBaseAgentConfig::Instance()->PersistentEventChannel() && FindFormerProxy(admin, proxyId)) {
        return FormerProxy(admin, proxyId);
    }
    return NewProxy(admin);
}

}  // namespace

int SuppilerMgr::NotifyServiceInit() {
    m_bChannelBroken = true;
    m_bChannelWasBroken = true;
    const EventBufferGuard guard;
    SetRegisteredTypes();
    if (EventMgr::Instance()->Init() == -1) {
        TA_POS;
        TaTrace(
            "[SuppilerMgr::NotifyServiceInit] CORBA Notification Service: Notification Service Init Failed!");
        return -1;
    }
    const EventChannel_var channel = EventChannel::_duplicate(EventMgr::Instance()->m_eventChannel.in());
    if (CORBA::is_nil(channel.in())) {
        return -1;
    }
    StoreChannel(channel.in());
    if (ConnectChannel(m_pSuppilerImpl, channel.in()) == -1) {
        TA_POS;
        TaTrace("[SuppilerMgr::NotifyServiceInit] ConnectChannel failed!");
        return -1;
    }
    if (!OfferTypes()) {
        return -1;
    }
    EnterService();
    TA_POS;
    TaTrace("[SuppilerMgr::NotifyServiceInit] CORBA Notification Service: Event Loss Cleared!");
    return 0;
}

bool SuppilerMgr::OfferTypes() {
    if (CORBA::is_nil(m_supplierAdmin.in())) {
        TA_POS;
        TaTrace("[SuppilerMgr::NotifyServiceInit] SupplierAdmin is null!");
        return false;
    }
    try {
        m_supplierAdmin->offer_change(OfferedTypes(), CosNotification::EventTypeSeq());
        return true;
    } catch (CORBA::Exception& ex) {
        TA_POS;
        TaException(ex, "[SuppilerMgr::NotifyServiceInit] Exception raised during offer_change!");
        return false;
    }
}

int SuppilerMgr::ConnectChannel(SuppilerImpl* supplier, EventChannel_ptr channel) {
    if (CORBA::is_nil(channel) || !supplier) {
        TA_POS;
        TaTrace("[SuppilerMgr::ConnectChannel] Channel or supplier is null!");
        return -1;
    }
    try {
        m_supplierAdmin = channel->default_supplier_admin();
        if (CORBA::is_nil(m_supplierAdmin.in())) {
            TA_POS;
            TaTrace("[SuppilerMgr::ConnectChannel] SupplierAdmin or ConsumerAdmin is null!");
            return -1;
        }
        return ConnectProxy(*supplier);
    } catch (CosNotifyComm::InvalidEventType&) {
        TA_POS;
        TaTrace("[SuppilerMgr::ConnectChannel] CosNotifyComm::InvalidEventType exception raised!");
    } catch (CORBA::Exception& ex) {
        TA_POS;
        TaException(ex, "[SuppilerMgr::ConnectChannel] Exception raised!");
    }
    return -1;
}

int SuppilerMgr::ConnectProxy(SuppilerImpl& supplier) {
    const ProxyConsumer_var proxy = ObtainProxy(m_supplierAdmin.in());
    if (CORBA::is_nil(proxy.in())) {
        TA_POS;
        TaTrace("[SuppilerMgr::ConnectChannel] CosNotifyChannelAdmin::ProxyConsumer is null!");
        return -1;
    }
    const StructuredProxyPushConsumer_var narrowed = StructuredProxyPushConsumer::_narrow(proxy.in());
    return supplier.connect(narrowed.in());
}

int SuppilerMgr::ExitThread() {
    const FuncGuardTrace trace("SuppilerMgr::ExitThread");
    {
        const EventBufferGuard guard;
        m_bExit = true;
        m_wakeEvent.signal();
        try {
            DisconnectServant();
        } catch (CORBA::Exception& ex) {
            TA_POS;
            TaException(ex, "[SuppilerMgr::ExitThread] Exception raised during exitthread!");
            return -1;
        }
    }
    wait();  // not under the lock, which the threads need to see the flag
    return 0;
}

void SuppilerMgr::DisconnectServant() {
    if (!m_pSuppilerImpl) {
        return;
    }
    m_pSuppilerImpl->disconnect();
    const PortableServer::POA_var poa = m_pSuppilerImpl->_default_POA();
    if (CORBA::is_nil(poa.in())) {
        return;
    }
    const PortableServer::ObjectId_var id = poa->servant_to_id(m_pSuppilerImpl);
    poa->deactivate_object(id.in());
}

}  // namespace NS_CORBA
