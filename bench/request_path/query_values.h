// What the measured operation is called with.
#pragma once

#include "request_pathC.h"

inline bench::Filters SomeFilters() {
    bench::Filters filters;
    filters.length(3);
    for (CORBA::ULong i = 0; i < filters.length(); ++i) {
        filters[i].name = CORBA::string_dup("granularity");
        filters[i].code = static_cast<CORBA::Long>(i);
        filters[i].value = CORBA::string_dup("15 minutes");
    }
    return filters;
}

inline CORBA::Any SomeDetail() {
    CORBA::Any detail;
    detail <<= SomeFilters()[0];
    return detail;
}
