#include "standalone/setting_value.h"

#include <charconv>

namespace qv_standalone {
namespace {

/// The whole of `text` as a decimal number; false when it isn't one or doesn't fit.
bool WholeNumber(const std::string& text, long long& number) {
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end;
}

Converted ConvertFlag(const RawValue& raw) {
    const bool zeroOrOne = raw.integer == 0 || raw.integer == 1;
    if ((raw.kind == RawValue::kBoolean || raw.kind == RawValue::kInteger) && zeroOrOne) {
        return {raw.integer == 1 ? "1" : "0", ""};
    }
    if (raw.kind == RawValue::kString) {
        if (raw.text == "true" || raw.text == "1") {
            return {"1", ""};
        }
        if (raw.text == "false" || raw.text == "0") {
            return {"0", ""};
        }
        return {"", "\"" + raw.text + "\" is neither true nor false"};
    }
    if (raw.kind == RawValue::kInteger) {
        return {"", std::to_string(raw.integer) + " is neither true nor false"};
    }
    return {"", "wants true or false, not " + raw.kind_name};
}

Converted ConvertInteger(const Setting& setting, const RawValue& raw) {
    long long number = raw.integer;
    if (raw.kind == RawValue::kString) {
        if (!WholeNumber(raw.text, number)) {
            return {"", "\"" + raw.text + "\" is not a whole number"};
        }
    } else if (raw.kind != RawValue::kInteger) {
        return {"", "wants a whole number, not " + raw.kind_name};
    }
    if (number < setting.min || number > setting.max) {
        return {"", std::to_string(number) + " is out of range, " + RangeText(setting)};
    }
    return {std::to_string(number), ""};
}

}  // namespace

std::string TextProblem(const std::string& text) {
    for (const char c : text) {
        if (static_cast<unsigned char>(c) < ' ' || c == '\x7f') {
            return "holds a control character (code " + std::to_string(static_cast<unsigned char>(c)) + ")";
        }
    }
    return "";
}

Converted ConvertValue(const Setting& setting, const RawValue& raw) {
    switch (setting.type) {
        case ValueType::kFlag:
            return ConvertFlag(raw);
        case ValueType::kInteger:
            return ConvertInteger(setting, raw);
        case ValueType::kText:
            if (raw.kind != RawValue::kString) {
                return {"", "wants a text in quotes, not " + raw.kind_name};
            }
            return {raw.text, TextProblem(raw.text)};
        case ValueType::kTextList:
            return {"", "wants a list of texts, not " + raw.kind_name};
    }
    return {"", "of no known type"};
}

}  // namespace qv_standalone
