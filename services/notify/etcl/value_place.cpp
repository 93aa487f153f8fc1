#include "services/notify/etcl/value_place.h"

#include <utility>

#include "services/notify/etcl/type_table_cache.h"
#include "services/notify/etcl/value_skip.h"

namespace qv_notify::etcl {

namespace {

/// What is between the last '/' or ':' ahead of the version and the version.
std::string_view Unscoped(std::string_view id) {
    const std::size_t version = id.rfind(':');
    if (version == std::string_view::npos) {
        return {};
    }
    id = id.substr(0, version);
    return id.substr(id.find_last_of("/:") + 1);
}

bool IsPair(const TypeTable& table, const TypeTable::Type& type) {
    constexpr std::size_t kNameAndValue = 2;
    return type.kind == CORBA::tk_struct && type.members.size() == kNameAndValue &&
           table.at(table.Unaliased(type.members[0].type)).kind == CORBA::tk_string;
}

}  // namespace

ValuePlace::ValuePlace(CORBA::TypeCode_ptr type, const CdrReader& reader)
    : m_kind(type->kind()), m_code(type), m_reader(reader) {
    while (m_kind == CORBA::tk_alias) {
        m_original = CORBA::TypeCode_var(Unaliased()->content_type());
        m_kind = Unaliased()->kind();
    }
    Unwrap();
}

ValuePlace::ValuePlace(TypeTablePtr table, TypeTable::Index type, const CdrReader& reader)
    : m_table(std::move(table)), m_reader(reader) {
    SetType(type);
}

void ValuePlace::SetType(TypeTable::Index type) {
    m_declared = type;
    m_kind = m_table->at(m_table->Unaliased(type)).kind;
    Unwrap();
}

void ValuePlace::Unwrap() {
    while (m_kind == CORBA::tk_any) {
        m_code = nullptr;
        m_table.reset();
        m_kind = NextKind(m_reader);
        if (IsSimple(m_kind)) {
            SkipTypeCode(m_reader);
            continue;
        }
        m_table = TableOfNextType(m_reader);
        m_declared = m_table->root();
        m_kind = m_table->at(m_table->Unaliased(m_declared)).kind;
    }
}

bool ValuePlace::NeedTable() {
    if (m_table == nullptr && m_code != nullptr) {
        m_table = TableOf(m_code);
        m_declared = m_table->root();
    }
    return m_table != nullptr;
}

/// Only with a table.
const TypeTable::Type& ValuePlace::Type() {
    return m_table->at(m_table->Unaliased(m_declared));
}

std::int16_t ValuePlace::Scale() {
    return NeedTable() ? Type().scale : std::int16_t{0};
}

std::uint32_t ValuePlace::Digits() {
    return NeedTable() ? Type().length : 0;
}

bool ValuePlace::ToMember(std::string_view name) {
    if ((m_kind != CORBA::tk_struct && m_kind != CORBA::tk_except && m_kind != CORBA::tk_union) ||
        !NeedTable()) {
        return false;
    }
    const TypeTable::Type& type = Type();
    if (m_kind == CORBA::tk_union) {
        std::int64_t discriminator = 0;
        if (!Discriminator(m_reader, discriminator)) {
            return false;
        }
        const TypeTable::Member* const active = ActiveMember(type, discriminator);
        if (active == nullptr || active->name != name) {
            return false;
        }
        SetType(active->type);
        return true;
    }
    for (std::size_t i = 0; i < type.members.size(); ++i) {
        if (type.members[i].name == name) {
            return ToPosition(i);
        }
    }
    return false;
}

bool ValuePlace::ToPosition(std::uint64_t position) {
    if ((m_kind != CORBA::tk_struct && m_kind != CORBA::tk_except) || !NeedTable() ||
        position >= Type().members.size()) {
        return false;
    }
    const TypeTable::Type& type = Type();
    for (std::size_t i = 0; i < position; ++i) {
        SkipValue(*m_table, type.members[i].type, m_reader);
    }
    SetType(type.members[static_cast<std::size_t>(position)].type);
    return true;
}

bool ValuePlace::Elements(std::uint32_t& count, ValuePlace& first) {
    if ((m_kind != CORBA::tk_sequence && m_kind != CORBA::tk_array) || !NeedTable()) {
        return false;
    }
    const TypeTable::Type& type = Type();
    CdrReader elements = m_reader;
    count = m_kind == CORBA::tk_array ? type.length : elements.ULong();
    if (count == 0) {
        return true;
    }
    const TypeTable::Index content = type.content;
    first = ValuePlace(m_table, content, elements);
    first.m_element = elements;
    first.m_list = m_table;
    first.m_content = content;
    return true;
}

void ValuePlace::ToNextElement() {
    SkipValue(*m_list, m_content, m_element);
    m_table = m_list;
    m_reader = m_element;
    SetType(m_content);
}

bool ValuePlace::ToElement(std::uint64_t index) {
    if ((m_kind != CORBA::tk_sequence && m_kind != CORBA::tk_array) || !NeedTable()) {
        return false;
    }
    const TypeTable::Type& type = Type();
    const std::uint32_t count = m_kind == CORBA::tk_array ? type.length : m_reader.ULong();
    if (index >= count) {
        return false;
    }
    SkipValues(*m_table, type.content, static_cast<std::uint32_t>(index), m_reader);
    SetType(type.content);
    return true;
}

bool ValuePlace::ToPair(std::string_view name) {
    if ((m_kind != CORBA::tk_sequence && m_kind != CORBA::tk_array) || !NeedTable()) {
        return false;
    }
    const TypeTable::Type& list = Type();
    const TypeTable::Type& pair = m_table->at(m_table->Unaliased(list.content));
    if (!IsPair(*m_table, pair)) {
        return false;
    }
    const std::uint32_t count = m_kind == CORBA::tk_array ? list.length : m_reader.ULong();
    for (std::uint32_t i = 0; i < count; ++i) {
        if (m_reader.String() == name) {
            SetType(pair.members[1].type);
            return true;
        }
        SkipValue(*m_table, pair.members[1].type, m_reader);
    }
    return false;
}

/// Reads over the discriminator; false where the place is no union.
bool ValuePlace::Discriminator(CdrReader& reader, std::int64_t& value) {
    if (m_kind != CORBA::tk_union || !NeedTable()) {
        return false;
    }
    return ReadDiscriminator(reader, m_table->at(m_table->Unaliased(Type().content)).kind, value);
}

bool ValuePlace::Selects(const ComponentPath::Step& step, std::int64_t discriminator,
                         const TypeTable::Member& member) {
    const TypeTable::Type& type = m_table->at(m_table->Unaliased(Type().content));
    switch (step.kind) {
        case ComponentPath::Kind::kUnionDefault:
            return member.by_default;
        case ComponentPath::Kind::kUnionNumber: {
            const auto bits = static_cast<std::uint64_t>(discriminator);
            const bool negative = type.kind != CORBA::tk_ulonglong && discriminator < 0;
            return step.number == (negative ? -bits : bits) &&
                   (step.negative == negative || step.number == 0);
        }
        case ComponentPath::Kind::kUnionText:
            if (type.kind == CORBA::tk_enum) {
                const auto ordinal = static_cast<std::size_t>(discriminator);
                if (ordinal < type.members.size() && type.members[ordinal].name == step.name) {
                    return true;
                }
            }
            if (type.kind == CORBA::tk_char && step.name.size() == 1 &&
                static_cast<std::uint8_t>(step.name[0]) == discriminator) {
                return true;
            }
            return member.name == step.name;
        default:
            return false;
    }
}

bool ValuePlace::ToUnionMember(const ComponentPath::Step& step) {
    std::int64_t discriminator = 0;
    if (!Discriminator(m_reader, discriminator)) {
        return false;
    }
    const TypeTable::Member* const member = ActiveMember(Type(), discriminator);
    if (member == nullptr || !Selects(step, discriminator, *member)) {
        return false;
    }
    SetType(member->type);
    return true;
}

bool ValuePlace::ToDiscriminator() {
    if (m_kind != CORBA::tk_union || !NeedTable()) {
        return false;
    }
    SetType(Type().content);
    return true;
}

bool ValuePlace::DefaultIsActive(bool& active) {
    CdrReader reader = m_reader;
    std::int64_t discriminator = 0;
    if (!Discriminator(reader, discriminator)) {
        return false;
    }
    const TypeTable::Member* const member = ActiveMember(Type(), discriminator);
    active = member != nullptr && member->by_default;
    return true;
}

std::string_view ValuePlace::TypeName() {
    if (!NeedTable()) {
        return {};
    }
    const TypeTable::Type& declared = m_table->at(m_declared);
    return declared.name.empty() ? Unscoped(declared.id) : std::string_view(declared.name);
}

std::string_view ValuePlace::RepositoryId() {
    return NeedTable() ? std::string_view(m_table->at(m_declared).id) : std::string_view();
}

std::string_view ValuePlace::UnaliasedId() {
    return NeedTable() ? std::string_view(Type().id) : std::string_view();
}

bool ValuePlace::HasEnumerator(std::uint32_t ordinal, std::string_view enumerator) const {
    if (m_table != nullptr) {
        const TypeTable::Type& type = m_table->at(m_table->Unaliased(m_declared));
        return ordinal < type.members.size() && type.members[ordinal].name == enumerator;
    }
    const CORBA::TypeCode_ptr type = Unaliased();
    return ordinal < type->member_count() && type->member_name(ordinal) == enumerator;
}

bool ValuePlace::OrdinalOf(std::string_view enumerator, std::uint32_t& ordinal) const {
    const std::size_t count = m_table != nullptr ? m_table->at(m_table->Unaliased(m_declared)).members.size()
                                                 : Unaliased()->member_count();
    for (std::size_t i = 0; i < count; ++i) {
        ordinal = static_cast<std::uint32_t>(i);
        if (HasEnumerator(ordinal, enumerator)) {
            return true;
        }
    }
    return false;
}

}  // namespace qv_notify::etcl
