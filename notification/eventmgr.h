#pragma once

#include <orbsvcs/CosNotifyChannelAdminC.h>
#include <tao/ORB.h>

#include "platform/export.h"

namespace NS_CORBA {

/// Holds the agent's one notification channel: fetches the factory of the notification service and makes a
/// new channel, or, with persistent channels, takes over the one that an earlier run left in "channel.ior".
///
/// Errors: 0 for success, -1 for failure, which the logs tell; a CORBA::Exception doesn't get out, any other
/// exception does. Every failure leaves m_eventChannel as it was. Remote calls take as long as the ORB's
/// timeout policies let them.
///
/// Thread safety: none but for Instance() and Destroy(). The supplier manager calls the rest with its lock
/// held.
class QV_API EventMgr {
  public:
    /// Owns a reference to a channel.
    using ChannelVar = TAO_Objref_Var_T<CosNotifyChannelAdmin::EventChannel>;

    /// No factory, no channel.
    EventMgr();
    /// Gives up the references; the channel itself lives on.
    ~EventMgr();
    EventMgr(const EventMgr&) = delete;
    EventMgr& operator=(const EventMgr&) = delete;

    /// The only instance, made by the first call. Null only when the creation lock can't be taken.
    static EventMgr* Instance();
    /// Deletes the instance, if there is one. Nobody may be using it.
    static void Destroy();

    /// Fetches the factory and puts a channel into m_eventChannel. May be called again and again: a transient
    /// channel of the run before is destroyed first.
    int Init();

    /// Makes or takes over a channel, as the settings say.
    /// @param id set when a channel was made
    /// @param channel receives the channel; what it held is released
    int CreateChannel(int& id, ChannelVar& channel);
    /// Makes a channel that forgets its events and connections when the service ends.
    int CreateTransientEventChannel(int& id, ChannelVar& channel);
    /// Takes over the channel whose reference `filename` holds if the factory still lists it. Otherwise
    /// destroys every channel of the factory, makes one and writes its reference to "channel.ior".
    int CreatePersistentEventChannel(const char* filename, int& id, ChannelVar& channel);

    static EventMgr* m_pInstance;  ///< what Instance() has made; null before

    /// The channel in use, nil until the first Init that succeeded. After an Init that failed it may be one
    /// that was destroyed.
    ChannelVar m_eventChannel;

  private:
    friend class EventMgrProbe;  // gives the unit tests a factory without Init

    bool TakeOverChannel(const char* filename, ChannelVar& channel);
    bool IsListed(CosNotifyChannelAdmin::EventChannel_ptr channel);
    int ReplaceAllChannels(int& id, ChannelVar& channel);
    void DestroyAllChannels();
    void DestroyFormerChannel();
    CosNotifyChannelAdmin::EventChannelFactory_ptr Factory() const;

    TAO_Objref_Var_T<CosNotifyChannelAdmin::EventChannelFactory> m_channelFactory;
    bool m_bReady = false;  // kept for who looks at it; nothing in the library does
};

}  // namespace NS_CORBA
