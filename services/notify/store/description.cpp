#include "services/notify/store/description.h"

#include <tuple>

#include "services/notify/store/description_parts.h"
#include "services/notify/store/json_form.h"

namespace qv_notify {
namespace {

constexpr std::int32_t kVersion = 1;

constexpr const char* kChannel = "channel";
constexpr const char* kAdmin = "admin";
constexpr const char* kProxy = "proxy";
constexpr const char* kFilter = "filter";
constexpr const char* kClientNames[] = {"any", "structured", "sequence"};  // in the order of ClientKind

Json::Value Begin(const char* kind, std::int32_t id) {
    Json::Value json(Json::objectValue);
    json["kind"] = kind;
    json["version"] = kVersion;
    json["id"] = id;
    return json;
}

/// The text of a description, which is of this kind and of a version that is known.
class Description {
  public:
    Description(const std::string& text, const std::string& kind)
        : m_json(ParseObject(text, kind)), m_object(m_json, kind) {
        if (m_object.Text("kind") != kind) {
            m_object.Fail("it is that of something else");
        }
        const std::int32_t version = m_object.Number("version");
        if (version > kVersion) {
            throw StoreError("The stored description of a " + kind + " has the version " +
                             std::to_string(version) + ", and this service knows " +
                             std::to_string(kVersion) + " at most. Start the newer service.");
        }
        if (version < 1) {
            m_object.Fail("there is no version " + std::to_string(version));
        }
    }
    const JsonObject& operator*() const { return m_object; }
    const JsonObject* operator->() const { return &m_object; }

  private:
    const Json::Value m_json;
    const JsonObject m_object;
};

ClientKind ReadClient(const JsonObject& object) {
    const std::string name = object.Text("client");
    int kind = 0;
    for (const char* known : kClientNames) {
        if (name == known) {
            return static_cast<ClientKind>(kind);
        }
        ++kind;
    }
    object.Fail("\"client\" is no kind of client");
}

ConstraintState ReadConstraint(const JsonObject& object) {
    return {object.Number("id"), ReadTypes(object, "types"), object.Text("text")};
}

auto Members(const AdminState& state) {
    return std::tie(state.id, state.for_consumers, state.and_operator, state.qos, state.types, state.filters,
                    state.next_filter_id);
}

auto Members(const ProxyState& state) {
    return std::tie(state.id, state.supplier, state.client_type, state.peer, state.suspended, state.qos,
                    state.types, state.filters, state.next_filter_id);
}

auto Members(const FilterState& state) {
    return std::tie(state.id, state.grammar, state.constraints, state.next_constraint_id);
}

}  // namespace

bool operator==(const FilterLinkState& left, const FilterLinkState& right) {
    return left.local_id == right.local_id && left.filter_id == right.filter_id && left.ior == right.ior;
}

bool operator==(const ChannelState& left, const ChannelState& right) {
    return left.id == right.id && left.qos == right.qos && left.admin == right.admin;
}

bool operator==(const AdminState& left, const AdminState& right) {
    return Members(left) == Members(right);
}

bool operator==(const ProxyState& left, const ProxyState& right) {
    return Members(left) == Members(right);
}

bool operator==(const ConstraintState& left, const ConstraintState& right) {
    return left.id == right.id && left.types == right.types && left.text == right.text;
}

bool operator==(const FilterState& left, const FilterState& right) {
    return Members(left) == Members(right);
}

std::string Text(const ChannelState& state) {
    Json::Value json = Begin(kChannel, state.id);
    json["qos"] = ToJson(state.qos);
    json["admin"] = ToJson(state.admin);
    return Print(json);
}

std::string Text(const AdminState& state) {
    Json::Value json = Begin(kAdmin, state.id);
    json["for_consumers"] = state.for_consumers;
    json["and"] = state.and_operator;
    json["qos"] = ToJson(state.qos);
    json["types"] = ToJson(state.types);
    json["filters"] = ToJson(state.filters);
    json["next_filter"] = state.next_filter_id;
    return Print(json);
}

std::string Text(const ProxyState& state) {
    Json::Value json = Begin(kProxy, state.id);
    json["supplier"] = state.supplier;
    json["client"] = kClientNames[static_cast<int>(state.client_type)];
    json["peer"] = ToJsonText(state.peer);
    json["suspended"] = state.suspended;
    json["qos"] = ToJson(state.qos);
    json["types"] = ToJson(state.types);
    json["filters"] = ToJson(state.filters);
    json["next_filter"] = state.next_filter_id;
    return Print(json);
}

std::string Text(const FilterState& state) {
    Json::Value json = Begin(kFilter, state.id);
    json["grammar"] = ToJsonText(state.grammar);
    Json::Value& constraints = json["constraints"] = Json::arrayValue;
    for (const ConstraintState& constraint : state.constraints) {
        Json::Value& one = constraints.append(Json::objectValue);
        one["id"] = constraint.id;
        one["types"] = ToJson(constraint.types);
        one["text"] = ToJsonText(constraint.text);
    }
    json["next_constraint"] = state.next_constraint_id;
    return Print(json);
}

ChannelState ReadChannel(const std::string& text) {
    const Description description(text, kChannel);
    return {description->Number("id"), ReadProperties(*description, "qos"),
            ReadProperties(*description, "admin")};
}

AdminState ReadAdmin(const std::string& text) {
    const Description description(text, kAdmin);
    AdminState state;
    state.id = description->Number("id");
    state.for_consumers = description->Boolean("for_consumers");
    state.and_operator = description->Boolean("and");
    state.qos = ReadProperties(*description, "qos");
    state.types = ReadTypes(*description, "types");
    state.filters = ReadLinks(*description, "filters");
    state.next_filter_id = description->Number("next_filter");
    return state;
}

ProxyState ReadProxy(const std::string& text) {
    const Description description(text, kProxy);
    ProxyState state;
    state.id = description->Number("id");
    state.supplier = description->Boolean("supplier");
    state.client_type = ReadClient(*description);
    state.peer = description->Text("peer");
    state.suspended = description->Boolean("suspended");
    state.qos = ReadProperties(*description, "qos");
    state.types = ReadTypes(*description, "types");
    state.filters = ReadLinks(*description, "filters");
    state.next_filter_id = description->Number("next_filter");
    return state;
}

FilterState ReadFilter(const std::string& text) {
    const Description description(text, kFilter);
    FilterState state;
    state.id = description->Number("id");
    state.grammar = description->Text("grammar");
    description->EachOf("constraints", [&state](const Json::Value& element) {
        state.constraints.push_back(ReadConstraint(JsonObject(element, "constraint")));
    });
    state.next_constraint_id = description->Number("next_constraint");
    return state;
}

}  // namespace qv_notify
