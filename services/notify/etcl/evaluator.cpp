#include "services/notify/etcl/evaluator.h"

#include "services/notify/etcl/resolver.h"

namespace qv_notify::etcl {

namespace {

using Kind = Expression::Kind;

bool Calculate(const Number& left, Operator by, const Number& right, Number& result) {
    switch (by) {
        case Operator::kPlus:
            result = left + right;
            return true;
        case Operator::kMinus:
            result = left - right;
            return true;
        case Operator::kTimes:
            result = left * right;
            return true;
        case Operator::kDivide:
            return Number::Divide(left, right, result);
        default:
            return false;
    }
}

const Expression& OperandOf(const Expression& expression, std::size_t index) {
    return *expression.operands[index].expression;
}

}  // namespace

bool Evaluator::Truth(const Expression& expression, bool& value) const {
    switch (expression.kind) {
        case Kind::kOr:
            return Logical(expression, true, value);
        case Kind::kAnd:
            return Logical(expression, false, value);
        case Kind::kCompare:
            return Comparison(expression, value);
        case Kind::kIn:
            return Containment(expression, value);
        case Kind::kSubstring:
            return Substring(expression, value);
        case Kind::kNot:
            if (!Truth(OperandOf(expression, 0), value)) {
                return false;
            }
            value = !value;
            return true;
        case Kind::kExist: {
            Place place;
            value = Resolve(expression.path, m_event, m_clock, place);
            return true;
        }
        case Kind::kDefault:
            return Default(expression, value);
        case Kind::kBoolean:
            value = expression.flag;
            return true;
        case Kind::kComponent: {
            Operand operand;
            if (!Component(expression, operand) || operand.scalar.kind != Scalar::Kind::kBoolean) {
                return false;
            }
            value = operand.scalar.flag;
            return true;
        }
        default:
            return false;
    }
}

/// `decisive` is the value of an operand behind which nothing matters any more.
bool Evaluator::Logical(const Expression& expression, bool decisive, bool& value) const {
    for (const Expression::Operand& operand : expression.operands) {
        if (!Truth(*operand.expression, value)) {
            return false;
        }
        if (value == decisive) {
            return true;
        }
    }
    return true;
}

bool Evaluator::Comparison(const Expression& expression, bool& value) const {
    Operand left;
    Operand right;
    return Value(OperandOf(expression, 0), left) && Value(OperandOf(expression, 1), right) &&
           Compare(left.scalar, expression.operands[1].before, right.scalar, value);
}

bool Evaluator::Containment(const Expression& expression, bool& value) const {
    Operand element;
    Place place;
    if (!Value(OperandOf(expression, 0), element) || !Resolve(expression.path, m_event, m_clock, place)) {
        return false;
    }
    auto* const list = std::get_if<ValuePlace>(&place.node());
    std::uint32_t count = 0;
    ValuePlace next;
    if (list == nullptr || !list->Elements(count, next)) {
        return false;
    }
    value = false;
    for (std::uint32_t i = 0; i < count; ++i) {
        if (i != 0) {
            next.ToNextElement();
        }
        // Of a list of Anys some may be of types that have nothing to do with the operand's.
        Scalar other;
        if (ReadScalar(next, other) && Compare(element.scalar, Operator::kEqual, other, value) && value) {
            return true;
        }
        value = false;
    }
    return true;
}

bool Evaluator::Substring(const Expression& expression, bool& value) const {
    Operand part;
    Operand whole;
    if (!Value(OperandOf(expression, 0), part) || !Value(OperandOf(expression, 1), whole) ||
        part.scalar.kind != Scalar::Kind::kText || whole.scalar.kind != Scalar::Kind::kText) {
        return false;
    }
    value = whole.scalar.text.find(part.scalar.text) != std::string_view::npos;
    return true;
}

bool Evaluator::Default(const Expression& expression, bool& value) const {
    Place place;
    return Resolve(expression.path, expression.path.steps.size() - 1, m_event, m_clock, place) &&
           place.DefaultIsActive(value);
}

bool Evaluator::Component(const Expression& expression, Operand& operand) const {
    return Resolve(expression.path, m_event, m_clock, operand.place) &&
           ReadScalar(operand.place, operand.scalar);
}

bool Evaluator::NumericValue(const Expression& expression, Number& number) const {
    Operand operand;
    return Value(expression, operand) && NumberOf(operand.scalar, number);
}

bool Evaluator::Calculation(const Expression& expression, Scalar& scalar) const {
    Number result;
    if (!NumericValue(OperandOf(expression, 0), result)) {
        return false;
    }
    for (std::size_t i = 1; i < expression.operands.size(); ++i) {
        Number next;
        if (!NumericValue(OperandOf(expression, i), next) ||
            !Calculate(result, expression.operands[i].before, next, result)) {
            return false;
        }
    }
    scalar.SetNumber(expression.kind == Kind::kNegate ? -result : result);
    return true;
}

bool Evaluator::Value(const Expression& expression, Operand& operand) const {
    switch (expression.kind) {
        case Kind::kComponent:
            return Component(expression, operand);
        case Kind::kNumber:
            operand.scalar.SetNumber(expression.number);
            return true;
        case Kind::kText:
            operand.scalar.SetText(expression.text);
            return true;
        case Kind::kEnumerator:
            operand.scalar.kind = Scalar::Kind::kBareName;
            operand.scalar.text = expression.text;
            return true;
        case Kind::kSum:
        case Kind::kProduct:
        case Kind::kNegate:
        case Kind::kPlain:
            return Calculation(expression, operand.scalar);
        default: {
            bool truth = false;
            if (!Truth(expression, truth)) {
                return false;
            }
            operand.scalar.SetBoolean(truth);
            return true;
        }
    }
}

}  // namespace qv_notify::etcl
