#include <gtest/gtest.h>
#include <tao/DynamicAny/DynAnyFactory.h>
#include <tao/DynamicAny/DynamicAny.h>

#include "orb/portability.h"

namespace {

class MakeDynAny : public ::testing::Test {
  protected:
    MakeDynAny() {
        int argc = 0;
        char* argv[] = {nullptr};
        orb_ = CORBA::ORB_init(argc, argv);
    }
    ~MakeDynAny() override { orb_->destroy(); }

    CORBA::ORB_var orb_;
};

class DynAnyFactory : public MakeDynAny {};

TEST(DynAnyWithoutOrb, IsRefused) {
    TAO_DynAnyFactory factory;
    EXPECT_THROW(factory.create_dyn_any(CORBA::Any()), CORBA::BAD_INV_ORDER);
    EXPECT_THROW(factory.create_dyn_any_from_type_code(CORBA::_tc_long), CORBA::BAD_INV_ORDER);
    EXPECT_THROW(qv_orb::MakeDynAny(CORBA::Any()), CORBA::BAD_INV_ORDER);
}

TEST_F(MakeDynAny, HoldsACopyOfTheValue) {
    CORBA::Any any;
    any <<= "first";
    DynamicAny::DynAny_var dyn = qv_orb::MakeDynAny(any);
    any <<= "second";
    const CORBA::String_var text = dyn->get_string();
    EXPECT_STREQ("first", text.in());
    dyn->destroy();
}

TEST_F(MakeDynAny, AnEmptyAnyIsAValueOfTypeNull) {
    DynamicAny::DynAny_var dyn = qv_orb::MakeDynAny(CORBA::Any());
    const CORBA::TypeCode_var type = dyn->type();
    EXPECT_EQ(CORBA::tk_null, type->kind());
    dyn->destroy();
}

TEST_F(DynAnyFactory, MakesBothKinds) {
    TAO_DynAnyFactory factory;
    CORBA::Any any;
    any <<= static_cast<CORBA::Long>(-7);
    DynamicAny::DynAny_var of_value = factory.create_dyn_any(any);
    EXPECT_EQ(-7, of_value->get_long());
    of_value->destroy();

    DynamicAny::DynAny_var of_type = factory.create_dyn_any_from_type_code(CORBA::_tc_long);
    EXPECT_EQ(0, of_type->get_long());
    of_type->destroy();
}

TEST_F(DynAnyFactory, RefusesWhatNoDynAnyCanHold) {
    TAO_DynAnyFactory factory;
    EXPECT_THROW(factory.create_dyn_any_from_type_code(CORBA::_tc_Principal),
                 DynamicAny::DynAnyFactory::InconsistentTypeCode);
    EXPECT_THROW(factory.create_dyn_any_from_type_code(CORBA::TypeCode::_nil()), CORBA::SystemException);
}

}  // namespace
