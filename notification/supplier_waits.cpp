#include "notification/supplier_waits.h"

#include <ace/OS_NS_sys_time.h>

namespace NS_CORBA {

namespace {

void WaitForEvent(ACE_Event& event, const ACE_Time_Value& timeout) {
    event.wait(&timeout, 0);
}

ACE_Time_Value TimeOfDay() {
    return ACE_OS::gettimeofday();
}

}  // namespace

SupplierWaits g_supplierWaits{WaitForEvent, TimeOfDay};

}  // namespace NS_CORBA
