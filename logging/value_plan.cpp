#include "logging/value_plan.h"

#include <algorithm>
#include <map>
#include <utility>

#include "logging/union_discriminator.h"

namespace NS_CORBA {

namespace {

constexpr std::uint32_t kIndirection = 0xffffffff;
constexpr unsigned kMaxDepth = 1000;
constexpr std::size_t kMaxTypes = 1 << 16;
// A name comes back in the text once per element: a few long ones would use up what the printer allows a
// value.
constexpr std::size_t kMaxName = 1024;

[[noreturn]] void NotAType() {
    throw CORBA::BAD_TYPECODE(0, CORBA::COMPLETED_NO);
}

[[noreturn]] void TooLarge() {
    throw CORBA::IMP_LIMIT(0, CORBA::COMPLETED_NO);
}

std::string Name(CdrReader& reader) {
    const std::string_view name = reader.String();
    if (name.size() > kMaxName) {
        TooLarge();
    }
    return std::string(name);
}

CdrReader Parameters(CdrReader& reader) {
    const std::string_view bytes = reader.OctetSequence();
    return CdrReader::Encapsulation(bytes);
}

bool HasComplexParameters(CORBA::TCKind kind) {
    switch (kind) {
        case CORBA::tk_null:
        case CORBA::tk_void:
        case CORBA::tk_short:
        case CORBA::tk_long:
        case CORBA::tk_ushort:
        case CORBA::tk_ulong:
        case CORBA::tk_float:
        case CORBA::tk_double:
        case CORBA::tk_boolean:
        case CORBA::tk_char:
        case CORBA::tk_octet:
        case CORBA::tk_any:
        case CORBA::tk_TypeCode:
        case CORBA::tk_Principal:
        case CORBA::tk_string:
        case CORBA::tk_longlong:
        case CORBA::tk_ulonglong:
        case CORBA::tk_longdouble:
        case CORBA::tk_wchar:
        case CORBA::tk_wstring:
        case CORBA::tk_fixed:
            return false;
        default:
            return true;
    }
}

/// Reads past the parameters of a kind; returns the digits of a fixed, otherwise 0.
std::uint32_t SkipParameters(CdrReader& reader, CORBA::TCKind kind) {
    if (HasComplexParameters(kind)) {
        reader.OctetSequence();
        return 0;
    }
    if (kind == CORBA::tk_string || kind == CORBA::tk_wstring) {
        reader.ULong();
        return 0;
    }
    if (kind == CORBA::tk_fixed) {
        const std::uint16_t digits = reader.UShort();
        reader.UShort();
        return digits;
    }
    return 0;
}

}  // namespace

/// Turns the CDR form of one TypeCode into a plan. Places in the bytes that an indirection may name, those at
/// which a TypeCode begins, are kept with the type read there.
class PlanBuilder {
  public:
    std::shared_ptr<const ValuePlan> Build(CdrReader& reader) {
        m_plan->m_root = Read(reader, 0);
        return m_plan;
    }

  private:
    using Index = ValuePlan::Index;

    ValuePlan::Type& At(Index index) { return m_plan->m_types[index]; }

    Index Add(CORBA::TCKind kind) {
        if (m_plan->m_types.size() >= kMaxTypes) {
            TooLarge();
        }
        m_plan->m_types.emplace_back().kind = kind;
        return static_cast<Index>(m_plan->m_types.size() - 1);
    }

    Index Read(CdrReader& reader, unsigned depth) {
        if (depth > kMaxDepth) {
            TooLarge();
        }
        const std::uint32_t kind = reader.ULong();
        const char* const place = reader.Position() - sizeof kind;
        if (kind == kIndirection) {
            return Indirect(reader);
        }
        if (kind == CORBA::tk_alias) {
            return Alias(reader, place, depth);
        }
        const Index index = Add(static_cast<CORBA::TCKind>(kind));
        m_places.emplace(place, index);
        ReadParameters(reader, index, depth);
        return index;
    }

    Index Indirect(CdrReader& reader) {
        const std::int64_t offset = static_cast<std::int32_t>(reader.ULong());
        const auto target = m_places.find(reader.Position() - sizeof(std::uint32_t) + offset);
        if (target == m_places.end()) {
            NotAType();
        }
        return target->second;
    }

    Index Alias(CdrReader& reader, const char* place, unsigned depth) {
        CdrReader parameters = Parameters(reader);
        parameters.String();
        parameters.String();
        const Index original = Read(parameters, depth + 1);
        m_places.emplace(place, original);
        return original;
    }

