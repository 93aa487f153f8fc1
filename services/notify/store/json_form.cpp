#include "services/notify/store/json_form.h"

#include <json/reader.h>
#include <json/writer.h>

#include <memory>
#include <utility>

namespace qv_notify {
namespace {

constexpr unsigned kFirstOfTwo = 0x80;  // characters from here on take two bytes in UTF-8

/// As unsigned: char may have a sign.
unsigned ByteOf(char c) {
    return static_cast<unsigned char>(c);
}

Json::CharReaderBuilder StrictReader() {
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    return builder;
}

}  // namespace

std::string ToJsonText(const std::string& octets) {
    std::string text;
    text.reserve(octets.size());
    for (const char octet : octets) {
        const unsigned code = ByteOf(octet);
        if (code < kFirstOfTwo) {
            text += octet;
        } else {
            text += static_cast<char>(0xC0U | (code >> 6U));
            text += static_cast<char>(0x80U | (code & 0x3FU));
        }
    }
    return text;
}

std::string FromJsonText(const std::string& text) {
    std::string octets;
    octets.reserve(text.size());
    for (std::size_t at = 0; at < text.size(); ++at) {
        const unsigned first = ByteOf(text[at]);
        if (first < kFirstOfTwo) {
            octets += text[at];
            continue;
        }
        const unsigned second = at + 1 < text.size() ? ByteOf(text[at + 1]) : 0;
        if ((first != 0xC2U && first != 0xC3U) || (second & 0xC0U) != 0x80U) {
            throw StoreError("A stored text has a character that stands for no octet.");
        }
        octets += static_cast<char>(((first & 0x03U) << 6U) | (second & 0x3FU));
        ++at;
    }
    return octets;
}

std::string Print(const Json::Value& value) {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    return Json::writeString(builder, value);
}

Json::Value ParseObject(const std::string& text, const std::string& what) {
    Json::Value value;
    std::string errors;
    try {
        const std::unique_ptr<Json::CharReader> reader(StrictReader().newCharReader());
        if (!reader->parse(text.data(), text.data() + text.size(), &value, &errors)) {
            throw StoreError("The stored description of a " + what + " is no JSON: " + errors);
        }
    } catch (const Json::Exception& error) {
        throw StoreError("The stored description of a " + what + " is no JSON: " + error.what());
    }
    if (!value.isObject()) {
        throw StoreError("The stored description of a " + what + " is no JSON object.");
    }
    return value;
}

JsonObject::JsonObject(const Json::Value& value, std::string what) : m_value(value), m_what(std::move(what)) {
    if (!m_value.isObject()) {
        Fail("it is no JSON object");
    }
}

void JsonObject::Fail(const std::string& why) const {
    throw StoreError("The stored description of a " + m_what + " is damaged: " + why + ".");
}

bool JsonObject::Has(const std::string& name) const {
    return m_value.isMember(name);
}

const Json::Value& JsonObject::Member(const std::string& name) const {
    const Json::Value* member = m_value.find(name.data(), name.data() + name.size());
    if (member == nullptr) {
        Fail("there is no \"" + name + "\"");
    }
    return *member;
}

bool JsonObject::Boolean(const std::string& name) const {
    const Json::Value& member = Member(name);
    if (!member.isBool()) {
        Fail("\"" + name + "\" is neither true nor false");
    }
    return member.asBool();
}

std::int32_t JsonObject::Number(const std::string& name) const {
    const Json::Value& member = Member(name);
    if (!member.isInt()) {
        Fail("\"" + name + "\" is no number of 32 bits");
    }
    return member.asInt();
}

std::string JsonObject::Text(const std::string& name) const {
    const Json::Value& member = Member(name);
    if (!member.isString()) {
        Fail("\"" + name + "\" is no text");
    }
    return FromJsonText(member.asString());
}

JsonObject JsonObject::Object(const std::string& name) const {
    const Json::Value& member = Member(name);
    if (!member.isObject()) {
        Fail("\"" + name + "\" is no JSON object");
    }
    return {member, m_what};
}

void JsonObject::EachOf(const std::string& name,
                        const std::function<void(const Json::Value& element)>& use) const {
    const Json::Value& member = Member(name);
    if (!member.isArray()) {
        Fail("\"" + name + "\" is no list");
    }
    for (const Json::Value& element : member) {
        use(element);
    }
}

}  // namespace qv_notify
