#include "notification/supplier.h"

#include <mutex>
#include <new>
#include <shared_mutex>

#include "agent/corbabaseagentconfig.h"
#include "agent/singleton.h"
#include "logging/corbalogutil.h"
#include "notification/event_buffer.h"
#include "notification/event_types.h"
#include "notification/ref_count.h"
#include "notification/supplier_impl.h"

namespace NS_CORBA {

namespace {

constexpr int kSupplierThreads = 2;

// Not the lock of the buffer, which may be held through a whole rebuild of the channel: held for a look at
// the set or for its change, so that a pusher sees the types before a rebuild or after it, never some of
// them.
std::shared_mutex g_typesLock;

// Held while the reference to the channel is taken or replaced, never across a call.
std::mutex g_channelLock;

}  // namespace

SuppilerMgr* SuppilerMgr::m_pInstance = nullptr;

SuppilerMgr::SuppilerMgr() : m_pSuppilerImpl(new (std::nothrow) RefCount<SuppilerImpl>) {
    if (m_pSuppilerImpl) {
        m_pSuppilerImpl->m_poa = CorbaBaseAgentConfig::Instance()->GetRootPoa();
    }
}

SuppilerMgr::~SuppilerMgr() {
    if (m_pSuppilerImpl) {
        m_pSuppilerImpl->_remove_ref();
        m_pSuppilerImpl = nullptr;
    }
}

SuppilerMgr* SuppilerMgr::Instance() {
    return CreateOnce(m_pInstance, [] { return new SuppilerMgr; });
}

void SuppilerMgr::Destroy() {
    const FuncGuardTrace trace("SuppilerMgr::Destroy");
}

int SuppilerMgr::open(void* /*args*/) {
    return activate(THR_NEW_LWP, kSupplierThreads, 0, ACE_DEFAULT_THREAD_PRIORITY, -1);
}

int SuppilerMgr::close(u_long /*flags*/) {
    return 0;
}

int SuppilerMgr::regist(std::string type) {
    const std::lock_guard<std::shared_mutex> guard(g_typesLock);
    m_setRegisteredTypes.insert(std::move(type));
    return 0;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the interface takes it by value
int SuppilerMgr::unRegist(std::string type) {
    const std::lock_guard<std::shared_mutex> guard(g_typesLock);
    m_setRegisteredTypes.erase(type);
    return 0;
}

bool SuppilerMgr::IsRegistered(const char* type) const {
    const std::shared_lock<std::shared_mutex> guard(g_typesLock);
    return m_setRegisteredTypes.count(type) != 0;
}

void SuppilerMgr::SetRegisteredTypes() {
    std::set<std::string> types;
    for (const EventType& type : kEventTypes) {
        types.insert(type.name);
    }
    const std::lock_guard<std::shared_mutex> guard(g_typesLock);
    m_setRegisteredTypes.swap(types);
}

CosNotifyChannelAdmin::EventChannel_ptr SuppilerMgr::getChannel() {
    const std::lock_guard<std::mutex> guard(g_channelLock);
    return CosNotifyChannelAdmin::EventChannel::_duplicate(m_channel.in());
}

void SuppilerMgr::StoreChannel(CosNotifyChannelAdmin::EventChannel_ptr channel) {
    CosNotifyChannelAdmin::EventChannel_var former;  // released when nobody waits for it
    const std::lock_guard<std::mutex> guard(g_channelLock);
    former = m_channel._retn();
    m_channel = CosNotifyChannelAdmin::EventChannel::_duplicate(channel);
}

bool SuppilerMgr::IsBufEmpty() {
    const EventBufferGuard guard;
    return m_eventBuffer.empty();
}

}  // namespace NS_CORBA
