#pragma once

#include <ace/Event.h>
#include <ace/Task.h>
#include <ace/Thread_Mutex.h>
#include <orbsvcs/CosNotifyChannelAdminC.h>

#include <atomic>
#include <cstdint>
#include <deque>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "notification/call_back_obj.h"
#include "notification/event_customize_handle.h"
#include "platform/export.h"

namespace NS_CORBA {

class SuppilerImpl;
template <class T>
class RefCount;

/// The front door of the notification pipeline: sends an agent's events into the channel, holds them back
/// while the channel is out of service, and gets it into service again.
///
/// A bundle's order: Init of the configuration, Instance(), m_pCallBackObj, open(), NotifyServiceInit(); then
/// events from any thread and check_channel_valid() from a timer; ExitThread() before the ORB goes. The
/// channel counts as broken until NotifyServiceInit() has succeeded. One source file per group of operations
/// below.
///
/// Thread safety: every operation may be called from any thread, but for open(), ExitThread() and the
/// destructor, which belong to one thread of the bundle, and ConnectChannel(), which must not run beside
/// another or beside what rebuilds the channel: NotifyServiceInit() and check_channel_valid(). The buffer,
/// and with single-thread pushing each push, is guarded by one lock that is not recursive: what a callback
/// must not do stands with CallBackObj.
class QV_API SuppilerMgr : public ACE_Task_Base {
  public:
    // -- Construction, threads, types and buffer: supplier.cpp ----------------------------------------------

    /// Needs the agent's root POA. One manager per process: Instance().
    SuppilerMgr();
    /// Gives up the servant, which dies when the ORB lets go of it too. The threads must have ended.
    ~SuppilerMgr() override;

    /// The only instance, made by the first call. Null only when the creation lock can't be taken.
    static SuppilerMgr* Instance();
    /// Traces and does nothing else: the instance lives as long as the process.
    static void Destroy();

    /// Starts the two supplier threads. 0, 1 when they run already, -1 when they can't be started.
    int open(void* args = nullptr) override;
    /// Does nothing. Always 0.
    int close(u_long flags = 0) override;
    /// What a supplier thread runs, see supplier_thread.cpp. Always 0.
    int svc() override;

    /// Lets events of `type` pass, or no longer, until NotifyServiceInit sets the types anew. Always 0.
    /// @{
    int regist(std::string type);
    int unRegist(std::string type);
    /// @}

    /// A new reference to the channel in use, which the caller releases; nil before NotifyServiceInit.
    CosNotifyChannelAdmin::EventChannel_ptr getChannel();
    /// Is nothing held back? Waits for the buffer's lock.
    bool IsBufEmpty();

    // -- One event: push_event.cpp --------------------------------------------------------------------------

    /// Stamps `event` and sends it, or holds a copy back while the channel is out of service. After an outage
    /// it waits up to 4 seconds for the buffer to be emptied first. An alarm's text and the event go to the
    /// notification log; of a pulled file transfer the fifth filterable value is masked in `event` before.
    /// @return 0 when the event was sent, or its type isn't registered; -1 when it was buffered, was dropped
    ///         or has no filterable data: not to be pushed again either way
    /// @throws CORBA::BAD_PARAM for a pulled file transfer that has fewer than five filterable entries, after
    ///         it was sent; whatever the callback object raises
    int PushEvent(CosNotification::StructuredEvent& event);

    // -- Many events: push_batch.cpp ------------------------------------------------------------------------

    /// Pushes all `events` in order, stamping and masking them in place; with single-thread pushing 100 under
    /// one lock. What ExitThread overtakes is left untouched. Always 0; raises what PushEvent raises, leaving
    /// the rest of the events alone.
    int PushEvents(std::vector<CosNotification::StructuredEvent>& events);

    // -- Supervision and loss: channel_supervision.cpp ------------------------------------------------------

    /// One step of supervision, for the bundle's timer: makes a channel that is gone anew, takes one that
    /// survived an outage back into service at the third good check, and calls HeartBeating while the channel
    /// is in service. Always 0.
    /// @throws what the callback object raises, but for a CORBA exception while a channel is being checked:
    ///         that counts as a failed check
    int check_channel_valid();

    /// Announces a loss that the bundle noticed itself, with a new id.
    void NotifyEventLossOccurred();

    /// These pass the call on to the callback object; without one they trace that.
    /// @{
    void EventLossOccurred(const std::string& time, const std::string& notificationId);
    void EventLossCleared(const std::string& time);
    void HeartBeating();
    void StructuredEventToStr(std::stringstream& out, const CosNotification::StructuredEvent& event);
    /// @}

