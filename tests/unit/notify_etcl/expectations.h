#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>
#include <string>

#include "services/notify/etcl/constraint.h"

namespace qv_test {

/// What the clock of the tests says.
constexpr TimeBase::TimeT kNow = 6000;

inline std::shared_ptr<const qv_notify::etcl::Constraint> ParseForTest(const std::string& text) {
    return qv_notify::etcl::Constraint::Parse(text, [] { return kNow; });
}

/// Each of the constraints is TRUE, or is no match, for the event.
template <class Event>
void ExpectMatches(bool expected, const Event& event, std::initializer_list<const char*> texts) {
    for (const char* const text : texts) {
        try {
            EXPECT_EQ(ParseForTest(text)->Matches(event), expected) << text;
        } catch (const qv_notify::etcl::ConstraintError& error) {
            ADD_FAILURE() << text << ": " << error.what();
        }
    }
}

/// Each constraint, and the one with `not` ahead of it, is no match: it can't be evaluated.
template <class Event>
void ExpectNoValue(const Event& event, std::initializer_list<const char*> texts) {
    for (const char* const text : texts) {
        ExpectMatches(false, event, {text});
        ExpectMatches(false, event, {("not (" + std::string(text) + ")").c_str()});
    }
}

}  // namespace qv_test
