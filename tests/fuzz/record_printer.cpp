// The input is an Any as it stands on the wire: one octet for the byte order, seven for the alignment, then a
// TypeCode and a value. Whatever it says, printing it ends, reads nothing outside of it, and a skip goes as
// far as a print.

#include "logging/value_printer.h"

#include <tao/DynamicAny/DynamicAny.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "logging/value_plan_cache.h"

namespace {

using NS_CORBA::CdrReader;
using NS_CORBA::ValuePlan;
using NS_CORBA::ValuePrinter;

constexpr std::size_t kHead = 8;
// What the printer allows a value, and a little for what it appends without asking.
constexpr std::size_t kTextAlways = (1 << 20) + 1024;
constexpr std::size_t kTextPerByte = 20;

void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

enum class Outcome { kPrinted, kNoMember, kRefused };

Outcome Print(ValuePrinter& printer, const ValuePlan& plan, CdrReader& reader) {
    try {
        printer.Print(plan, reader);
        return Outcome::kPrinted;
    } catch (const DynamicAny::DynAny::InvalidValue&) {
        return Outcome::kNoMember;
    } catch (const CORBA::SystemException&) {
        return Outcome::kRefused;
    }
}

void Check(const char* begin, std::size_t size, bool swapped) {
    CdrReader reader(begin, size, swapped);
    NS_CORBA::PlanHandle plan;
    try {
        plan = NS_CORBA::PlanOfNextType(reader);
    } catch (const CORBA::SystemException&) {
        return;
    }
    CdrReader toSkip = reader;
    std::string text;
    ValuePrinter printer(text, [] { return true; });
    const Outcome outcome = Print(printer, *plan, reader);
    Require(text.size() <= kTextAlways + size * kTextPerByte);
    if (outcome != Outcome::kPrinted) {
        return;
    }
    Require(printer.printedNul() == (std::strlen(text.c_str()) != text.size()));
    std::string nothing;
    ValuePrinter(nothing, [] { return true; }).Skip(*plan, toSkip);
    Require(nothing.empty() && toSkip.Position() == reader.Position());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < kHead) {
        return 0;
    }
    // A buffer of its own, so that its start is aligned and its end is watched.
    const std::vector<char> bytes(data + kHead, data + size);
    Check(bytes.data(), bytes.size(), (data[0] & 1) != 0);
    return 0;
}
