#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "logging/cdr_reader.h"
#include "logging/value_plan.h"

namespace NS_CORBA {

/// Prints values of any type as text.
///
/// Everything is appended to one string. Raises CORBA::MARSHAL for bytes that don't hold a value of the type,
/// DynamicAny::DynAny::InvalidValue for a union without an active member, and CORBA::IMP_LIMIT for values
/// nested too deep to be printed and for those whose text takes a multiple of them, and CORBA::NO_IMPLEMENT
/// for a part whose end isn't to be told; the text then holds what was printed up to there. Used by one
/// thread.
class ValuePrinter {
  public:
    /// @param hasOrb asked when an object reference is met; without an ORB that raises NoOrb
    ValuePrinter(std::string& out, std::function<bool()> hasOrb) : m_out(out), m_hasOrb(std::move(hasOrb)) {}

    /// An object reference was met though there is no ORB to print it.
    struct NoOrb {};

    /// Whether a NUL was printed, which an octet of value 0 is.
    bool printedNul() const { return m_printedNul; }

    /// Prints the next value of `reader`, which stands behind it afterwards.
    void Print(const ValuePlan& plan, CdrReader& reader);

    /// As Print, for a value with nothing behind it: where its end isn't to be told, it has no text of its
    /// own and is not read.
    void PrintLast(const ValuePlan& plan, CdrReader& reader);

    /// Moves `reader` behind its next value without a text. What Print can't show doesn't matter here, except
    /// for values whose length isn't to be told.
    void Skip(const ValuePlan& plan, CdrReader& reader);

  private:
    void Put(std::string_view text) {
        if (m_silent) {
            return;
        }
        if (m_out.size() + text.size() > m_limit) {
            TooLong();
        }
        m_out += text;
    }
    [[noreturn]] static void TooLong();
    void Put(char character) { Put(std::string_view(&character, 1)); }
    void PrintType(const ValuePlan& plan, ValuePlan::Index index, CdrReader& reader);
    void PrintMembers(const ValuePlan& plan, const ValuePlan::Type& type, CdrReader& reader);
    void PrintUnion(const ValuePlan& plan, const ValuePlan::Type& type, CdrReader& reader);
    void PrintElements(const ValuePlan& plan, ValuePlan::Index content, std::uint32_t count,
                       CdrReader& reader);
    void PrintOctet(char octet);
    void PrintOctets(std::string_view octets);
    void PrintAny(CdrReader& reader);
    void PrintReference(const ValuePlan::Type& type, CdrReader& reader);
    void PrintNull(const ValuePlan::Type& type, CdrReader& reader);
    void PrintFloat(float value);
    template <class Integer>
    void PrintInteger(Integer value);

    std::string& m_out;
    const std::function<bool()> m_hasOrb;
    std::size_t m_limit = 0;  // of m_out, in bytes
    unsigned m_depth = 0;
    bool m_printedNul = false;
    bool m_silent = false;
};

}  // namespace NS_CORBA
