#include "standalone/span_line.h"

#include <json/value.h>
#include <json/writer.h>

#include <algorithm>
#include <array>
#include <charconv>

namespace qv_standalone {
namespace {

constexpr int kMaxDepth = 64;

/// For what is rare: numbers with a fraction, and texts with anything but plain characters.
void AppendByLibrary(const Json::Value& value, std::string& line) {
    // Never destroyed: requests may be under way to the very end.
    static const auto* const compact = [] {
        auto* const builder = new Json::StreamWriterBuilder;
        (*builder)["indentation"] = "";
        return builder;
    }();
    line += Json::writeString(*compact, value);
}

constexpr std::array<bool, 256> PlainCharacters() {
    std::array<bool, 256> plain{};
    for (std::size_t c = ' '; c <= '~'; ++c) {
        plain[c] = c != '"' && c != '\\';
    }
    return plain;
}

bool IsPlain(char c) {
    static constexpr std::array<bool, 256> kPlain = PlainCharacters();
    return kPlain[static_cast<unsigned char>(c)];
}

void AppendText(const char* begin, const char* end, std::string& line) {
    if (!std::all_of(begin, end, IsPlain)) {
        AppendByLibrary(Json::Value(begin, end), line);
        return;
    }
    line += '"';
    line.append(begin, end);
    line += '"';
}

template <class Number>
void AppendNumber(Number number, std::string& line) {
    char digits[24];
    line.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

bool Append(const Json::Value& value, int depth, std::string& line);

bool AppendArray(const Json::Value& array, int depth, std::string& line) {
    line += '[';
    bool first = true;
    for (const Json::Value& element : array) {
        if (!first) {
            line += ',';
        }
        first = false;
        if (!Append(element, depth, line)) {
            return false;
        }
    }
    line += ']';
    return true;
}

bool AppendObject(const Json::Value& object, int depth, std::string& line) {
    line += '{';
    bool first = true;
    for (auto member = object.begin(); member != object.end(); ++member) {
        if (!first) {
            line += ',';
        }
        first = false;
        const char* end = nullptr;
        const char* const name = member.memberName(&end);
        AppendText(name, end, line);
        line += ':';
        if (!Append(*member, depth, line)) {
            return false;
        }
    }
    line += '}';
    return true;
}

bool Append(const Json::Value& value, int depth, std::string& line) {
    if (depth == kMaxDepth) {
        return false;
    }
    switch (value.type()) {
        case Json::intValue:
            AppendNumber(value.asLargestInt(), line);
            return true;
        case Json::uintValue:
            AppendNumber(value.asLargestUInt(), line);
            return true;
        case Json::stringValue: {
            const char* begin = nullptr;
            const char* end = nullptr;
            value.getString(&begin, &end);
            AppendText(begin, end, line);
            return true;
        }
        case Json::arrayValue:
            return AppendArray(value, depth + 1, line);
        case Json::objectValue:
            return AppendObject(value, depth + 1, line);
        case Json::nullValue:
        case Json::booleanValue:
        case Json::realValue:
            break;
    }
    AppendByLibrary(value, line);
    return true;
}

}  // namespace

bool AppendCompact(const Json::Value& value, std::string& line) {
    return Append(value, 0, line);
}

}  // namespace qv_standalone
