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
    const DynamicAny::DynAnyFactory_var factory = Factory();
    return factory->create_dyn_any(value);
}

DynamicAny::DynAny_ptr TAO_DynAnyFactory::create_dyn_any_from_type_code(CORBA::TypeCode_ptr type) {
    const DynamicAny::DynAnyFactory_var factory = Factory();
    return factory->create_dyn_any_from_type_code(type);
}
