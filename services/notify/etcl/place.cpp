#include "services/notify/etcl/place.h"

#include <cstring>

#include "services/notify/etcl/event_parts.h"

namespace qv_notify::etcl {

const CORBA::Any* FindProperty(const CosNotification::PropertySeq& properties, const std::string& name) {
    const char* const wanted = name.c_str();
    const CORBA::ULong count = properties.length();
    for (CORBA::ULong i = 0; i < count; ++i) {
        const CosNotification::Property& property = properties[i];
        const char* const candidate = property.name.in();
        if (*candidate == *wanted &&
            std::strcmp(candidate, wanted) == 0) {  // mostly the first letter differs
            return &property.value;
        }
    }
    return nullptr;
}

void Place::Set(const Event& event) {
    if (const auto* const any = std::get_if<const CORBA::Any*>(&event)) {
        Set(**any);
    } else if (const auto* const list = std::get_if<const CosNotification::PropertySeq*>(&event)) {
        m_node = PropertyList(**list);
    } else {
        Set(*std::get<const CosNotification::StructuredEvent*>(event));
    }
}

void Place::Set(const CORBA::Any& any) {
    const CORBA::TypeCode_ptr type = qv_orb::TypeOf(any);
    const CORBA::TCKind kind = type->kind();
    if (kind == CORBA::tk_null || kind == CORBA::tk_void) {
        m_node = ValuePlace();
        return;
    }
    m_bytes.emplace(any);
    m_node.emplace<ValuePlace>(type, CdrReader(m_bytes->data(), m_bytes->size(), m_bytes->swapped()));
}

bool Place::ToMember(std::string_view name) {
    if (auto* const value = std::get_if<ValuePlace>(&m_node)) {
        return value->ToMember(name);
    }
    const std::size_t position = PositionOf(m_node, name);
    return position != kNoPosition && ToPosition(position);
}

bool Place::ToPosition(std::uint64_t position) {
    if (auto* const value = std::get_if<ValuePlace>(&m_node)) {
        return value->ToPosition(position);
    }
    const CORBA::Any* any = nullptr;
    m_node = PartAt(m_node, position, any);
    if (any != nullptr) {
        Set(*any);
    }
    return !std::holds_alternative<std::monostate>(m_node);
}

bool Place::ToElement(std::uint64_t index) {
    if (auto* const value = std::get_if<ValuePlace>(&m_node)) {
        return value->ToElement(index);
    }
    const auto* const properties = std::get_if<Properties>(&m_node);
    if (properties == nullptr || index >= properties->list->length()) {
        return false;
    }
    m_node = &(*properties->list)[static_cast<CORBA::ULong>(index)];
    return true;
}

bool Place::ToPair(const std::string& name) {
    if (auto* const value = std::get_if<ValuePlace>(&m_node)) {
        return value->ToPair(name);
    }
    const auto* const properties = std::get_if<Properties>(&m_node);
    const CORBA::Any* const found = properties != nullptr ? FindProperty(*properties->list, name) : nullptr;
    if (found != nullptr) {
        Set(*found);
    }
    return found != nullptr;
}

bool Place::ToLength() {
    if (const auto* const properties = std::get_if<Properties>(&m_node)) {
        m_node = Number::OfUnsigned(properties->list->length());
        return true;
    }
    auto* const value = std::get_if<ValuePlace>(&m_node);
    std::uint32_t count = 0;
    ValuePlace first;
    if (value == nullptr || !value->Elements(count, first)) {
        return false;
    }
    m_node = Number::OfUnsigned(count);
    return true;
}

bool Place::ToName(std::string_view text) {
    if (text.empty()) {
        return false;
    }
    m_name = text;
    m_node = std::string_view(m_name);
    return true;
}

bool Place::ToTypeName() {
    auto* const value = std::get_if<ValuePlace>(&m_node);
    return ToName(value != nullptr ? value->TypeName() : TypeNamesOf(m_node).name);
}

bool Place::ToRepositoryId() {
    auto* const value = std::get_if<ValuePlace>(&m_node);
    return ToName(value != nullptr ? value->RepositoryId() : TypeNamesOf(m_node).repository_id);
}

bool Place::DefaultIsActive(bool& active) {
    auto* const value = std::get_if<ValuePlace>(&m_node);
    return value != nullptr && value->DefaultIsActive(active);
}

bool Place::Take(const ComponentPath::Step& step) {
    using Kind = ComponentPath::Kind;
    auto* const value = std::get_if<ValuePlace>(&m_node);
    switch (step.kind) {
        case Kind::kMember:
            return ToMember(step.name);
        case Kind::kPosition:
            return ToPosition(step.number);
        case Kind::kElement:
            return ToElement(step.number);
        case Kind::kPair:
            return ToPair(step.name);
        case Kind::kUnionNumber:
        case Kind::kUnionText:
        case Kind::kUnionDefault:
            return value != nullptr && value->ToUnionMember(step);
        case Kind::kDiscriminator:
            return value != nullptr && value->ToDiscriminator();
        case Kind::kLength:
            return ToLength();
        case Kind::kTypeName:
            return ToTypeName();
        case Kind::kRepositoryId:
            return ToRepositoryId();
    }
    return false;
}

}  // namespace qv_notify::etcl
