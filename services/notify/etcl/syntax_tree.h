#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "services/notify/etcl/component_path.h"
#include "services/notify/etcl/number.h"

namespace qv_notify::etcl {

enum class Operator : std::uint8_t {
    kNone,
    kEqual,
    kNotEqual,
    kLess,
    kLessOrEqual,
    kGreater,
    kGreaterOrEqual,
    kPlus,
    kMinus,
    kTimes,
    kDivide,
};

/// A node of a constraint. A chain like a + b - c is one node with all its operands, so that only parentheses
/// make a tree deep.
struct Expression {
    enum class Kind : std::uint8_t {
        kOr,         ///< operands: two or more
        kAnd,        ///< operands: two or more
        kCompare,    ///< operands: two, the operator with the second
        kIn,         ///< operands: the element; path: the list
        kSubstring,  ///< operands: the part and the whole
        kSum,        ///< operands: two or more, each with its operator
        kProduct,    ///< operands: two or more, each with its operator
        kNot,        ///< operands: one
        kNegate,     ///< operands: one
        kPlain,      ///< operands: one, which is to be a number
        kExist,      ///< path
        kDefault,    ///< path, whose last step is the discriminator
        kComponent,  ///< path
        kNumber,
        kText,
        kBoolean,
        kEnumerator,  ///< text: the bare name
    };

    struct Operand {
        Operator before = Operator::kNone;
        std::unique_ptr<const Expression> expression;
    };

    explicit Expression(Kind of) : kind(of) {}

    const Kind kind;
    bool flag = false;
    Number number;
    std::string text;
    ComponentPath path;
    std::vector<Operand> operands;
};

}  // namespace qv_notify::etcl
