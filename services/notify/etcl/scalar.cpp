#include "services/notify/etcl/scalar.h"

#include <cmath>
#include <utility>

#include "services/notify/etcl/wide_text.h"

namespace qv_notify::etcl {

namespace {

constexpr std::string_view kTimeType = "IDL:omg.org/TimeBase/UtcT:1.0";

/// The value of the 16 bytes that CDR uses for a long double, as far as a double holds it.
double LongDouble(CdrReader reader) {
    std::uint64_t high = reader.ULongLong();  // sign, 15 bits of exponent and the first 48 of the fraction
    std::uint64_t low = reader.ULongLong();
    if (reader.LittleEndian()) {
        std::swap(low, high);
    }
    constexpr int kBias = 16383;
    constexpr int kLargestExponent = 0x7fff;
    constexpr int kFractionBits = 112;
    const int exponent = static_cast<int>((high >> 48) & kLargestExponent);
    const double fraction =
        std::ldexp(static_cast<double>(high & 0xffffffffffffU), 64) + static_cast<double>(low);
    double value = 0;
    if (exponent == kLargestExponent) {
        value = fraction == 0 ? HUGE_VAL : std::nan("");
    } else if (exponent == 0) {
        value = std::ldexp(fraction, 1 - kBias - kFractionBits);
    } else {
        value = std::ldexp(fraction + std::ldexp(1.0, kFractionBits), exponent - kBias - kFractionBits);
    }
    return (high >> 63) != 0 ? -value : value;
}

/// Two decimal digits an octet, the last half of which is the sign.
double Fixed(CdrReader reader, std::uint32_t digits, int scale) {
    constexpr unsigned kNegative = 0xd;
    const std::string_view octets = reader.Octets(digits / 2 + 1);
    double value = 0;
    unsigned last = 0;
    for (std::size_t i = 0; i < octets.size(); ++i) {
        const auto octet = static_cast<std::uint8_t>(octets[i]);
        value = value * 10 + (octet >> 4);
        last = octet & 0xf;
        if (i + 1 < octets.size()) {
            value = value * 10 + last;
        }
    }
    value /= std::pow(10.0, scale);
    return last == kNegative ? -value : value;
}

bool ReadTime(ValuePlace place, Scalar& scalar) {
    if (place.UnaliasedId() != kTimeType || !place.ToPosition(0) || place.kind() != CORBA::tk_ulonglong) {
        return false;
    }
    scalar.SetNumber(Number::OfUnsigned(place.reader().ULongLong()));
    return true;
}

void SetConverted(Scalar& scalar, std::string text) {
    scalar.converted = std::move(text);
    scalar.SetText(scalar.converted);
}

bool ReadInteger(CdrReader reader, CORBA::TCKind kind, Scalar& scalar) {
    switch (kind) {
        case CORBA::tk_octet:
            scalar.SetNumber(Number::Of(reader.Octet()));
            return true;
        case CORBA::tk_short:
            scalar.SetNumber(Number::Of(static_cast<std::int16_t>(reader.UShort())));
            return true;
        case CORBA::tk_ushort:
            scalar.SetNumber(Number::Of(reader.UShort()));
            return true;
        case CORBA::tk_long:
            scalar.SetNumber(Number::Of(static_cast<std::int32_t>(reader.ULong())));
            return true;
        case CORBA::tk_ulong:
            scalar.SetNumber(Number::Of(reader.ULong()));
            return true;
        case CORBA::tk_longlong:
            scalar.SetNumber(Number::Of(static_cast<std::int64_t>(reader.ULongLong())));
            return true;
        case CORBA::tk_ulonglong:
            scalar.SetNumber(Number::OfUnsigned(reader.ULongLong()));
            return true;
        default:
            return false;
    }
}

bool ReadText(CdrReader reader, CORBA::TCKind kind, Scalar& scalar) {
    switch (kind) {
        case CORBA::tk_char:
            scalar.SetText(reader.Octets(1));
            return true;
        case CORBA::tk_string:
            scalar.SetText(reader.String());
            return true;
        case CORBA::tk_wchar:
            SetConverted(scalar, Utf8Of(reader.Octets(reader.Octet())));
            return true;
        case CORBA::tk_wstring:
            SetConverted(scalar, Utf8Of(reader.OctetSequence()));
            return true;
        default:
            return false;
    }
}

std::uint32_t OrdinalOf(const Scalar& enumerator) {
    return static_cast<std::uint32_t>(enumerator.number.Whole());
}

bool SameType(const ValuePlace& a, const ValuePlace& b) {
    ValuePlace left = a;
    ValuePlace right = b;
    return left.UnaliasedId() == right.UnaliasedId();
}

template <class Value>
bool Apply(Operator comparison, const Value& left, const Value& right) {
    switch (comparison) {
        case Operator::kEqual:
            return left == right;
        case Operator::kNotEqual:
            return !(left == right);
        case Operator::kLess:
            return left < right;
        case Operator::kLessOrEqual:
            return left <= right;
        case Operator::kGreater:
            return right < left;
        case Operator::kGreaterOrEqual:
            return right <= left;
        default:
            return false;
    }
}

/// An enumerator beside the bare name of one, in either order.
bool CompareNamed(const Scalar& left, Operator comparison, const Scalar& right, bool& result) {
    const bool bare_left = left.kind == Scalar::Kind::kBareName;
    const Scalar& bare = bare_left ? left : right;
    const Scalar& known = bare_left ? right : left;
    std::uint32_t ordinal = 0;
    if (known.kind != Scalar::Kind::kEnumerator || !known.type->OrdinalOf(bare.text, ordinal)) {
        return false;
    }
    const std::uint32_t other = OrdinalOf(known);
    result = Apply(comparison, bare_left ? ordinal : other, bare_left ? other : ordinal);
    return true;
}

}  // namespace

void Scalar::SetBoolean(bool value) {
    kind = Kind::kBoolean;
    flag = value;
}

void Scalar::SetNumber(const Number& value) {
    kind = Kind::kNumber;
    number = value;
}

void Scalar::SetText(std::string_view value) {
    kind = Kind::kText;
    text = value;
}

bool ReadScalar(ValuePlace& place, Scalar& scalar) {
    CdrReader reader = place.reader();
    switch (place.kind()) {
        case CORBA::tk_boolean:
            scalar.SetBoolean(reader.Octet() != 0);
            return true;
        case CORBA::tk_float:
            scalar.SetNumber(Number::OfSingle(reader.Float()));
            return true;
        case CORBA::tk_double:
            scalar.SetNumber(Number::OfReal(reader.Double()));
            return true;
        case CORBA::tk_longdouble:
            scalar.SetNumber(Number::OfReal(LongDouble(reader)));
            return true;
        case CORBA::tk_fixed:
            scalar.SetNumber(Number::OfReal(Fixed(reader, place.Digits(), place.Scale())));
            return true;
        case CORBA::tk_enum:
            scalar.SetNumber(Number::Of(reader.ULong()));
            scalar.kind = Scalar::Kind::kEnumerator;
            scalar.type = &place;
            return true;
        case CORBA::tk_struct:
            return ReadTime(place, scalar);
        default:
            return ReadInteger(reader, place.kind(), scalar) || ReadText(reader, place.kind(), scalar);
    }
}

bool ReadScalar(Place& place, Scalar& scalar) {
    Place::Node& node = place.node();
    if (auto* const value = std::get_if<ValuePlace>(&node)) {
        return ReadScalar(*value, scalar);
    }
    if (const auto* const text = std::get_if<std::string_view>(&node)) {
        scalar.SetText(*text);
    } else if (const auto* const number = std::get_if<Number>(&node)) {
        scalar.SetNumber(*number);
    } else if (const auto* const time = std::get_if<Place::Time>(&node)) {
        scalar.SetNumber(Number::OfUnsigned(time->value));
    } else {
        return false;
    }
    return true;
}

bool NumberOf(const Scalar& scalar, Number& number) {
    switch (scalar.kind) {
        case Scalar::Kind::kBoolean:
            number = Number::Of(scalar.flag ? 1 : 0).Weak();
            return true;
        case Scalar::Kind::kNumber:
        case Scalar::Kind::kEnumerator:
            number = scalar.number;
            return true;
        default:
            return false;
    }
}

bool Compare(const Scalar& left, Operator comparison, const Scalar& right, bool& result) {
    using Kind = Scalar::Kind;
    if (left.kind == Kind::kText && right.kind == Kind::kText) {
        result = Apply(comparison, left.text, right.text);
        return true;
    }
    if (left.kind == Kind::kBareName || right.kind == Kind::kBareName) {
        return CompareNamed(left, comparison, right, result);
    }
    if (left.kind == Kind::kEnumerator && right.kind == Kind::kEnumerator &&
        !SameType(*left.type, *right.type)) {
        return false;
    }
    Number a;
    Number b;
    if (!NumberOf(left, a) || !NumberOf(right, b)) {
        return false;
    }
    result = Apply(comparison, a, b);
    return true;
}

}  // namespace qv_notify::etcl
