// The input is a constraint's text. It is refused with a column inside of it, or gives the same answer each
// time and never TRUE together with its negation.

#include "services/notify/etcl/constraint.h"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "rich_event.h"

namespace {

using qv_notify::etcl::Constraint;
using qv_notify::etcl::ConstraintError;

void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

std::shared_ptr<const Constraint> Parse(const std::string& text) {
    try {
        return Constraint::Parse(text, [] { return TimeBase::TimeT{6000}; });
    } catch (const ConstraintError& error) {
        Require(error.column() >= 1 && error.column() <= text.size() + 1);
        return nullptr;
    }
}

template <class Event>
void Check(const Constraint& constraint, const Constraint* negation, const Event& event) {
    const bool matches = constraint.Matches(event);
    Require(constraint.Matches(event) == matches);
    Require(negation == nullptr || !matches || !negation->Matches(event));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const auto* const event = new CosNotification::StructuredEvent(qv_test::RichEvent());
    static const auto* const in_any = [] {
        auto* const any = new CORBA::Any;
        *any <<= *event;
        return any;
    }();
    const std::string text(data, data + size);
    const auto constraint = Parse(text);
    if (constraint == nullptr) {
        return 0;
    }
    Require(constraint->Text() == text);
    const auto negation = Parse("not (" + text + ")");  // none for an empty text and at the limits
    Check(*constraint, negation.get(), *event);
    Check(*constraint, negation.get(), event->filterable_data);
    Check(*constraint, negation.get(), event->remainder_of_body);
    Check(*constraint, negation.get(), *in_any);
    return 0;
}
