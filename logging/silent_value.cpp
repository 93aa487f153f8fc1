#include "logging/silent_value.h"

namespace NS_CORBA {

void SkipSilentValue(const ValuePlan::Type& type, CdrReader& reader) {
    switch (type.kind) {
        case CORBA::tk_null:
        case CORBA::tk_void:
            return;
        case CORBA::tk_char:
            return reader.Skip(1);
        case CORBA::tk_double:
        case CORBA::tk_longlong:
        case CORBA::tk_ulonglong:
            return reader.SkipAligned(8, 8);
        case CORBA::tk_longdouble:
            return reader.SkipAligned(8, 16);
        case CORBA::tk_wchar:
            return reader.Skip(reader.Octet());
        case CORBA::tk_wstring:
        case CORBA::tk_Principal:
            return reader.Skip(reader.ULong());
        case CORBA::tk_fixed:
            return reader.Skip(type.length / 2 + 1);
        case CORBA::tk_TypeCode:
            SkipTypeCode(reader);
            return;
        default:
            throw CORBA::NO_IMPLEMENT(0, CORBA::COMPLETED_NO);
    }
}

}  // namespace NS_CORBA
