#include "orb_internals.h"

#include <dlfcn.h>

// The ORB marshals a type code into an encapsulation that leaves its padding as it finds it in memory. Equal
// type codes would differ for those who compare bytes, such as a service that has to recognise an event by
// them, and what was in memory before would go to peers and to disk. So an encapsulation always starts out
// cleared.
extern "C" {

QV_ORB_API void QvMakeEncapsulation(void* stream, CORBA::ULong size,
                                    CORBA::Boolean clear) __asm__("_ZN22cdrEncapsulationStreamC1Ejb");

void QvMakeEncapsulation(void* stream, CORBA::ULong size, CORBA::Boolean) {
    using Make = void (*)(void*, CORBA::ULong, CORBA::Boolean);
    static const auto underlying =
        reinterpret_cast<Make>(dlsym(RTLD_NEXT, "_ZN22cdrEncapsulationStreamC1Ejb"));
    underlying(stream, size, true);
}
}
