#include <tao/DynamicAny/DynamicAny.h>

#include "logging/agent_orb.h"
#include "logging/corbalogutil.h"
#include "logging/logmgr.h"
#include "logging/value_plan_cache.h"
#include "logging/value_printer.h"
#include "orb/portability.h"
#include "orb/value_access.h"

// Values of any type as text.

namespace NS_CORBA {

namespace {

constexpr char kSourceFile[] = "logmgr";
constexpr int kCorbaExceptionLine = 1054;
constexpr int kOtherExceptionLine = 1059;
constexpr int kTraceLevel = 3;

struct Nothing {};

/// Runs `print`, and turns what it raises, `Passing` apart, into a result and a line in the log.
template <class Passing = Nothing, class Print>
int Guarded(Print print) {
    try {
        return print();
    } catch (const Passing&) {
        throw;
    } catch (const ValuePrinter::NoOrb&) {
        return -1;
    } catch (const CORBA::Exception& ex) {
        SetPos(kSourceFile, kCorbaExceptionLine);
        TaDebugWithPara(kTraceLevel,
                        "[CorbaLogMgr::ParseAnyData] CORBA exception <%s> received when parsing any data!",
                        qv_orb::ExceptionText(ex).c_str());
    } catch (...) {
        SetPos(kSourceFile, kOtherExceptionLine);
        TaDebug(kTraceLevel, "[CorbaLogMgr::ParseAnyData] CORBA exception received when parsing any data!");
    }
    return -1;
}

}  // namespace

bool CorbaLogMgr::HasOrb() const {
    return !CORBA::is_nil(m_ORB.in()) || !CORBA::is_nil(CORBA::ORB_var(AgentOrb()).in());
}

/// A value that has others behind it. One whose end isn't to be told raises CORBA::NO_IMPLEMENT.
int CorbaLogMgr::AppendNext(CORBA::TypeCode_ptr type, CdrReader& reader, std::string& text,
                            bool& printedNul) {
    if (CORBA::is_nil(type)) {
        return -1;
    }
    ValuePrinter printer(text, [this] { return HasOrb(); });
    const int result = Guarded<CORBA::NO_IMPLEMENT>([&] {
        printer.Print(*PlanOf(type), reader);
        return 0;
    });
    printedNul = printedNul || printer.printedNul();
    return result;
}

int CorbaLogMgr::AppendAny(const CORBA::Any& value, std::string& text, bool& printedNul) {
    const qv_orb::ValueBytes bytes(value);
    CdrReader reader(bytes.data(), bytes.size(), bytes.swapped());
    const CORBA::TypeCode_ptr type = qv_orb::TypeOf(value);
    if (CORBA::is_nil(type)) {
        return -1;
    }
    ValuePrinter printer(text, [this] { return HasOrb(); });
    const int result = Guarded([&] {
        printer.PrintLast(*PlanOf(type), reader);
        return 0;
    });
    printedNul = printedNul || printer.printedNul();
    return result;
}

/// As ParseAnyData, for a value that no DynAny was made of.
int CorbaLogMgr::PrintWhole(const CORBA::Any& value, std::string& text) {
    bool printedNul = false;
    return Guarded([&] { return AppendAny(value, text, printedNul); });
}

int CorbaLogMgr::ParseAnyData(DynamicAny::DynAny* value, std::ostringstream& out) {
    if (!value) {
        return -1;
    }
    std::string text;
    bool printedNul = false;
    const int result = Guarded([&] {
        const CORBA::Any_var any = value->to_any();
        return AppendAny(any.in(), text, printedNul);
    });
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
    return result;
}

}  // namespace NS_CORBA
