#pragma once

#include <string>
#include <vector>

#include "services/notify/store/description.h"
#include "services/notify/store/json_form.h"

namespace qv_notify {

// The parts that several kinds of descriptions have, as JSON and back.

Json::Value ToJson(const PropertyValues& values);
Json::Value ToJson(const std::vector<EventTypeName>& types);
Json::Value ToJson(const std::vector<FilterLinkState>& links);

PropertyValues ReadProperties(const JsonObject& object, const std::string& name);
std::vector<EventTypeName> ReadTypes(const JsonObject& object, const std::string& name);
std::vector<FilterLinkState> ReadLinks(const JsonObject& object, const std::string& name);

}  // namespace qv_notify
