#include "services/notify/etcl/type_table.h"

#include <map>
#include <utility>

namespace qv_notify::etcl {

namespace {

constexpr std::uint32_t kIndirection = 0xffffffff;
constexpr unsigned kMaxDepth = 200;
constexpr std::size_t kMaxTypes = 1 << 16;

[[noreturn]] void NotAType() {
    throw CORBA::BAD_TYPECODE(0, CORBA::COMPLETED_NO);
}

[[noreturn]] void TooLarge() {
    throw CORBA::IMP_LIMIT(0, CORBA::COMPLETED_NO);
}

/// What stands behind a kind in a TypeCode.
enum class Parameters { kNone, kBound, kDigitsAndScale, kEncapsulation, kUnknown };

Parameters ParametersOf(CORBA::TCKind kind) {
    switch (kind) {
        case CORBA::tk_string:
        case CORBA::tk_wstring:
            return Parameters::kBound;
        case CORBA::tk_fixed:
            return Parameters::kDigitsAndScale;
        case CORBA::tk_objref:
        case CORBA::tk_struct:
        case CORBA::tk_union:
        case CORBA::tk_enum:
        case CORBA::tk_sequence:
        case CORBA::tk_array:
        case CORBA::tk_alias:
        case CORBA::tk_except:
        case CORBA::tk_value:
        case CORBA::tk_value_box:
        case CORBA::tk_native:
        case CORBA::tk_abstract_interface:
        case CORBA::tk_local_interface:
            return Parameters::kEncapsulation;
        default:
            return kind <= CORBA::tk_wchar ? Parameters::kNone : Parameters::kUnknown;
    }
}

}  // namespace

bool IsSimple(CORBA::TCKind kind) {
    const Parameters parameters = ParametersOf(kind);
    return parameters == Parameters::kNone || parameters == Parameters::kBound;
}

bool IsDiscriminator(CORBA::TCKind kind) {
    switch (kind) {
        case CORBA::tk_boolean:
        case CORBA::tk_char:
        case CORBA::tk_octet:
        case CORBA::tk_short:
        case CORBA::tk_ushort:
        case CORBA::tk_long:
        case CORBA::tk_ulong:
        case CORBA::tk_enum:
        case CORBA::tk_longlong:
        case CORBA::tk_ulonglong:
            return true;
        default:
            return false;
    }
}

bool ReadDiscriminator(CdrReader& reader, CORBA::TCKind kind, std::int64_t& value) {
    switch (kind) {
        case CORBA::tk_boolean:
        case CORBA::tk_char:
        case CORBA::tk_octet:
            value = reader.Octet();
            return true;
        case CORBA::tk_short:
            value = static_cast<std::int16_t>(reader.UShort());
            return true;
        case CORBA::tk_ushort:
            value = reader.UShort();
            return true;
        case CORBA::tk_long:
            value = static_cast<std::int32_t>(reader.ULong());
            return true;
        case CORBA::tk_ulong:
        case CORBA::tk_enum:
            value = reader.ULong();
            return true;
        case CORBA::tk_longlong:
        case CORBA::tk_ulonglong:
            value = static_cast<std::int64_t>(reader.ULongLong());
            return true;
        default:
            return false;
    }
}

std::string_view SkipTypeCode(CdrReader& reader) {
    const auto kind = static_cast<CORBA::TCKind>(reader.ULong());
    const char* const begin = reader.Position() - sizeof(std::uint32_t);
    switch (ParametersOf(kind)) {
        case Parameters::kNone:
            break;
        case Parameters::kBound:
            reader.ULong();
            break;
        case Parameters::kDigitsAndScale:
            reader.UShort();
            reader.UShort();
            break;
        case Parameters::kEncapsulation:
            reader.OctetSequence();
            break;
        case Parameters::kUnknown:
            NotAType();
    }
    return std::string_view(begin, static_cast<std::size_t>(reader.Position() - begin));
}

TypeTable::Index TypeTable::Unaliased(Index index) const {
    while (m_types[index].kind == CORBA::tk_alias) {  // ends, since the builder lets no alias name itself
        index = m_types[index].content;
    }
    return index;
}

/// Turns the CDR form of one TypeCode into a table. The places at which a TypeCode begins are kept, since an
/// indirection may name them.
class TypeTableBuilder {
  public:
    TypeTablePtr Build(CdrReader& reader) {
        m_table->m_root = Read(reader, 0);
        return m_table;
    }

  private:
    using Index = TypeTable::Index;
    using Type = TypeTable::Type;

    Type& At(Index index) { return m_table->m_types[index]; }

