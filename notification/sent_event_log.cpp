#include "notification/sent_event_log.h"

#include "logging/corbalogutil.h"
#include "notification/event_data.h"
#include "notification/event_types.h"

namespace NS_CORBA {

namespace {

constexpr CORBA::ULong kSecretEntry = 4;

void MaskSecret(CosNotification::StructuredEvent& event) {
    if (event.filterable_data.length() <= kSecretEntry) {
        throw CORBA::BAD_PARAM();
    }
    event.filterable_data[kSecretEntry].value <<= "******";
}

}  // namespace

void LogSentEvent(CosNotification::StructuredEvent& event) {
    if (IsOfType(event, kPulledFileTransfer)) {
        MaskSecret(event);
    }
    TA_POS;
    TaWriteNotifyLog(event);
}

}  // namespace NS_CORBA
