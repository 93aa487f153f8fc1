#include "agent/corbabaseagentconfig.h"
#include "logging/corbalogutil.h"
#include "notification/alarm_record.h"
#include "notification/event_buffer.h"
#include "notification/event_data.h"
#include "notification/event_types.h"
#include "notification/ref_count.h"
#include "notification/sent_event_log.h"
#include "notification/supplier.h"
#include "notification/supplier_impl.h"
#include "notification/supplier_waits.h"
#include "time/timechange.h"

namespace NS_CORBA {

namespace {

constexpr int kMostWaits = 4;  // seconds that a pusher gives the supplier threads after an outage

/// Writes the record of an event that was sent within `disposalTime` milliseconds.
void LogPushed(CosNotification::StructuredEvent& event, long disposalTime, SuppilerMgr& manager) {
    if (!IsOfType(event, kAlarm)) {
        LogSentEvent(event);
        return;
    }
    std::stringstream record;
    AppendAlarmRecord(record, AlarmRecordForm::kPushed, disposalTime, event, manager);
    TA_POS;
    TaWriteAlarmNotifyLog(record);
}

}  // namespace

// Both flags are read as they stand: of several pushers that come right after an outage each waits on its
// own.
void SuppilerMgr::waitForSVCProcess() {
    if (m_bChannelWasBroken == m_bChannelBroken) {
        return;
    }
    if (m_bChannelWasBroken) {
        ACE_Event pause;  // never signalled
        TA_POS;
        TaTrace("[SuppilerMgr::waitForSVCProcess] enter");
        for (int count = 0; count < kMostWaits && !IsBufEmpty(); ++count) {
            TA_POS;
            TaTrace("[SuppilerMgr::waitForSVCProcess] waitting: %d", count);
            WaitFor(pause, 1);
        }
    }
    m_bChannelWasBroken = m_bChannelBroken.load();
    TA_POS;
    TaTrace("[SuppilerMgr::waitForSVCProcess] exit");
}

int SuppilerMgr::PushEvent(CosNotification::StructuredEvent& event) {
    waitForSVCProcess();
    if (!IsRegistered(TypeName(event))) {
        return 0;
    }
    if (event.filterable_data.length() == 0) {
        TA_POS;
        TaDebugWithPara(1, "[SuppilerMgr::PushEvent]: invalid event filterable_data will be discarded");
        return -1;
    }
    std::string notificationId;
    FillEvent(event, notificationId);

    EventBufferGuard guard;
    if (!InService()) {
        HoldBack(event);
        return -1;
    }
    static const bool bSingleThreadPushEvent = CorbaBaseAgentConfig::Instance()->IsSingleThreadPushEvent();
    if (!bSingleThreadPushEvent) {
        guard.Release();
    }
    const ACE_Time_Value start = g_supplierWaits.now();
    const int result = m_pSuppilerImpl->do_push(event);
    const long disposalTime = MillisecondsSince(start);
    guard.Release();
    if (result != 0) {
        guard.Take();
        PushFailed(event, notificationId);
        return -1;
    }
    LogPushed(event, disposalTime, *this);
    return 0;
}

void SuppilerMgr::HoldBack(const CosNotification::StructuredEvent& event) {
    if (!IsOfType(event, kHeartBeat)) {
        BufferOrDiscard(event);
    }
}

void SuppilerMgr::BufferOrDiscard(const CosNotification::StructuredEvent& event) {
    TA_POS;
    if (m_eventBuffer.size() < CorbaBaseAgentConfig::Instance()->EventQueueLength()) {
        m_eventBuffer.push_back(event);
        TaTrace(
            "[SuppilerMgr::PushEvent] Warning: The event channel is out of service, one event was buffered!");
    } else {
        TaTrace(
            "[SuppilerMgr::PushEvent] Warning: The buffer for notification event is overflowed, one event "
            "was "
            "discarded!");
    }
}

void SuppilerMgr::PushFailed(const CosNotification::StructuredEvent& event,
                             const std::string& notificationId) {
    m_bChannelBroken = true;
    BufferOrDiscard(event);
    EventLossOccurred(TimeChange::getTime(), notificationId);
    TA_POS;
    TaTrace("[SuppilerMgr::PushEvent] CORBA Notification Service: Event Loss Occurred!");
}

}  // namespace NS_CORBA
