#include "notification/eventmgr.h"

#include "agent/corbabaseagentconfig.h"
#include "agent/singleton.h"
#include "logging/corbalogutil.h"
#include "notification/channel_properties.h"

namespace NS_CORBA {

namespace {

using CosNotifyChannelAdmin::ChannelIDSeq_var;
using CosNotifyChannelAdmin::EventChannel;
using CosNotifyChannelAdmin::EventChannel_var;
using CosNotifyChannelAdmin::EventChannelFactory;

constexpr char kChannelFile[] = "channel.ior";

}  // namespace

EventMgr* EventMgr::m_pInstance = nullptr;

EventMgr::EventMgr()
    : m_eventChannel(EventChannel::_nil()), m_channelFactory(EventChannelFactory::_nil()), m_bReady(false) {}

EventMgr::~EventMgr() {
    m_eventChannel = EventChannel::_nil();
    m_channelFactory = EventChannelFactory::_nil();
}

EventMgr* EventMgr::Instance() {
    return CreateOnce(m_pInstance, [] { return new EventMgr; });
}

void EventMgr::Destroy() {
    if (!LoadInstance(m_pInstance)) {
        return;
    }
    const SingletonGuard guard(*ACE_Static_Object_Lock::instance());
    delete TakeInstance(m_pInstance);
}

int EventMgr::Init() {
    CorbaBaseAgentConfig& config = *CorbaBaseAgentConfig::Instance();
    m_channelFactory = EventChannelFactory::_nil();
    if (!config.GetNotifyFactory(m_channelFactory)) {
        TA_POS;
        TaTrace("[EventMgr::Init] GetNotifyFactory failed!");
        return -1;
    }
    if (!config.PersistentEventChannel() && !CORBA::is_nil(m_eventChannel.in())) {
        DestroyFormerChannel();
    }
    int id = 0;
    ChannelVar channel;
    try {
        if (CreateChannel(id, channel) == -1) {
            TA_POS;
            TaTrace("[EventMgr::Init] CreateChannel failed!");
            return -1;
        }
    } catch (CORBA::Exception& ex) {
        TA_POS;
        TaException(ex, "[EventMgr::Init] Exception raised during CreateChannel!");
        return -1;
    }
    m_eventChannel = EventChannel::_duplicate(channel.in());
    return 0;
}

void EventMgr::DestroyFormerChannel() {
    TA_POS;
    TaTrace("[EventMgr::Init] Destroy out of date EventChannel at first!");
    try {
        m_eventChannel->destroy();
    } catch (CORBA::Exception& ex) {
        TA_POS;
        TaException(ex, "[EventMgr::Init] Exception raised during destroying eventchannel!");
    }
}

int EventMgr::CreateChannel(int& id, ChannelVar& channel) {
    return CorbaBaseAgentConfig::Instance()->PersistentEventChannel()
               ? CreatePersistentEventChannel(kChannelFile, id, channel)
               : CreateTransientEventChannel(id, channel);
}

/// The factory; raises where a call to it would crash because there is none.
CosNotifyChannelAdmin::EventChannelFactory_ptr EventMgr::Factory() const {
    if (CORBA::is_nil(m_channelFactory.in())) {
        throw CORBA::INV_OBJREF();
    }
    return m_channelFactory.in();
}

int EventMgr::CreateTransientEventChannel(int& id, ChannelVar& channel) {
    try {
        channel = Factory()->create_channel(ChannelQoS(false), ChannelAdminProperties(), id);
    } catch (CORBA::Exception& ex) {
        TA_POS;
        TaException(
            ex,
            "[EventMgr::CreateTransientEventChannel] Exception raised during creating notification channel!");
        return -1;
    }
    if (CORBA::is_nil(channel.in())) {
        TA_POS;
        TaTrace("[EventMgr::CreateTransientEventChannel] Create notification event channel failed!");
        return -1;
    }
    return 0;
}

int EventMgr::CreatePersistentEventChannel(const char* filename, int& id, ChannelVar& channel) {
    if (TakeOverChannel(filename, channel)) {
        return 0;
    }
    try {
        return ReplaceAllChannels(id, channel);
    } catch (CORBA::Exception& ex) {
        TA_POS;
        TaException(ex,
                    "[EventMgr::CreatePersistentEventChannel] Exception raised during creating notification "
                    "channel!");
        return -1;
    }
}

/// Whether the channel of the file is one that the factory knows; it is then in `channel`.
bool EventMgr::TakeOverChannel(const char* filename, ChannelVar& channel) {
    CORBA::Object_var object;
    if (CorbaBaseAgentConfig::Instance()->Read_ior(filename, object) != 0) {
        return false;
    }
    try {
        channel = EventChannel::_narrow(object.in());
        return IsListed(channel.in());
    } catch (CORBA::Exception& ex) {
        TA_POS;
        TaException(ex,
                    "[EventMgr::CreatePersistentEventChannel]:Exception rasied during _narrow operation, the "
                    "eventchannle will recreated!");
        return false;
    }
}

bool EventMgr::IsListed(CosNotifyChannelAdmin::EventChannel_ptr channel) {
    ChannelIDSeq_var ids = Factory()->get_all_channels();
    if (CORBA::is_nil(channel) || ids.operator->() == nullptr) {
        TA_POS;
        TaTrace("[EventMgr::CreatePersistentEventChannel] Event channel is NULL!");
        return false;
    }
    for (CORBA::ULong i = 0; i < ids->length(); ++i) {
        EventChannel_var listed = Factory()->get_event_channel(ids[i]);
        if (channel->_is_equivalent(listed.in())) {
            return true;
        }
    }
    return false;
}

int EventMgr::ReplaceAllChannels(int& id, ChannelVar& channel) {
    DestroyAllChannels();
    channel = Factory()->create_channel(ChannelQoS(true), ChannelAdminProperties(), id);
    CorbaBaseAgentConfig::Instance()->Write_ior(kChannelFile, channel.in());
    if (CORBA::is_nil(channel.in())) {
        TA_POS;
        TaTrace("[EventMgr::CreatePersistentEventChannel] Create notification event channel failed!");
        return -1;
    }
    return 0;
}

/// The service is taken to serve this agent alone.
void EventMgr::DestroyAllChannels() {
    ChannelIDSeq_var ids = Factory()->get_all_channels();
    for (CORBA::ULong i = 0; ids.operator->() != nullptr && i < ids->length(); ++i) {
        EventChannel_var channel = Factory()->get_event_channel(ids[i]);
        if (CORBA::is_nil(channel.in())) {
            continue;
        }
        try {
            channel->destroy();
        } catch (CORBA::Exception& ex) {
            TA_POS;
            TaException(ex, "[EventMgr::CreatePersistentEventChannel] Destory old event channel failed!");
        }
    }
}

}  // namespace NS_CORBA
