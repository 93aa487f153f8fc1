// Constraints of filter objects: expressions over an event, in the grammar that the Notification Service
// calls EXTENDED_TCL.
//
// The language
// ------------
//   constraint  empty, or an expression that gives TRUE or FALSE
//   or, and     evaluated from the left and only as far as needed
//   == != < <= > >=   two operands, not to be chained
//   'a' ~ x     the text 'a' is contained in x
//   x in $list  x equals an element of a sequence or array
//   + - * /     numbers
//   not         binds tighter than the arithmetic: `not $a == 1` is `(not $a) == 1`
//   - +         sign of what follows
//   exist $x    whether the component is there
//   default $x._d    whether a union's default member is active
//   ( )
// from the weakest to the tightest: or; and; comparison; in; ~; + and -; * and /; not; sign, exist, default.
//
// Operands are numbers (12, 1.5, .5, 2e-3), texts ('it\'s', with \' and \\ as the only escapes), TRUE and
// FALSE, components, and bare names, which are enumerators and are compared with a component of an enum type.
// `exist` and the right side of `in` take a bare name as well; there it is short for $name. A keyword can be
// used as a name with a backslash ahead of it: $.\default.
//
// Components
// ----------
//   $                      the event itself
//   $.member  $.0          a member of a structure, by its name or its place, counted from 0
//   $.list[2]              an element, counted from 0
//   $.list(name)           the value of the first name-value pair of that name; (\in) and ('any text') for
//   names
//                          that are no identifiers
//   $.u.(1) $.u.(+1) $.u.(-1) $.u.('x') $.u.()   the member of a union, if it is the active one: by the
//                          discriminator's value, by its enumerator or character or the member's name, or the
//                          default member
//   ._length  ._d          number of elements; discriminator of a union
//   ._type_id ._repos_id   unscoped name and repository id of the type; a component of a basic type has none
//   $name                  the first that is there of:
//                            1. $curtime, the time of the evaluation in units of 100 ns since 15 October
//                            1582,
//                               which can be compared with numbers and with TimeBase::UtcT;
//                               $domain_name, $type_name, $event_name: those of the fixed header
//                            2. $.header.fixed_header.name
//                            3. $.header.variable_header(name)
//                            4. $.filterable_data(name)
//                            5. $.name, for a property list $(name)
// Anys are unwrapped, however deep they are nested, and aliases resolved.
//
// Values
// ------
// Integers of all kinds and octets are compared and added exactly; results beyond 64 bits become floating
// point numbers. A quotient of integers is an integer. With a floating point operand the operation is one of
// floating point; a float beside a literal makes it one of single precision, so that a float 0.1 equals 0.1.
// TRUE and FALSE count as 1 and 0 beside a number. Enumerators are ordered as they are declared, and count as
// that place, from 0, beside a number. A char is a text of one character; wide texts are compared as UTF-8.
//
// What can't be evaluated (a component that is not there, operands that don't go together, a division by 0,
// an enumerator that the type doesn't have) makes the whole constraint not match, also below `not`. What
// `and` and `or` leave out is not evaluated: `exist $.a and $.a > 1`.
#pragma once

#include <orbsvcs/CosNotificationC.h>
#include <tao/TimeBaseC.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

namespace qv_notify::etcl {

/// A text that is no constraint. what() is a sentence that says at which column what was expected.
class ConstraintError : public std::runtime_error {
  public:
    ConstraintError(std::size_t column, const std::string& expectation);

    /// Where in the text, in bytes, counted from 1; one behind the end for what is missing there.
    std::size_t column() const noexcept { return m_column; }

  private:
    std::size_t m_column;
};

/// The time for $curtime, in units of 100 ns since 15 October 1582. Called by any thread that evaluates.
using Clock = std::function<TimeBase::TimeT()>;

struct Expression;

/// One constraint, read once and evaluated for each event. Never changes, so any thread may evaluate it, and
/// several at once. Evaluation does not change the event, which the caller keeps from changing meanwhile;
/// only an Any that was filled in this process and has never been sent is brought into its wire form by the
/// first evaluation, so one thread has to have evaluated such an event before several may.
class Constraint {
  public:
    /// Longest text in bytes.
    static constexpr std::size_t kMaxText = 64 * 1024;
    /// How deep parentheses may be nested.
    static constexpr unsigned kMaxNesting = 200;

    /// The constraint that `text` spells. Throws ConstraintError when it is none, or beyond the limits above.
    /// An empty text, and one of blanks only, is TRUE.
    /// @param clock for $curtime; the system's clock when empty
    static std::shared_ptr<const Constraint> Parse(const std::string& text, Clock clock = {});

    ~Constraint();
    Constraint(const Constraint&) = delete;
    Constraint& operator=(const Constraint&) = delete;

    /// Whether the constraint is TRUE for this event. Never throws: an evaluation that can't be done is no
    /// match.
    bool Matches(const CosNotification::StructuredEvent& event) const;

    /// The same for a typed event, whose parts are the properties $name or $(name).
    bool Matches(const CosNotification::PropertySeq& properties) const;

    /// The same for an untyped event, whose value is $. One that holds a structured event is treated like it.
    bool Matches(const CORBA::Any& value) const;

    /// The text that it was made from.
    const std::string& Text() const { return m_text; }

  private:
    Constraint(std::string text, std::unique_ptr<const Expression> expression, Clock clock);

    template <class Event>
    bool Evaluate(const Event& event) const;

    const std::string m_text;
    const std::unique_ptr<const Expression> m_expression;  // null for an empty text
    const Clock m_clock;
};

}  // namespace qv_notify::etcl