    void ReadParameters(CdrReader& reader, Index index, unsigned depth) {
        switch (At(index).kind) {
            case CORBA::tk_struct:
            case CORBA::tk_except:
                return ReadMembers(Parameters(reader), index, depth);
            case CORBA::tk_union:
                return ReadUnion(Parameters(reader), index, depth);
            case CORBA::tk_sequence:
            case CORBA::tk_array:
                return ReadContent(Parameters(reader), index, depth);
            case CORBA::tk_objref: {
                CdrReader parameters = Parameters(reader);
                At(index).id = Name(parameters);
                return;
            }
            default:
                At(index).length = SkipParameters(reader, At(index).kind);
        }
    }

    /// The type of a member or an element. Every such type takes up at least a byte of a value, which keeps
    /// the effort of printing in proportion to the value's size.
    Index ReadPart(CdrReader& reader, unsigned depth) {
        const Index index = Read(reader, depth + 1);
        const CORBA::TCKind kind = At(index).kind;
        if (kind == CORBA::tk_null || kind == CORBA::tk_void || kind == CORBA::tk_except) {
            NotAType();
        }
        return index;
    }

    void ReadMembers(CdrReader reader, Index index, unsigned depth) {
        reader.String();
        reader.String();
        const std::uint32_t count = reader.ULong();
        if (count == 0 && At(index).kind == CORBA::tk_struct) {
            NotAType();
        }
        for (std::uint32_t i = 0; i < count; ++i) {
            ValuePlan::Member member;
            member.name = Name(reader);
            member.lead = (i == 0 ? "{" : " ") + member.name + ' ';
            member.type = ReadPart(reader, depth);
            At(index).members.push_back(std::move(member));
        }
    }

    void ReadUnion(CdrReader reader, Index index, unsigned depth) {
        reader.String();
        reader.String();
        const Index discriminator = ReadPart(reader, depth);
        const CORBA::TCKind kind = At(discriminator).kind;
        At(index).content = discriminator;
        At(index).fallback = static_cast<std::int32_t>(reader.ULong());
        const std::uint32_t count = reader.ULong();
        for (std::uint32_t i = 0; i < count; ++i) {
            const std::int64_t label = ReadDiscriminator(reader, kind);
            ValuePlan::Member member;
            member.name = Name(reader);
            member.type = ReadPart(reader, depth);
            if (static_cast<std::int32_t>(i) != At(index).fallback) {
                At(index).labels.push_back({label, i});
            }
            At(index).members.push_back(std::move(member));
        }
        SortLabels(At(index).labels);
    }

    // Of equal labels the first one counts, as it stands first still.
    static void SortLabels(std::vector<ValuePlan::Label>& labels) {
        std::stable_sort(
            labels.begin(), labels.end(),
            [](const ValuePlan::Label& a, const ValuePlan::Label& b) { return a.value < b.value; });
    }

    void ReadContent(CdrReader reader, Index index, unsigned depth) {
        const Index content = ReadPart(reader, depth);
        At(index).content = content;
        At(index).length = reader.ULong();
        if (At(index).kind == CORBA::tk_array && At(index).length == 0) {
            NotAType();
        }
    }

    std::shared_ptr<ValuePlan> m_plan = std::make_shared<ValuePlan>();
    std::map<const char*, Index> m_places;
};

std::shared_ptr<const ValuePlan> ValuePlan::Read(CdrReader& reader) {
    return PlanBuilder().Build(reader);
}

const ValuePlan* ValuePlan::OfSimpleKind(CORBA::TCKind kind) {
    if (HasComplexParameters(kind) || kind == CORBA::tk_fixed) {
        return nullptr;
    }
    static const auto* const plans = [] {
        auto* const made = new std::vector<ValuePlan>(CORBA::tk_wstring + 1);
        for (std::size_t i = 0; i < made->size(); ++i) {
            (*made)[i].m_types.emplace_back().kind = static_cast<CORBA::TCKind>(i);
        }
        return made;
    }();
    return &(*plans)[kind];
}

std::string_view SkipTypeCode(CdrReader& reader) {
    const auto kind = static_cast<CORBA::TCKind>(reader.ULong());
    const char* const begin = reader.Position() - sizeof(std::uint32_t);
    if (static_cast<std::uint32_t>(kind) == kIndirection) {
        NotAType();
    }
    SkipParameters(reader, kind);
    return std::string_view(begin, static_cast<std::size_t>(reader.Position() - begin));
}

}  // namespace NS_CORBA
