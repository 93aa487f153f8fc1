#include "services/notify/store/description_parts.h"

#include <limits>

namespace qv_notify {
namespace {

constexpr const char* kBoolean = "boolean";
constexpr const char* kShort = "short";
constexpr const char* kLong = "long";
constexpr const char* kTime = "time";

struct Typed {
    Json::Value& json;
    void operator()(bool value) const { json[kBoolean] = value; }
    void operator()(std::int16_t value) const { json[kShort] = Json::Int(value); }
    void operator()(std::int32_t value) const { json[kLong] = Json::Int(value); }
    void operator()(std::uint64_t value) const { json[kTime] = Json::UInt64(value); }
};

std::int16_t ReadShort(const JsonObject& value) {
    const std::int32_t number = value.Number(kShort);
    if (number < std::numeric_limits<std::int16_t>::min() ||
        number > std::numeric_limits<std::int16_t>::max()) {
        value.Fail("a property is no short");
    }
    return static_cast<std::int16_t>(number);
}

PropertyValue ReadProperty(const JsonObject& value) {
    if (value.Has(kBoolean)) {
        return value.Boolean(kBoolean);
    }
    if (value.Has(kShort)) {
        return ReadShort(value);
    }
    if (value.Has(kLong)) {
        return value.Number(kLong);
    }
    if (!value.Has(kTime) || !value.Value()[kTime].isUInt64()) {
        value.Fail("a property has no value");
    }
    return PropertyValue(std::in_place_type<std::uint64_t>, value.Value()[kTime].asUInt64());
}

FilterLinkState ReadLink(const JsonObject& object) {
    FilterLinkState link;
    link.local_id = object.Number("local");
    if (object.Has("filter")) {
        link.filter_id = object.Number("filter");
    } else {
        link.ior = object.Text("ior");
    }
    return link;
}

}  // namespace

Json::Value ToJson(const PropertyValues& values) {
    Json::Value json(Json::objectValue);
    for (const auto& [name, value] : values) {
        std::visit(Typed{json[ToJsonText(name)]}, value);
    }
    return json;
}

Json::Value ToJson(const std::vector<EventTypeName>& types) {
    Json::Value json(Json::arrayValue);
    for (const EventTypeName& type : types) {
        Json::Value& one = json.append(Json::objectValue);
        one["domain"] = ToJsonText(type.domain);
        one["type"] = ToJsonText(type.type);
    }
    return json;
}

Json::Value ToJson(const std::vector<FilterLinkState>& links) {
    Json::Value json(Json::arrayValue);
    for (const FilterLinkState& link : links) {
        Json::Value& one = json.append(Json::objectValue);
        one["local"] = link.local_id;
        if (link.filter_id) {
            one["filter"] = *link.filter_id;
        } else {
            one["ior"] = ToJsonText(link.ior);
        }
    }
    return json;
}

PropertyValues ReadProperties(const JsonObject& object, const std::string& name) {
    PropertyValues values;
    const JsonObject json = object.Object(name);
    for (const std::string& property : json.Value().getMemberNames()) {
        values[FromJsonText(property)] = ReadProperty(json.Object(property));
    }
    return values;
}

std::vector<EventTypeName> ReadTypes(const JsonObject& object, const std::string& name) {
    std::vector<EventTypeName> types;
    object.EachOf(name, [&types](const Json::Value& element) {
        const JsonObject type(element, "type of events");
        types.push_back({type.Text("domain"), type.Text("type")});
    });
    return types;
}

std::vector<FilterLinkState> ReadLinks(const JsonObject& object, const std::string& name) {
    std::vector<FilterLinkState> links;
    object.EachOf(name, [&links](const Json::Value& element) {
        links.push_back(ReadLink(JsonObject(element, "use of a filter")));
    });
    return links;
}

}  // namespace qv_notify
