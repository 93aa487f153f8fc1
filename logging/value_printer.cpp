#include "logging/value_printer.h"

#include <tao/DynamicAny/DynamicAny.h>

#include <algorithm>
#include <charconv>
#include <cstring>

#include "logging/ior_text.h"
#include "logging/silent_value.h"
#include "logging/union_discriminator.h"
#include "logging/value_plan_cache.h"
#include "orb/value_access.h"

namespace NS_CORBA {

namespace {

constexpr char kNoText[] = "null";
constexpr unsigned kMaxDepth = 1000;
// Names of members come back once per element, so that a peer's type could blow a value up a thousand times.
// Values of an interface's types stay far below this.
constexpr std::size_t kTextAlways = 1 << 20;  // bytes
constexpr std::size_t kTextPerByte = 16;

class DepthGuard {
  public:
    explicit DepthGuard(unsigned& depth) : m_depth(depth) {
        if (m_depth >= kMaxDepth) {
            throw CORBA::IMP_LIMIT(0, CORBA::COMPLETED_NO);
        }
        ++m_depth;
    }
    ~DepthGuard() { --m_depth; }
    DepthGuard(const DepthGuard&) = delete;
    DepthGuard& operator=(const DepthGuard&) = delete;

  private:
    unsigned& m_depth;
};

// What usually follows in a record, so that the long text needn't be moved for it.
constexpr std::size_t kRoomBehindOctets = 1024;

/// Each of `count` octets and a blank behind it. In blocks of a fixed size, which the compiler turns into
/// vector instructions.
void Interleave(const char* octets, std::size_t count, char* __restrict out) {
    constexpr std::size_t kBlock = 32;
    for (; count >= kBlock; count -= kBlock, octets += kBlock, out += 2 * kBlock) {
        for (std::size_t i = 0; i < kBlock; ++i) {
            out[2 * i] = octets[i];
            out[2 * i + 1] = ' ';
        }
    }
    for (std::size_t i = 0; i < count; ++i) {
        out[2 * i] = octets[i];
        out[2 * i + 1] = ' ';
    }
}

/// The member that the discriminator selects; null when it selects none.
const ValuePlan::Member* ActiveMember(const ValuePlan::Type& type, std::int64_t discriminator) {
    const auto label = std::lower_bound(
        type.labels.begin(), type.labels.end(), discriminator,
        [](const ValuePlan::Label& candidate, std::int64_t value) { return candidate.value < value; });
    if (label != type.labels.end() && label->value == discriminator) {
        return &type.members[label->member];
    }
    const auto fallback = static_cast<std::size_t>(type.fallback);
    return type.fallback >= 0 && fallback < type.members.size() ? &type.members[fallback] : nullptr;
}

}  // namespace

void ValuePrinter::Print(const ValuePlan& plan, CdrReader& reader) {
    m_limit = m_out.size() + kTextAlways + kTextPerByte * reader.BytesAhead();
    PrintType(plan, plan.root(), reader);
}

void ValuePrinter::PrintLast(const ValuePlan& plan, CdrReader& reader) {
    const std::size_t begin = m_out.size();
    try {
        Print(plan, reader);
    } catch (const CORBA::NO_IMPLEMENT&) {
        if (m_out.size() != begin) {
            throw;  // it is a part of the value: all that has parts begins with a text
        }
        Put(kNoText);
    }
}

void ValuePrinter::TooLong() {
    throw CORBA::IMP_LIMIT(0, CORBA::COMPLETED_NO);
}

void ValuePrinter::Skip(const ValuePlan& plan, CdrReader& reader) {
    m_silent = true;
    Print(plan, reader);
    m_silent = false;
}

void ValuePrinter::PrintType(const ValuePlan& plan, ValuePlan::Index index, CdrReader& reader) {
    const ValuePlan::Type& type = plan.at(index);
    switch (type.kind) {
        case CORBA::tk_boolean:
            Put(reader.Octet() != 0 ? "true" : "false");
            return;
        case CORBA::tk_octet:
            return PrintOctet(static_cast<char>(reader.Octet()));
        case CORBA::tk_short:
            return PrintInteger(static_cast<std::int16_t>(reader.UShort()));
        case CORBA::tk_ushort:
            return PrintInteger(reader.UShort());
        case CORBA::tk_long:
            return PrintInteger(static_cast<std::int32_t>(reader.ULong()));
        case CORBA::tk_ulong:
        case CORBA::tk_enum:
            return PrintInteger(reader.ULong());
        case CORBA::tk_float:
            return PrintFloat(reader.Float());
        case CORBA::tk_string:
            Put(reader.String());
            return;
        case CORBA::tk_except:
            if (qv_orb::ExceptionsInAnysCarryId()) {
                reader.String();
            }
            return PrintMembers(plan, type, reader);
        case CORBA::tk_struct:
            return PrintMembers(plan, type, reader);
        case CORBA::tk_union:
            return PrintUnion(plan, type, reader);
        case CORBA::tk_sequence:
            return PrintElements(plan, type.content, reader.ULong(), reader);
        case CORBA::tk_array:
            return PrintElements(plan, type.content, type.length, reader);
        case CORBA::tk_any:
            return PrintAny(reader);
        case CORBA::tk_objref:
            return PrintReference(type, reader);
        default:
            return PrintNull(type, reader);
    }
}

void ValuePrinter::PrintMembers(const ValuePlan& plan, const ValuePlan::Type& type, CdrReader& reader) {
    const DepthGuard guard(m_depth);
    if (type.members.empty()) {
        Put('{');
    }
    for (const ValuePlan::Member& member : type.members) {
        Put(member.lead);
        PrintType(plan, member.type, reader);
    }
    Put('}');
}

void ValuePrinter::PrintUnion(const ValuePlan& plan, const ValuePlan::Type& type, CdrReader& reader) {
    const DepthGuard guard(m_depth);
    const std::int64_t discriminator = ReadDiscriminator(reader, plan.at(type.content).kind);
    const ValuePlan::Member* const member = ActiveMember(type, discriminator);
    if (!member) {
        if (m_silent) {
            return;
        }
        throw DynamicAny::DynAny::InvalidValue();
    }
    Put(member->name);
    Put(' ');
    PrintType(plan, member->type, reader);
}

void ValuePrinter::PrintElements(const ValuePlan& plan, ValuePlan::Index content, std::uint32_t count,
                                 CdrReader& reader) {
    const DepthGuard guard(m_depth);
    Put('{');
    if (plan.at(content).kind == CORBA::tk_octet) {
        PrintOctets(reader.Octets(count));
    } else {
        for (std::uint32_t i = 0; i < count; ++i) {
            if (i != 0) {
                Put(' ');
            }
            PrintType(plan, content, reader);
        }
    }
    Put('}');
}

void ValuePrinter::PrintOctet(char octet) {
    Put(octet);
    m_printedNul = m_printedNul || (octet == 0 && !m_silent);
}

// Sequences of octets hold whole files: the text's space at once and no more than it takes.
void ValuePrinter::PrintOctets(std::string_view octets) {
    if (octets.empty() || m_silent) {
        return;
    }
    constexpr std::size_t kChunk = 2048;
    char text[2 * kChunk];
    m_out.reserve(m_out.size() + 2 * octets.size() + kRoomBehindOctets);
    while (!octets.empty()) {
        const std::size_t count = std::min(octets.size(), kChunk);
        Interleave(octets.data(), count, text);
        m_printedNul = m_printedNul || std::memchr(octets.data(), 0, count) != nullptr;
        m_out.append(text, 2 * count);
        octets.remove_prefix(count);
    }
    m_out.pop_back();  // no blank behind the last one
}

void ValuePrinter::PrintAny(CdrReader& reader) {
    const DepthGuard guard(m_depth);
    const PlanHandle plan = PlanOfNextType(reader);
    PrintType(*plan, plan->root(), reader);
}

void ValuePrinter::PrintReference(const ValuePlan::Type& type, CdrReader& reader) {
    if (m_silent) {
        return SkipReference(reader);
    }
    if (!m_hasOrb()) {
        throw NoOrb{};
    }
    Put("Object reference( ");
    Put(type.id);
    Put(" )");
    AppendIorText(reader, m_out);
    Put('\n');
}

/// Kinds that have no text of their own.
void ValuePrinter::PrintNull(const ValuePlan::Type& type, CdrReader& reader) {
    SkipSilentValue(type, reader);
    Put(kNoText);
}

// To text by to_chars, so that neither the process's locale nor a stream's puts separators into numbers.
void ValuePrinter::PrintFloat(float value) {
    constexpr int kDigits = 6;  // what a stream shows by default
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, static_cast<double>(value),
                                   std::chars_format::general, kDigits);
    Put(std::string_view(text, static_cast<std::size_t>(end.ptr - text)));
}

template <class Integer>
void ValuePrinter::PrintInteger(Integer value) {
    char text[16];
    const auto end = std::to_chars(text, text + sizeof text, value);
    Put(std::string_view(text, static_cast<std::size_t>(end.ptr - text)));
}

}  // namespace NS_CORBA
