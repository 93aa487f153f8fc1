#pragma once

#include <gtest/gtest.h>
#include <tao/DynamicAny/DynamicAny.h>
#include <tao/ORB.h>
#include <tao/PortableServer/PortableServer.h>

namespace qv_test {

/// The one ORB of a test program, made on first use and never run.
inline CORBA::ORB_ptr TestOrb() {
    static CORBA::ORB_var orb = [] {
        int argc = 0;
        char* argv[] = {nullptr};
        return CORBA::ORB_init(argc, argv);
    }();
    return orb.in();
}

inline PortableServer::POA_ptr TestRootPoa() {
    static PortableServer::POA_var poa = [] {
        CORBA::Object_var object = TestOrb()->resolve_initial_references("RootPOA");
        return PortableServer::POA::_narrow(object);
    }();
    return poa.in();
}

inline DynamicAny::DynAnyFactory_ptr TestDynAnyFactory() {
    static DynamicAny::DynAnyFactory_var factory = [] {
        CORBA::Object_var object = TestOrb()->resolve_initial_references("DynAnyFactory");
        return DynamicAny::DynAnyFactory::_narrow(object);
    }();
    return factory.in();
}

}  // namespace qv_test
