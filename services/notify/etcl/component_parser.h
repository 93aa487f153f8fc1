#pragma once

#include "services/notify/etcl/component_path.h"
#include "services/notify/etcl/lexer.h"

namespace qv_notify::etcl {

/// Reads a component from behind its '$' up to what can't belong to it. Throws ConstraintError.
ComponentPath ParseComponent(Lexer& lexer);

/// The component that `$name` is.
ComponentPath PathOfName(std::string name);

}  // namespace qv_notify::etcl
