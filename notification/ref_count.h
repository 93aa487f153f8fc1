#pragma once

#include "logging/corbalogutil.h"
#include "platform/export.h"

namespace NS_CORBA {

/// A servant whose birth and death leave a trace in the log. The count is the servant's own: give it up by
/// _remove_ref(), never by delete. As thread-safe as T.
template <class T>
class QV_API RefCount : public T {
  public:
    RefCount() {
        TA_POS;
        TaDebug(3, "[ RefCount]  ref_count!");
    }

    ~RefCount() override {
        TA_POS;
        TaDebug(3, "[ ~RefCount]  Reference count associated object destroyed!");
    }
};

}  // namespace NS_CORBA
