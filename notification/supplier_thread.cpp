#include "logging/corbalogutil.h"
#include "logging/quiet_log.h"
#include "notification/alarm_record.h"
#include "notification/event_buffer.h"
#include "notification/event_data.h"
#include "notification/event_types.h"
#include "notification/ref_count.h"
#include "notification/supplier.h"
#include "notification/supplier_impl.h"
#include "notification/supplier_waits.h"
#include "platform/bundle_mgr.h"
#include "time/timechange.h"

namespace NS_CORBA {

namespace {

constexpr time_t kWaitDuringOutage = 1;  // seconds
constexpr time_t kWaitInService = 2;

}  // namespace

int SuppilerMgr::svc() {
    for (;;) {
        WaitFor(m_wakeEvent, m_bChannelWasBroken || m_bChannelBroken ? kWaitDuringOutage : kWaitInService);
        if (MustExit()) {
            return 0;
        }
        try {
            DrainBuffer();
        } catch (...) {
            LogQuietly([] {
                TA_POS;
                TaTrace("[SuppilerMgr::svc] CORBA Notification Service: Event Loss Occurred!");
            });
        }
    }
}

bool SuppilerMgr::MustExit() {
    const EventBufferGuard guard;
    if (NS_BUNDLEMGR1::BundleMgr::Instance()->GetRunState() == NS_BUNDLEMGR1::BundleMgr::kStopping) {
        m_bExit = true;
    }
    return m_bExit;
}

// The buffer is tried during an outage too: a channel is found to be good again by pushing into it.
void SuppilerMgr::DrainBuffer() {
    const EventBufferGuard guard;
    while (!m_eventBuffer.empty() && PushFront()) {
        m_eventBuffer.pop_front();
    }
}

bool SuppilerMgr::PushFront() {
    const CosNotification::StructuredEvent& event = m_eventBuffer.front();
    const ACE_Time_Value start = g_supplierWaits.now();
    if (!m_pSuppilerImpl || m_pSuppilerImpl->do_push(event) != 0) {
        DrainFailed(event);
        return false;
    }
    if (IsOfType(event, kAlarm) && event.filterable_data.length() != 0) {
        std::stringstream record;
        AppendAlarmRecord(record, AlarmRecordForm::kDrained, MillisecondsSince(start), event, *this);
        TA_POS;
        TaWriteAlarmNotifyLog(record);
    } else {
        TA_POS;
        TaWriteNotifyLog(event);
    }
    return true;
}

void SuppilerMgr::DrainFailed(const CosNotification::StructuredEvent& event) {
    m_bChannelBroken = true;
    if (event.filterable_data.length() == 0) {
        TA_POS;
        TaTrace("[SuppilerMgr::PushEvent] CORBA Notification Service: Event Loss Occurred! - Empty filter.");
        return;
    }
    const char* const id = NotificationIdOf(event);
    if (!id) {
        TA_POS;
        TaTrace("[SuppilerMgr::PushEvent] CORBA Notification Service: Event Loss Occurred! - Invalid Id.");
        return;
    }
    EventLossOccurred(TimeChange::getTime(), id);
    TA_POS;
    TaTrace("[SuppilerMgr::PushEvent] CORBA Notification Service: Event Loss Occurred!");
}

}  // namespace NS_CORBA
