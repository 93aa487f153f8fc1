// Slots of requests and threads, and PortableInterceptor::Current over them (CORBA 3.0, 21.4).
#pragma once

#include <vector>

#include "qv_orb/orb_initializer.h"

namespace qv_orb {

/// The values of all slots in one scope. Used by one thread at a time.
class SlotTable {
  public:
    /// A copy that the caller deletes; of kind tk_null while nothing was set. Raises InvalidSlot.
    CORBA::Any* Get(PortableInterceptor::SlotId id) const;
    /// Raises InvalidSlot.
    void Set(PortableInterceptor::SlotId id, const CORBA::Any& data);

  private:
    std::vector<CORBA::Any> values_;  // only as long as the highest slot that was set
};

/// Makes `table` the calling thread's slots for the guard's lifetime. Nests.
class SlotScope {
  public:
    explicit SlotScope(SlotTable& table);
    ~SlotScope();
    SlotScope(const SlotScope&) = delete;
    SlotScope& operator=(const SlotScope&) = delete;

  private:
    SlotTable* const outer_;
};

/// The local object behind the initial reference "PICurrent".
class PICurrent final : public virtual PortableInterceptor::Current {
  public:
    CORBA::Any* get_slot(PortableInterceptor::SlotId id) override;
    void set_slot(PortableInterceptor::SlotId id, const CORBA::Any& data) override;
};

}  // namespace qv_orb
