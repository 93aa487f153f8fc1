#include "services/notify/etcl/number.h"

#include <cmath>
#include <functional>
#include <limits>

namespace qv_notify::etcl {

namespace {

constexpr Number::Wide kLeast = std::numeric_limits<std::int64_t>::min();
constexpr Number::Wide kMost = std::numeric_limits<std::uint64_t>::max();

// A double is narrowed only where it fits: what is beyond a float's range is infinite.
float ToSingle(double value) {
    constexpr double kLargest = std::numeric_limits<float>::max();
    if (std::abs(value) <= kLargest || std::isnan(value)) {
        return static_cast<float>(value);
    }
    return std::copysign(std::numeric_limits<float>::infinity(),
                         static_cast<float>(std::copysign(1.0, value)));
}

}  // namespace

Number Number::OfReal(double value) {
    Number number;
    number.m_whole = false;
    number.m_real = value;
    return number;
}

Number Number::OfSingle(float value) {
    Number number = OfReal(static_cast<double>(value));
    number.m_single = true;
    return number;
}

Number Number::Weak() const {
    Number number = *this;
    number.m_weak = true;
    return number;
}

/// An integer while 64 bits hold it.
Number Number::Exact(Wide value) {
    return value >= kLeast && value <= kMost ? Number(value) : OfReal(static_cast<double>(value));
}

bool Number::SinglePrecision(const Number& a, const Number& b) {
    return (a.m_single && (b.m_single || b.m_whole || b.m_weak)) ||
           (b.m_single && (a.m_single || a.m_whole || a.m_weak));
}

Number Number::RealResult(double value, const Number& a, const Number& b) {
    Number number = SinglePrecision(a, b) ? OfSingle(ToSingle(value)) : OfReal(value);
    number.m_weak = a.m_weak && b.m_weak;
    return number;
}

Number Number::operator-() const {
    Number number = m_whole ? Exact(-m_integer) : OfReal(-m_real);
    number.m_single = m_single;
    number.m_weak = m_weak;
    return number;
}

Number operator+(const Number& a, const Number& b) {
    if (a.m_whole && b.m_whole) {
        return Number::Exact(a.m_integer + b.m_integer);
    }
    return Number::RealResult(a.Real() + b.Real(), a, b);
}

Number operator-(const Number& a, const Number& b) {
    if (a.m_whole && b.m_whole) {
        return Number::Exact(a.m_integer - b.m_integer);
    }
    return Number::RealResult(a.Real() - b.Real(), a, b);
}

Number operator*(const Number& a, const Number& b) {
    const double product = a.Real() * b.Real();
    // Twice what 64 bits hold, far from what the wide type holds.
    constexpr double kSurelyTooLarge = 4e19;
    if (a.m_whole && b.m_whole && std::abs(product) < kSurelyTooLarge) {
        return Number::Exact(a.m_integer * b.m_integer);
    }
    return Number::RealResult(product, a, b);
}

bool Number::Divide(const Number& a, const Number& b, Number& quotient) {
    if (b.Real() == 0) {
        return false;
    }
    quotient =
        a.m_whole && b.m_whole ? Exact(a.m_integer / b.m_integer) : RealResult(a.Real() / b.Real(), a, b);
    return true;
}

template <class Compare>
bool Number::CompareReal(const Number& a, const Number& b, Compare compare) {
    if (SinglePrecision(a, b)) {
        return compare(static_cast<double>(ToSingle(a.Real())), static_cast<double>(ToSingle(b.Real())));
    }
    return compare(a.Real(), b.Real());
}

bool operator==(const Number& a, const Number& b) {
    return a.m_whole && b.m_whole ? a.m_integer == b.m_integer : Number::CompareReal(a, b, std::equal_to<>());
}

bool operator<(const Number& a, const Number& b) {
    return a.m_whole && b.m_whole ? a.m_integer < b.m_integer : Number::CompareReal(a, b, std::less<>());
}

bool operator<=(const Number& a, const Number& b) {
    return a.m_whole && b.m_whole ? a.m_integer <= b.m_integer
                                  : Number::CompareReal(a, b, std::less_equal<>());
}

}  // namespace qv_notify::etcl
