#include "events.h"

#include <agent/corbabaseagentconfig.h>
#include <notification/supplier.h>

#include <chrono>
#include <iostream>

using NS_CORBA::SuppilerMgr;

bool Events::Start() {
    SuppilerMgr* const supplier = SuppilerMgr::Instance();
    supplier->m_pCallBackObj = this;
    if (supplier->open() == -1) {
        return false;
    }
    if (supplier->NotifyServiceInit() != 0) {
        std::cout << "the event channel can't be reached yet" << std::endl;
    }
    stop_ = false;
    supervisor_ = std::thread([this] { LookAfterChannel(); });
    return true;
}

void Events::LookAfterChannel() {
    const std::chrono::seconds interval(NS_CORBA::CorbaBaseAgentConfig::Instance()->TimeInterval());
    std::unique_lock<std::mutex> lock(mutex_);
    while (!changed_.wait_for(lock, interval, [this] { return stop_; })) {
        lock.unlock();
        SuppilerMgr::Instance()->check_channel_valid();
        lock.lock();
    }
}

void Events::Stop() {
    {
        const std::lock_guard<std::mutex> guard(mutex_);
        if (stop_) {
            return;
        }
        stop_ = true;
    }
    changed_.notify_all();
    supervisor_.join();
    SuppilerMgr::Instance()->ExitThread();
}

void Events::SendAlarm(const std::string& station, const std::string& text) {
    CosNotification::StructuredEvent event;
    NS_CORBA::fillFixedHeader("NT_ALARM", event);
    event.filterable_data.length(3);
    event.filterable_data[0].name = "notificationId";  // the library sets its value
    event.filterable_data[1].name = "objectName";
    event.filterable_data[1].value <<= station.c_str();
    event.filterable_data[2].name = "additionalText";
    event.filterable_data[2].value <<= text.c_str();
    SuppilerMgr::Instance()->PushEvent(event);
}

void Events::EventLossOccurred(const std::string& time, const std::string& notification_id) {
    if (!lost_.exchange(true)) {  // it comes again for each try
        std::cout << "events are held back since " << time << ", first " << notification_id << std::endl;
    }
}

void Events::EventLossCleared(const std::string& time) {
    if (lost_.exchange(false)) {  // it comes after a start, too
        std::cout << "events are sent again since " << time << std::endl;
    }
}

void Events::StructuredEventToStr(std::stringstream& out, const CosNotification::StructuredEvent& event) {
    for (CORBA::ULong i = 0; i < event.filterable_data.length(); ++i) {
        const char* value = "";
        event.filterable_data[i].value >>= value;
        SuppilerMgr::FormatLog(event.filterable_data[i].name.in(), value, out);
    }
}
