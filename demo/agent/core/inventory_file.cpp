#include <json/json.h>

#include <cerrno>
#include <cstring>
#include <fstream>

#include "demo/agent/core/inventory.h"

namespace qv_demo {
namespace {

std::string Text(const Json::Value& object, const char* key, const std::string& where,
                 bool required = false) {
    const Json::Value& value = object[key];
    if (value.isString()) {
        return value.asString();
    }
    if (value.isNull() && !required) {
        return {};
    }
    throw InventoryError(where + ": \"" + key + "\" must be a text");
}

bool Flag(const Json::Value& object, const char* key, const std::string& where) {
    const Json::Value& value = object[key];
    if (value.isBool()) {
        return value.asBool();
    }
    if (value.isNull()) {
        return true;
    }
    throw InventoryError(where + ": \"" + key + "\" must be true or false");
}

std::vector<short> Rates(const Json::Value& object, const std::string& where) {
    std::vector<short> rates;
    for (const Json::Value& rate : object["rates"]) {
        if (!rate.isInt() || rate.asInt() < 0 || rate.asInt() > 32767) {
            throw InventoryError(where + ": each of \"rates\" must be a whole number from 0 to 32767");
        }
        rates.push_back(static_cast<short>(rate.asInt()));
    }
    return rates;
}

Texts Info(const Json::Value& object, const std::string& where) {
    Texts info;
    const Json::Value& additional = object["additional_info"];
    if (!additional.isObject() && !additional.isNull()) {
        throw InventoryError(where + ": \"additional_info\" must be an object of texts");
    }
    for (const std::string& name : additional.getMemberNames()) {
        info.emplace(name, Text(additional, name.c_str(), where, true));
    }
    return info;
}

Element ToElement(const Json::Value& object, const std::string& where) {
    if (!object.isObject()) {
        throw InventoryError(where + " is not an object");
    }
    Element element;
    element.name = Text(object, "name", where, true);
    if (element.name.empty()) {
        throw InventoryError(where + " has an empty name");
    }
    element.user_label = Text(object, "user_label", where);
    element.native_name = Text(object, "native_name", where);
    element.owner = Text(object, "owner", where);
    element.location = Text(object, "location", where);
    element.version = Text(object, "version", where);
    element.product = Text(object, "product", where);
    element.reachable = Flag(object, "reachable", where);
    element.in_sync = Flag(object, "in_sync", where);
    element.rates = Rates(object, where);
    element.additional_info = Info(object, where);
    return element;
}

Json::Value Parse(const std::string& path) {
    std::ifstream file(path);
    if (!file) {
        throw InventoryError(path + ": can't be opened: " + std::strerror(errno));
    }
    Json::CharReaderBuilder builder;
    builder["collectComments"] = false;
    Json::Value root;
    std::string errors;
    if (!Json::parseFromStream(builder, file, &root, &errors)) {
        throw InventoryError(path + ": not valid JSON: " + errors);
    }
    if (!root.isObject() || !root["elements"].isArray()) {
        throw InventoryError(path + ": needs an array named \"elements\"");
    }
    return root;
}

}  // namespace

Inventory Inventory::Load(const std::string& path) try {
    const Json::Value root = Parse(path);
    const Json::Value& ems = root["ems"];
    if (!ems.isObject() && !ems.isNull()) {
        throw InventoryError(path + ": \"ems\" must be an object");
    }
    EmsInfo info{Text(ems, "user_label", path), Text(ems, "owner", path), Text(ems, "version", path),
                 Text(ems, "type", path)};
    std::vector<Element> elements;
    elements.reserve(root["elements"].size());
    for (const Json::Value& element : root["elements"]) {
        elements.push_back(ToElement(element, path + ": element " + std::to_string(elements.size() + 1)));
    }
    return Inventory(std::move(info), std::move(elements));
} catch (const Json::Exception& e) {
    throw InventoryError(path + ": " + e.what());
}

}  // namespace qv_demo
