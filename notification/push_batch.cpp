#include <algorithm>

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

namespace NS_CORBA {

namespace {

constexpr std::ptrdiff_t kEventsPerBatch = 100;

/// Also for a stream that has failed after some text.
bool HoldsText(const std::stringstream& stream) {
    return stream.rdbuf()->in_avail() > 0;
}

}  // namespace

int SuppilerMgr::PushEvents(std::vector<CosNotification::StructuredEvent>& events) {
    static const bool bSingleThreadPushEvent = CorbaBaseAgentConfig::Instance()->IsSingleThreadPushEvent();
    if (!bSingleThreadPushEvent) {
        for (CosNotification::StructuredEvent& event : events) {
            PushEvent(event);
        }
        return 0;
    }
    waitForSVCProcess();
    for (EventIterator first = events.begin(); first != events.end() && !m_bExit;) {
        const EventIterator end = first + std::min(kEventsPerBatch, events.end() - first);
        PushBatch(first, end);
        first = end;
    }
    return 0;
}

// The lock is held to the end of the batch, its log records included.
void SuppilerMgr::PushBatch(EventIterator event, EventIterator end) {
    std::stringstream alarms;
    const EventBufferGuard guard;
    for (; event != end; ++event) {
        PushOfBatch(*event, alarms);
        if (m_bExit) {
            break;
        }
    }
    if (HoldsText(alarms)) {
        TA_POS;
        TaWriteAlarmNotifyLog(alarms);
    }
}

void SuppilerMgr::PushOfBatch(CosNotification::StructuredEvent& event, std::stringstream& alarms) {
    const ACE_Time_Value start = g_supplierWaits.now();
    if (!IsRegistered(TypeName(event))) {
        return;
    }
    if (event.filterable_data.length() == 0) {
        TA_POS;
        TaDebugWithPara(1,
                        "[SuppilerMgr::PushEventForBatch]: invalid event filterable_data will be discarded");
        return;
    }
    std::string notificationId;
    FillEvent(event, notificationId);
    if (!InService()) {
        HoldBack(event);
    } else if (m_pSuppilerImpl->do_push(event) != 0) {
        PushFailed(event, notificationId);
    } else if (IsOfType(event, kAlarm)) {
        AppendAlarmRecord(alarms, AlarmRecordForm::kBatch, MillisecondsSince(start), event, *this);
    } else {
        LogSentEvent(event);
    }
}

}  // namespace NS_CORBA
