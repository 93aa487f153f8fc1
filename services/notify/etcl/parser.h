#pragma once

#include <memory>
#include <string_view>

#include "services/notify/etcl/syntax_tree.h"

namespace qv_notify::etcl {

/// The tree of a constraint's text; null when it holds blanks only. Throws ConstraintError.
std::unique_ptr<const Expression> ParseConstraint(std::string_view text);

}  // namespace qv_notify::etcl