    Index Read(CdrReader& reader, unsigned depth) {
        if (depth > kMaxDepth || m_table->m_types.size() >= kMaxTypes) {
            TooLarge();
        }
        const std::uint32_t kind = reader.ULong();
        const auto place = reinterpret_cast<std::uintptr_t>(reader.Position() - sizeof kind);
        if (kind == kIndirection) {
            return Indirect(reader);
        }
        m_table->m_types.emplace_back().kind = static_cast<CORBA::TCKind>(kind);
        const auto index = static_cast<Index>(m_table->m_types.size() - 1);
        // An alias can't be part of what it stands for, so it is not to be found before it is complete.
        const bool alias = kind == CORBA::tk_alias;
        if (!alias) {
            m_places.emplace(place, index);
        }
        ReadParameters(reader, index, depth);
        if (alias) {
            m_places.emplace(place, index);
        }
        return index;
    }

    Index Indirect(CdrReader& reader) {
        const std::int64_t offset = static_cast<std::int32_t>(reader.ULong());
        const auto from = reinterpret_cast<std::uintptr_t>(reader.Position() - sizeof(std::uint32_t));
        const auto target = m_places.find(from + static_cast<std::uintptr_t>(offset));
        if (target == m_places.end()) {
            NotAType();
        }
        return target->second;
    }

    void ReadParameters(CdrReader& reader, Index index, unsigned depth) {
        switch (ParametersOf(At(index).kind)) {
            case Parameters::kNone:
                return;
            case Parameters::kBound:
                reader.ULong();
                return;
            case Parameters::kDigitsAndScale:
                At(index).length = reader.UShort();
                At(index).scale = static_cast<std::int16_t>(reader.UShort());
                return;
            case Parameters::kEncapsulation:
                return ReadEncapsulation(CdrReader::Encapsulation(reader.OctetSequence()), index, depth);
            case Parameters::kUnknown:
                NotAType();
        }
    }

    void ReadEncapsulation(CdrReader reader, Index index, unsigned depth) {
        const CORBA::TCKind kind = At(index).kind;
        if (kind == CORBA::tk_sequence || kind == CORBA::tk_array) {
            return ReadContent(reader, index, depth);
        }
        At(index).id = std::string(reader.String());
        At(index).name = std::string(reader.String());
        switch (kind) {
            case CORBA::tk_struct:
            case CORBA::tk_except:
                return ReadMembers(reader, index, depth);
            case CORBA::tk_union:
                return ReadUnion(reader, index, depth);
            case CORBA::tk_enum:
                return ReadEnumerators(reader, index);
            case CORBA::tk_alias: {
                const Index content = Read(reader, depth + 1);
                At(index).content = content;
                return;
            }
            default:
                return;
        }
    }

    /// The type of a member or an element. Every such type takes up at least a byte of a value, which keeps
    /// the effort in proportion to the value's size.
    Index ReadPart(CdrReader& reader, unsigned depth) {
        const Index index = Read(reader, depth + 1);
        const CORBA::TCKind kind = At(m_table->Unaliased(index)).kind;
        if (kind == CORBA::tk_null || kind == CORBA::tk_void || kind == CORBA::tk_except) {
            NotAType();
        }
        return index;
    }

    void ReadMembers(CdrReader& reader, Index index, unsigned depth) {
        const std::uint32_t count = reader.ULong();
        if (count == 0 && At(index).kind == CORBA::tk_struct) {
            NotAType();
        }
        for (std::uint32_t i = 0; i < count; ++i) {
            TypeTable::Member member;
            member.name = std::string(reader.String());
            member.type = ReadPart(reader, depth);
            At(index).members.push_back(std::move(member));
        }
    }

    void ReadEnumerators(CdrReader& reader, Index index) {
        const std::uint32_t count = reader.ULong();
        for (std::uint32_t i = 0; i < count; ++i) {
            TypeTable::Member member;
            member.name = std::string(reader.String());
            At(index).members.push_back(std::move(member));
        }
    }

    void ReadUnion(CdrReader& reader, Index index, unsigned depth) {
        const Index discriminator = ReadPart(reader, depth);
        const CORBA::TCKind kind = At(m_table->Unaliased(discriminator)).kind;
        if (!IsDiscriminator(kind)) {
            NotAType();  // a value without members would take up nothing
        }
        At(index).content = discriminator;
        const auto fallback = static_cast<std::int32_t>(reader.ULong());
        const std::uint32_t count = reader.ULong();
        for (std::uint32_t i = 0; i < count; ++i) {
            TypeTable::Member member;
            ReadDiscriminator(reader, kind, member.label);
            member.name = std::string(reader.String());
            member.type = ReadPart(reader, depth);
            member.by_default = fallback >= 0 && i == static_cast<std::uint32_t>(fallback);
            At(index).members.push_back(std::move(member));
        }
    }

    void ReadContent(CdrReader& reader, Index index, unsigned depth) {
        const Index content = ReadPart(reader, depth);
        At(index).content = content;
        At(index).length = reader.ULong();
        if (At(index).kind == CORBA::tk_array && At(index).length == 0) {
            NotAType();
        }
    }

    std::shared_ptr<TypeTable> m_table = std::make_shared<TypeTable>();
    std::map<std::uintptr_t, Index> m_places;
};

TypeTablePtr TypeTable::Read(CdrReader& reader) {
    return TypeTableBuilder().Build(reader);
}

}  // namespace qv_notify::etcl
