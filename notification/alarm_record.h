#pragma once

#include <orbsvcs/CosNotificationC.h>

#include <sstream>

#include "notification/internal_api.h"

namespace NS_CORBA {

class SuppilerMgr;

/// Who sent the alarm. The records differ, and readers of the log tell the road of an alarm by it.
enum class AlarmRecordForm {
    kPushed,   ///< PushEvent: no send time; an id that can't be read is empty
    kDrained,  ///< a supplier thread: no line end; an id that can't be read is "Invalid Id"
    kBatch,    ///< PushEvents: an id that can't be read breaks the stream
};

/// Appends the notification log's record of an alarm that was sent. Its text comes from `manager`'s callback
/// object.
/// @param disposalTime milliseconds
QV_INTERNAL_API void AppendAlarmRecord(std::stringstream& out, AlarmRecordForm form, long disposalTime,
                                       const CosNotification::StructuredEvent& event, SuppilerMgr& manager);

}  // namespace NS_CORBA
