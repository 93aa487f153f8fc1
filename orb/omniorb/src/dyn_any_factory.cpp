#include "tao/DynamicAny/DynAnyFactory.h"

#include <omniORB4/anyStream.h>

#include <dynAnyImpl.h>

#include "orb_state.h"

namespace {

// The ORB's factory takes a lock that exists only while there is an ORB.
DynamicAny::DynAnyFactory_ptr Factory() {
    if (!qv_orb::orb_state().orb_exists) {
        throw CORBA::BAD_INV_ORDER(0, CORBA::COMPLETED_NO);
    }
    return omni::DynAnyFactoryImpl::theFactory();
}

}  // namespace

DynamicAny::DynAny_ptr TAO_DynAnyFactory::create_dyn_any(const CORBA::Any& value) {
    // In two steps, as the ORB's own way loses the object when the value doesn't go into it.
    const CORBA::TypeCode_var type = value.type();
    DynamicAny::DynAny_var made = create_dyn_any_from_type_code(type.in());
    try {
        made->from_any(value);
    } catch (...) {
        made->destroy();
        throw;
    }
    return made._retn();
}

DynamicAny::DynAny_ptr TAO_DynAnyFactory::create_dyn_any_from_type_code(CORBA::TypeCode_ptr type) {
    const DynamicAny::DynAnyFactory_var factory = Factory();
    return factory->create_dyn_any_from_type_code(type);
}
