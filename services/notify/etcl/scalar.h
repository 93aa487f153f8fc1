#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "services/notify/etcl/number.h"
#include "services/notify/etcl/place.h"
#include "services/notify/etcl/syntax_tree.h"

namespace qv_notify::etcl {

/// An operand's value: what operators work on. Views refer to the event or to the constraint.
struct Scalar {
    enum class Kind : std::uint8_t {
        kNothing,
        kBoolean,
        kNumber,
        kText,
        kEnumerator,  ///< of a component: the number is its place in the type
        kBareName,    ///< of the constraint: an enumerator of a type that the other operand has
    };

    Kind kind = Kind::kNothing;
    bool flag = false;
    Number number;
    std::string_view text;
    std::string converted;             ///< what the text refers to, where it stands nowhere else
    const ValuePlace* type = nullptr;  ///< of an enumerator

    void SetBoolean(bool value);
    void SetNumber(const Number& value);
    void SetText(std::string_view value);
};

/// The value at a place. False where there is none that operators work on. The scalar refers to the place.
bool ReadScalar(ValuePlace& place, Scalar& scalar);
bool ReadScalar(Place& place, Scalar& scalar);

/// The operand as a number; false for texts and bare names.
bool NumberOf(const Scalar& scalar, Number& number);

/// Compares by one of the comparison operators. False when the two don't go together.
bool Compare(const Scalar& left, Operator comparison, const Scalar& right, bool& result);

}  // namespace qv_notify::etcl
