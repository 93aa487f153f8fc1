// The operation tables that the IDL compiler writes.

#include "qv_orb/operation_table.h"

#include <gtest/gtest.h>

#include "inheritedS.h"
#include "tablesS.h"

namespace {

using qv_orb::FindOperation;
using qv_orb::OperationEntry;

std::string Name(CORBA::TypeCode_ptr type) {
    switch (type->kind()) {
        case CORBA::tk_string:
            return "string" + (type->length() != 0 ? "<" + std::to_string(type->length()) + ">" : "");
        case CORBA::tk_wstring:
            return "wstring" + (type->length() != 0 ? "<" + std::to_string(type->length()) + ">" : "");
        case CORBA::tk_boolean:
            return "boolean";
        case CORBA::tk_void:
            return "void";
        case CORBA::tk_any:
            return "any";
        case CORBA::tk_TypeCode:
            return "TypeCode";
        default:
            return type->id();
    }
}

/// "result(mode:type …)raises", "none" for an operation without a table.
std::string Signature(const char* id, const char* operation) {
    const OperationEntry* entry = FindOperation(id, operation);
    if (entry == nullptr) {
        return "none";
    }
    const char* const modes[] = {"in:", "out:", "inout:"};
    std::string text = Name(entry->result()) + "(";
    for (std::size_t i = 0; i < entry->parameter_count; ++i) {
        text += (i == 0 ? "" : " ") + std::string(modes[entry->parameters[i].mode]) +
                entry->parameters[i].name + ":" + Name(entry->parameters[i].type());
    }
    text += ")";
    for (std::size_t i = 0; i < entry->exception_count; ++i) {
        text += Name(entry->exceptions[i]()) + ";";
    }
    return text;
}

constexpr char kLater[] = "IDL:Near/Later:1.0";

TEST(OperationTableTest, OwnOperation) {
    EXPECT_EQ(Signature(kLater, "look"),
              "IDL:Near/Later/Mood:1.0(in:at:IDL:Near/Later/Key:1.0 in:how:string<5> in:where:wstring<6> "
              "in:of:TypeCode)IDL:Near/Later/Missing:1.0;IDL:Far/Late:1.0;");
    EXPECT_EQ(Signature(kLater, "hint"), "void(in:value:any)");
}

TEST(OperationTableTest, InheritedThroughTypedefsAndADiamond) {
    for (const char* id : {kLater, "IDL:Near/Left:1.0", "IDL:Near/Right:1.0", "IDL:Far/Root:1.0"}) {
        EXPECT_EQ(Signature(id, "from_root"), "void(in:tag:IDL:Far/Label:1.0)IDL:Far/Late:1.0;") << id;
        EXPECT_EQ(Signature(id, "_get_mark"), "IDL:Far/Label:1.0()") << id;
    }
    EXPECT_EQ(Signature(kLater, "_set_mark"), "none");
}

TEST(OperationTableTest, AttributesDeclaredTogether) {
    for (const char* name : {"first", "second"}) {
        EXPECT_EQ(Signature(kLater, (std::string("_get_") + name).c_str()), "string<4>()");
        EXPECT_EQ(Signature(kLater, (std::string("_set_") + name).c_str()), "void(in:value:string<4>)");
    }
}

TEST(OperationTableTest, ObjectReferencesOfForwardDeclaredInterfaces) {
    EXPECT_EQ(Signature("IDL:Near/Left:1.0", "meet"),
              "void(in:other:IDL:Near/Later:1.0 inout:another:IDL:Near/Left:1.0 "
              "out:any_other:IDL:omg.org/CORBA/Object:1.0)");
}

TEST(OperationTableTest, TypesAndBasesOfIncludedServices) {
    EXPECT_EQ(Signature(kLater, "channel"),
              "IDL:omg.org/CosNotifyChannelAdmin/EventChannel:1.0"
              "(in:event:IDL:omg.org/CosNotification/StructuredEvent:1.0)");
    EXPECT_EQ(Signature("IDL:Near/Admin:1.0", "extra"), "void()");
    EXPECT_EQ(Signature("IDL:Near/Admin:1.0", "_get_MyID"),
              "IDL:omg.org/CosNotifyChannelAdmin/AdminID:1.0()");
    EXPECT_EQ(Signature("IDL:Near/Admin:1.0", "obtain_push_consumer"),
              "IDL:omg.org/CosEventChannelAdmin/ProxyPushConsumer:1.0()");
}

TEST(OperationTableTest, ServicesOfTheSeamItself) {
    EXPECT_EQ(Signature("IDL:omg.org/CosNotifyChannelAdmin/EventChannelFactory:1.0", "get_all_channels"),
              "IDL:omg.org/CosNotifyChannelAdmin/ChannelIDSeq:1.0()");
}

TEST(OperationTableTest, OperationsOfEveryObject) {
    for (const char* id : {kLater, "IDL:Bare:1.0", "IDL:Without/Table:1.0"}) {
        EXPECT_EQ(Signature(id, "_non_existent"), "boolean()") << id;
        EXPECT_EQ(Signature(id, "_is_a"), "boolean(in:logical_type_id:string)") << id;
    }
}

TEST(OperationTableTest, WhatIsNotThere) {
    EXPECT_EQ(Signature(kLater, "no_such"), "none");
    EXPECT_EQ(Signature("IDL:Without/Table:1.0", "look"), "none");
    EXPECT_EQ(Signature("IDL:Bare:1.0", "look"), "none");
}

TEST(OperationTableTest, BoundedStringsAreMadeOnce) {
    EXPECT_EQ(qv_orb::BoundedString(9), qv_orb::BoundedString(9));
    EXPECT_NE(qv_orb::BoundedString(9), qv_orb::BoundedString(10));
    EXPECT_EQ(qv_orb::BoundedWstring(9)->length(), 9u);
}

}  // namespace
