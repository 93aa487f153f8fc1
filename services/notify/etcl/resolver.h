#pragma once

#include "services/notify/etcl/component_path.h"
#include "services/notify/etcl/constraint.h"
#include "services/notify/etcl/place.h"

namespace qv_notify::etcl {

/// Leads `place` to a component of the event; false when the event has none. `steps` is how many of the
/// path's steps to take. Raises CORBA system exceptions for values that can't be read.
bool Resolve(const ComponentPath& path, std::size_t steps, const Event& event, const Clock& clock,
             Place& place);

inline bool Resolve(const ComponentPath& path, const Event& event, const Clock& clock, Place& place) {
    return Resolve(path, path.steps.size(), event, clock, place);
}

}  // namespace qv_notify::etcl
