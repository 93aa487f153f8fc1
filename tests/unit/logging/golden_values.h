#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "valuesC.h"

namespace qv_test {

/// A value and its text in a record. The texts were made by hand from the rules of the record.
struct GoldenText {
    const char* name;
    std::function<void(CORBA::Any&)> fill;
    std::string text;
};

inline std::ostream& operator<<(std::ostream& out, const GoldenText& golden) {
    return out << golden.name;
}

/// One for each kind of value.
const std::vector<GoldenText>& GoldenTexts();

Values::Point Point(CORBA::Long x, const char* label);
Values::Octets Octets(const std::string& bytes);

}  // namespace qv_test
