#pragma once

#include <cstdint>

namespace qv_notify::etcl {

/// A number of an expression: an integer of up to 64 bits with or without sign, or a floating point number.
///
/// A float component stays `single`, and a literal is `weak`: beside a float it takes the float's precision
/// instead of revealing what the float lost of its digits.
class Number {
  public:
    __extension__ using Wide = __int128;  // holds all signed and unsigned 64 bit integers

    Number() = default;
    static Number Of(std::int64_t value) { return Number(static_cast<Wide>(value)); }
    static Number OfUnsigned(std::uint64_t value) { return Number(static_cast<Wide>(value)); }
    static Number OfReal(double value);
    static Number OfSingle(float value);
    /// The same number as a literal.
    Number Weak() const;

    bool IsWhole() const { return m_whole; }
    /// Only of whole numbers.
    Wide Whole() const { return m_integer; }
    double Real() const { return m_whole ? static_cast<double>(m_integer) : m_real; }

    Number operator-() const;
    friend Number operator+(const Number& a, const Number& b);
    friend Number operator-(const Number& a, const Number& b);
    friend Number operator*(const Number& a, const Number& b);
    /// Sets `quotient`; false when the divisor is 0.
    static bool Divide(const Number& a, const Number& b, Number& quotient);

    friend bool operator==(const Number& a, const Number& b);
    friend bool operator<(const Number& a, const Number& b);
    /// Both are false for "not a number".
    friend bool operator<=(const Number& a, const Number& b);

  private:
    explicit Number(Wide value) : m_integer(value) {}

    static Number Exact(Wide value);
    static Number RealResult(double value, const Number& a, const Number& b);
    static bool SinglePrecision(const Number& a, const Number& b);
    template <class Compare>
    static bool CompareReal(const Number& a, const Number& b, Compare compare);

    Wide m_integer = 0;
    double m_real = 0;
    bool m_whole = true;
    bool m_single = false;
    bool m_weak = false;
};

}  // namespace qv_notify::etcl