    // -- Connection: channel_connection.cpp -----------------------------------------------------------------

    /// Brings the channel into service: sets the registered types, makes or finds the channel, connects to it
    /// and offers the types. Pushers and supplier threads wait meanwhile. 0, or -1 with the channel broken.
    int NotifyServiceInit();
    /// Connects `supplier` to a proxy of `channel`; with a persistent channel to one that is there already.
    /// 0 or -1.
    int ConnectChannel(SuppilerImpl* supplier, CosNotifyChannelAdmin::EventChannel_ptr channel);
    /// Disconnects from the channel, takes the servant out of its POA and waits for the supplier threads.
    /// What the buffer holds stays unsent. 0; -1 after a CORBA exception, without having waited.
    int ExitThread();

    // -- Stamping: event_filling.cpp ------------------------------------------------------------------------

    /// Sets the "Timeout" of `event` and, but for alarms that bring their own, its notification id, which it
    /// also returns in `notificationId`. Always 0; CORBA::BAD_PARAM for an event without filterable data.
    int FillEvent(CosNotification::StructuredEvent& event, std::string& notificationId);
    /// Append "{name <name> value <value>}" to `out`, for the bundle's StructuredEventToStr.
    /// @{
    static void FormatLog(const std::string& name, const std::string& value, std::stringstream& out);
    static void FormatLog(const std::string& name, int value, std::stringstream& out);
    /// @}

    static SuppilerMgr* m_pInstance;  ///< what Instance() has made; null before

  private:
    friend class SuppilerMgrProbe;  // lets the unit tests see and set what nothing else shows

    /// Good checks after which a channel that survived an outage is back in service.
    static constexpr std::int32_t kGoodChecks = 3;
    enum class ChannelCheck { kDone, kUndecided, kRestored };
    using EventIterator = std::vector<CosNotification::StructuredEvent>::iterator;

    void waitForSVCProcess();
    bool IsRegistered(const char* type) const;
    void SetRegisteredTypes();
    void StoreChannel(CosNotifyChannelAdmin::EventChannel_ptr channel);
    bool InService() const { return !m_bChannelBroken && m_pSuppilerImpl != nullptr; }
    void HoldBack(const CosNotification::StructuredEvent& event);
    void BufferOrDiscard(const CosNotification::StructuredEvent& event);
    void PushFailed(const CosNotification::StructuredEvent& event, const std::string& notificationId);
    void PushBatch(EventIterator event, EventIterator end);
    void PushOfBatch(CosNotification::StructuredEvent& event, std::stringstream& alarms);
    bool MustExit();
    void DrainBuffer();
    bool PushFront();
    void DrainFailed(const CosNotification::StructuredEvent& event);
    ChannelCheck CheckChannel();
    void RenewChannel();
    void EnterService();
    int ConnectProxy(SuppilerImpl& supplier);
    bool OfferTypes();
    void DisconnectServant();

    std::set<std::string> m_setRegisteredTypes;
    RefCount<SuppilerImpl>* m_pSuppilerImpl;  // stays the same until the destructor
    CosNotifyChannelAdmin::EventChannel_var m_channel;
    CosNotifyChannelAdmin::SupplierAdmin_var m_supplierAdmin;
    std::atomic<bool> m_bChannelBroken{true};
    std::atomic<bool> m_bChannelWasBroken{true};  // m_bChannelBroken when a pusher last looked
    std::atomic<std::int32_t> m_nRestoreCount{kGoodChecks};
    ACE_Thread_Mutex m_mutex;  // never taken
    std::deque<CosNotification::StructuredEvent> m_eventBuffer;
    std::atomic<bool> m_bExit{false};
    ACE_Event m_wakeEvent;  // signalled by ExitThread only

  public:
    /// The bundle's callback object, not owned. To be set after Instance() and before the first event.
    CallBackObj* m_pCallBackObj = nullptr;
};

/// Puts a new notification id into `id`: ten digits for the moment of the process's start and a sequence
/// number. Unique within the process. Any thread.
QV_API void GetNotificationID(std::string& id);

/// Fills the event's domain ("tmf_mtnm") and type, and empties its name.
QV_API void fillFixedHeader(std::string typeName, CosNotification::StructuredEvent& event);

/// SuppilerMgr::Instance()->NotifyEventLossOccurred().
QV_API void NotifyEventLossOccurred();

}  // namespace NS_CORBA
