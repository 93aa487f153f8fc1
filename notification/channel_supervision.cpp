#include "logging/corbalogutil.h"
#include "notification/supplier.h"
#include "time/timechange.h"

namespace NS_CORBA {

int SuppilerMgr::check_channel_valid() {
    switch (CheckChannel()) {
        case ChannelCheck::kDone:
            return 0;
        case ChannelCheck::kUndecided:
            if (!m_bChannelBroken) {
                HeartBeating();
                return 0;
            }
            if (m_nRestoreCount != 0) {
                return 0;
            }
            break;
        case ChannelCheck::kRestored:
            break;
    }
    EnterService();
    TA_POS;
    TaTrace("[SuppilerMgr::check_channel_valid] EventChannel self-restored, Event loss status cleared!");
    return 0;
}

// What the callback object raises while a channel is being checked counts as a failed check too, but it is
// not asked for a second heartbeat then. Without a channel nothing is checked, and it passes.
SuppilerMgr::ChannelCheck SuppilerMgr::CheckChannel() {
    const CosNotifyChannelAdmin::EventChannel_var channel = getChannel();
    if (CORBA::is_nil(channel.in())) {
        RenewChannel();
        return ChannelCheck::kUndecided;
    }
    ChannelCheck undecided = ChannelCheck::kUndecided;
    try {
        if (channel->_non_existent()) {
            RenewChannel();
            return undecided;
        }
        if (m_bChannelBroken) {
            return --m_nRestoreCount == 0 ? ChannelCheck::kRestored : ChannelCheck::kDone;
        }
        m_nRestoreCount = kGoodChecks;
        // NOLINTNEXTLINE(clang-analyzer-deadcode.DeadStores): HeartBeating may raise
        undecided = ChannelCheck::kDone;
        HeartBeating();
        return ChannelCheck::kDone;
    } catch (CORBA::OBJECT_NOT_EXIST&) {
        RenewChannel();
    } catch (CORBA::Exception& ex) {
        TA_POS;
        TaException(ex, "[SuppilerMgr::check_channel_valid] Check EventChannel failed!");
    }
    return undecided;
}

void SuppilerMgr::RenewChannel() {
    TA_POS;
    TaTrace("[SuppilerMgr::check_channel_valid] EventChannel object not exist, System will create new one!");
    NotifyServiceInit();
}

void SuppilerMgr::EnterService() {
    m_bChannelBroken = false;
    m_nRestoreCount = kGoodChecks;
    EventLossCleared(TimeChange::getTime());
}

void SuppilerMgr::NotifyEventLossOccurred() {
    std::string id;
    GetNotificationID(id);
    EventLossOccurred(TimeChange::getTime(), id);
}

void NotifyEventLossOccurred() {
    SuppilerMgr::Instance()->NotifyEventLossOccurred();
}

void SuppilerMgr::EventLossOccurred(const std::string& time, const std::string& notificationId) {
    if (!m_pCallBackObj) {
        TA_POS;
        TaTrace("[SuppilerMgr::EventLossOccurred] CallBackObj is null");
        return;
    }
    m_pCallBackObj->EventLossOccurred(time, notificationId);
}

void SuppilerMgr::EventLossCleared(const std::string& time) {
    if (!m_pCallBackObj) {
        TA_POS;
        TaTrace("[SuppilerMgr::EventLossCleared] CallBackObj is null");
        return;
    }
    m_pCallBackObj->EventLossCleared(time);
}

void SuppilerMgr::HeartBeating() {
    if (!m_pCallBackObj) {
        TA_POS;
        TaTrace("[SuppilerMgr::HeartBeating] CallBackObj is null");
        return;
    }
    m_pCallBackObj->HeartBeating();
}

void SuppilerMgr::StructuredEventToStr(std::stringstream& out,
                                       const CosNotification::StructuredEvent& event) {
    if (!m_pCallBackObj) {
        TA_POS;
        TaTrace("[SuppilerMgr::StructuredEventToStr] CallBackObj is null");
        return;
    }
    m_pCallBackObj->StructuredEventToStr(out, event);
}

}  // namespace NS_CORBA
