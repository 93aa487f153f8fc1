#pragma once

#include <tao/corba.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "orb/cdr_reader.h"
#include "services/notify/etcl/component_path.h"
#include "services/notify/etcl/type_table.h"

namespace qv_notify::etcl {

using qv_orb::CdrReader;

/// A place inside of an Any's value, in its CDR form: where its bytes begin and of which type it is. Anys are
/// unwrapped and aliases resolved, so kind() is neither. Each step moves it to a part of the value and
/// returns false when there is no such part; the place is then no longer of use. Raises CORBA system
/// exceptions for bytes that hold no such value. Used by one thread; a copy goes its own way.
class ValuePlace {
  public:
    ValuePlace() = default;
    /// An Any's value. The TypeCode stays the Any's, and both it and the bytes have to stay.
    ValuePlace(CORBA::TypeCode_ptr type, const CdrReader& reader);

    CORBA::TCKind kind() const { return m_kind; }
    /// Stands at the first byte of the value.
    CdrReader reader() const { return m_reader; }
    /// Digits after the point of a fixed, and all of its digits.
    std::int16_t Scale();
    std::uint32_t Digits();

    bool ToMember(std::string_view name);
    bool ToPosition(std::uint64_t position);
    bool ToElement(std::uint64_t index);
    /// The value of the first name-value pair of that name.
    bool ToPair(std::string_view name);
    /// The active member of a union, if the step means it.
    bool ToUnionMember(const ComponentPath::Step& step);
    bool ToDiscriminator();

    /// The elements of a sequence or array: how many, and a place at the first of them.
    bool Elements(std::uint32_t& count, ValuePlace& first);
    /// From one element, which Elements gave, to the one behind it.
    void ToNextElement();

    bool DefaultIsActive(bool& active);

    /// Of the type as it is declared, with aliases; empty where there is none.
    std::string_view TypeName();
    std::string_view RepositoryId();
    /// The repository id of what the aliases stand for.
    std::string_view UnaliasedId();

    /// The place of an enumerator in the place's enum type.
    bool OrdinalOf(std::string_view enumerator, std::uint32_t& ordinal) const;
    bool HasEnumerator(std::uint32_t ordinal, std::string_view enumerator) const;

  private:
    ValuePlace(TypeTablePtr table, TypeTable::Index type, const CdrReader& reader);

    const TypeTable::Type& Type();
    CORBA::TypeCode_ptr Unaliased() const { return m_original ? m_original->in() : m_code; }
    bool NeedTable();
    void SetType(TypeTable::Index type);
    void Unwrap();
    bool Discriminator(CdrReader& reader, std::int64_t& value);
    bool Selects(const ComponentPath::Step& step, std::int64_t discriminator,
                 const TypeTable::Member& member);

    CORBA::TCKind m_kind = CORBA::tk_null;
    CORBA::TypeCode_ptr m_code = nullptr;           // while there is no table of it
    std::optional<CORBA::TypeCode_var> m_original;  // what an alias stands for, if m_code is one
    TypeTablePtr m_table;
    TypeTable::Index m_declared = 0;  // may be an alias
    CdrReader m_reader;               // at the value, behind the TypeCodes of Anys
    CdrReader m_element;              // at the same, ahead of them
    TypeTablePtr m_list;              // of the elements
    TypeTable::Index m_content = 0;
};

}  // namespace qv_notify::etcl
