#include "services/notify/etcl/constraint.h"

#include <chrono>
#include <utility>

#include "services/notify/etcl/evaluator.h"
#include "services/notify/etcl/parser.h"
#include "services/notify/etcl/standard_time.h"

namespace qv_notify::etcl {

namespace {

TimeBase::TimeT SystemTime() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return kSystemEpoch + static_cast<TimeBase::TimeT>(std::chrono::duration_cast<TimeUnits>(now).count());
}

}  // namespace

ConstraintError::ConstraintError(std::size_t column, const std::string& expectation)
    : std::runtime_error("Column " + std::to_string(column) + ": expected " + expectation + "."),
      m_column(column) {}

Constraint::Constraint(std::string text, std::unique_ptr<const Expression> expression, Clock clock)
    : m_text(std::move(text)), m_expression(std::move(expression)), m_clock(std::move(clock)) {}

Constraint::~Constraint() = default;

std::shared_ptr<const Constraint> Constraint::Parse(const std::string& text, Clock clock) {
    if (text.size() > kMaxText) {
        throw ConstraintError(
            kMaxText + 1, "the end, since a constraint has at most " + std::to_string(kMaxText) + " bytes");
    }
    if (!clock) {
        clock = SystemTime;
    }
    return std::shared_ptr<const Constraint>(new Constraint(text, ParseConstraint(text), std::move(clock)));
}

template <class Event>
bool Constraint::Evaluate(const Event& event) const {
    if (m_expression == nullptr) {
        return true;
    }
    try {
        const etcl::Event of = &event;
        bool value = false;
        return Evaluator(of, m_clock).Truth(*m_expression, value) && value;
    } catch (...) {  // bytes that are no value of their type, or no memory left
        return false;
    }
}

bool Constraint::Matches(const CosNotification::StructuredEvent& event) const {
    return Evaluate(event);
}

bool Constraint::Matches(const CosNotification::PropertySeq& properties) const {
    return Evaluate(properties);
}

bool Constraint::Matches(const CORBA::Any& value) const {
    return Evaluate(value);
}

}  // namespace qv_notify::etcl
