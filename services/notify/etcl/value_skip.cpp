#include "services/notify/etcl/value_skip.h"

#include <algorithm>

#include "orb/value_access.h"
#include "services/notify/etcl/type_table_cache.h"

namespace qv_notify::etcl {

namespace {

constexpr unsigned kMaxDepth = 200;

/// Walks over values; counts how deep they are nested, Anys in Anys included.
class Skipper {
  public:
    explicit Skipper(CdrReader& reader) : m_reader(reader) {}

    void Value(const TypeTable& table, TypeTable::Index index) {
        const TypeTable::Type& type = table.at(table.Unaliased(index));
        if (const std::size_t size = FixedSize(type.kind)) {
            return m_reader.SkipAligned(std::min(size, kLargestAlignment), size);
        }
        if (++m_depth > kMaxDepth) {
            throw CORBA::IMP_LIMIT(0, CORBA::COMPLETED_NO);
        }
        Compound(table, type);
        --m_depth;
    }

    void Values(const TypeTable& table, TypeTable::Index index, std::uint32_t count) {
        const std::size_t size = FixedSize(table.at(table.Unaliased(index)).kind);
        if (count == 0) {
            return;
        }
        if (size != 0) {
            return m_reader.SkipAligned(std::min(size, kLargestAlignment), std::uint64_t{size} * count);
        }
        for (std::uint32_t i = 0; i < count; ++i) {
            Value(table, index);
        }
    }

  private:
    static constexpr std::size_t kLargestAlignment = 8;

    void Compound(const TypeTable& table, const TypeTable::Type& type) {
        switch (type.kind) {
            case CORBA::tk_null:
            case CORBA::tk_void:
                return;
            case CORBA::tk_string:
            case CORBA::tk_wstring:
            case CORBA::tk_Principal:
                m_reader.OctetSequence();
                return;
            case CORBA::tk_wchar:
                m_reader.Octets(m_reader.Octet());
                return;
            case CORBA::tk_fixed:
                m_reader.Octets(type.length / 2 + 1);
                return;
            case CORBA::tk_except:
            case CORBA::tk_struct:
                return Members(table, type);
            case CORBA::tk_union:
                return Union(table, type);
            case CORBA::tk_sequence:
                return Values(table, type.content, m_reader.ULong());
            case CORBA::tk_array:
                return Values(table, type.content, type.length);
            case CORBA::tk_any: {
                const TypeTablePtr inner = TableOfNextType(m_reader);
                return Value(*inner, inner->root());
            }
            case CORBA::tk_TypeCode:
                SkipTypeCode(m_reader);
                return;
            case CORBA::tk_objref:
                return Reference();
            default:
                throw CORBA::NO_IMPLEMENT(0, CORBA::COMPLETED_NO);
        }
    }

    void Members(const TypeTable& table, const TypeTable::Type& type) {
        if (type.kind == CORBA::tk_except && qv_orb::ExceptionsInAnysCarryId()) {
            m_reader.OctetSequence();
        }
        for (const TypeTable::Member& member : type.members) {
            Value(table, member.type);
        }
    }

    void Union(const TypeTable& table, const TypeTable::Type& type) {
        std::int64_t discriminator = 0;
        ReadDiscriminator(m_reader, table.at(table.Unaliased(type.content)).kind, discriminator);
        if (const TypeTable::Member* const member = ActiveMember(type, discriminator)) {
            Value(table, member->type);
        }
    }

    /// A repository id and profiles, each of which is a tag and an encapsulation.
    void Reference() {
        m_reader.OctetSequence();
        const std::uint32_t profiles = m_reader.ULong();
        for (std::uint32_t i = 0; i < profiles; ++i) {
            m_reader.ULong();
            m_reader.OctetSequence();
        }
    }

    CdrReader& m_reader;
    unsigned m_depth = 0;
};

}  // namespace

std::size_t FixedSize(CORBA::TCKind kind) {
    switch (kind) {
        case CORBA::tk_boolean:
        case CORBA::tk_char:
        case CORBA::tk_octet:
            return 1;
        case CORBA::tk_short:
        case CORBA::tk_ushort:
            return 2;
        case CORBA::tk_long:
        case CORBA::tk_ulong:
        case CORBA::tk_enum:
        case CORBA::tk_float:
            return 4;
        case CORBA::tk_longlong:
        case CORBA::tk_ulonglong:
        case CORBA::tk_double:
            return 8;
        case CORBA::tk_longdouble:
            return 16;
        default:
            return 0;
    }
}

void SkipValue(const TypeTable& table, TypeTable::Index type, CdrReader& reader) {
    Skipper(reader).Value(table, type);
}

void SkipValues(const TypeTable& table, TypeTable::Index type, std::uint32_t count, CdrReader& reader) {
    Skipper(reader).Values(table, type, count);
}

const TypeTable::Member* ActiveMember(const TypeTable::Type& type, std::int64_t discriminator) {
    const TypeTable::Member* fallback = nullptr;
    for (const TypeTable::Member& member : type.members) {
        if (member.by_default) {
            fallback = &member;
        } else if (member.label == discriminator) {
            return &member;
        }
    }
    return fallback;
}

}  // namespace qv_notify::etcl
