#pragma once

#include "services/notify/etcl/constraint.h"
#include "services/notify/etcl/place.h"
#include "services/notify/etcl/scalar.h"
#include "services/notify/etcl/syntax_tree.h"

namespace qv_notify::etcl {

/// Evaluates expressions for one event. Every function returns false when the evaluation can't be done.
/// Raises CORBA system exceptions for values that can't be read. Used by one thread.
class Evaluator {
  public:
    Evaluator(const Event& event, const Clock& clock) : m_event(event), m_clock(clock) {}

    /// The value of an expression that gives TRUE or FALSE.
    bool Truth(const Expression& expression, bool& value) const;

  private:
    /// A value and what it refers to.
    struct Operand {
        Place place;
        Scalar scalar;
    };

    bool Value(const Expression& expression, Operand& operand) const;
    bool Logical(const Expression& expression, bool decisive, bool& value) const;
    bool Comparison(const Expression& expression, bool& value) const;
    bool Containment(const Expression& expression, bool& value) const;
    bool Substring(const Expression& expression, bool& value) const;
    bool Default(const Expression& expression, bool& value) const;
    bool Component(const Expression& expression, Operand& operand) const;
    bool Calculation(const Expression& expression, Scalar& scalar) const;
    bool NumericValue(const Expression& expression, Number& number) const;

    const Event& m_event;
    const Clock& m_clock;
};

}  // namespace qv_notify::etcl
