#pragma once

#include <json/value.h>

#include <cstdint>
#include <functional>
#include <string>

#include "services/notify/store/store_error.h"

namespace qv_notify {

/// A string of any octets as one that JSON can carry, in which each octet is a character, and back.
/// FromJsonText throws StoreError for characters that stand for no octet.
std::string ToJsonText(const std::string& octets);
std::string FromJsonText(const std::string& text);

/// Compact JSON.
std::string Print(const Json::Value& value);

/// A JSON object that is to have certain members. Each function throws StoreError when the member isn't there
/// or is of another type. It refers to the value.
class JsonObject {
  public:
    /// `what` is what errors call the object.
    JsonObject(const Json::Value& value, std::string what);

    bool Has(const std::string& name) const;
    bool Boolean(const std::string& name) const;
    std::int32_t Number(const std::string& name) const;
    std::string Text(const std::string& name) const;
    JsonObject Object(const std::string& name) const;
    /// Calls `use` with each element of the list.
    void EachOf(const std::string& name, const std::function<void(const Json::Value& element)>& use) const;

    const Json::Value& Value() const { return m_value; }
    /// Always throws: the object isn't what it should be.
    [[noreturn]] void Fail(const std::string& why) const;

  private:
    const Json::Value& Member(const std::string& name) const;

    const Json::Value& m_value;
    const std::string m_what;
};

/// Reads exactly one JSON object; throws StoreError for anything else.
Json::Value ParseObject(const std::string& text, const std::string& what);

}  // namespace qv_notify
