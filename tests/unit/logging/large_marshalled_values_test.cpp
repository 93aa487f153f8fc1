#include "tests/unit/logging/marshalled_fixture.h"

// Values of which the ORB is asked for no copy, and those of which it has to be.

namespace {

using qv_test::Last;
using qv_test::Mixed;

class LargeMarshalledValues : public qv_test::MarshalledFixture {};

CORBA::TypeCode_ptr StructOfLongs(CORBA::ULong count) {
    CORBA::StructMemberSeq members;
    members.length(count);
    for (CORBA::ULong i = 0; i < count; ++i) {
        members[i].name = CORBA::string_dup(("member_with_a_number_" + std::to_string(i)).c_str());
        members[i].type = CORBA::TypeCode::_duplicate(CORBA::_tc_long);
    }
    return qv_test::TestOrb()->create_struct_tc("IDL:Values/Wide:1.0", "Wide", members);
}

TEST_F(LargeMarshalledValues, ALargeResult) {
    const Values::Octets_var octets = target->blob(300000);
    EXPECT_EQ(Last().direct[1].text, Last().throughAnys[1].text);
    EXPECT_GT(Last().direct[1].text.size(), 600000u);
    EXPECT_EQ(Last().direct[1].text.substr(Last().direct[1].text.size() - 2), "}\n");
}

TEST_F(LargeMarshalledValues, LargeTextsAndSequencesOfEverySizeModuloTheAlignment) {
    capture->SetVerbose(1);
    for (CORBA::ULong extra = 0; extra < 9; ++extra) {
        const std::string text(70000 + extra, 't');
        Calls::Flags flags;
        flags.length(66000 + extra);
        for (CORBA::ULong i = 0; i < flags.length(); ++i) {
            flags[i] = i % 3 == 0;
        }
        CORBA::String_var more;
        CORBA::Long behind = 0;
        const Calls::Flags_var back = target->large(text.c_str(), flags, more.out(), behind);
        EXPECT_EQ(Last().direct[0].text, Last().throughAnys[0].text) << extra;
        EXPECT_EQ(Last().direct[1].text, Last().throughAnys[1].text) << extra;
        EXPECT_EQ(Last().direct[1].result, 0);
        EXPECT_NE(
            Last().direct[1].text.find("t\n--- Parameter No.4 = 4711\n } large @return: {true false false "),
            std::string::npos);
    }
}

// The ORB unpacks an Any inside of another one for the time that it marshals it.
TEST_F(LargeMarshalledValues, ManyOctetsInAnAnyInsideOfAnAny) {
    Values::Octets octets;
    octets.length(70000);
    std::string text;
    for (CORBA::ULong i = 0; i < octets.length(); ++i) {
        octets[i] = static_cast<CORBA::Octet>('a' + i % 26);
        text += text.empty() ? "{" : " ";
        text += static_cast<char>(octets[i]);
    }
    CORBA::Any inner;
    inner <<= octets;
    CORBA::Any outer;
    outer <<= inner;
    Mixed mixed;
    mixed.Call(target, outer);
    ExpectSame(Mixed::Request(text + "}"), Mixed::Reply(text + "}"));
}

TEST_F(LargeMarshalledValues, AnAnyOfATypeThatIsLargeItself) {
    const CORBA::TypeCode_var type = StructOfLongs(4000);
    const DynamicAny::DynAny_var value = qv_test::TestDynAnyFactory()->create_dyn_any_from_type_code(type);
    const CORBA::Any_var any = value->to_any();
    value->destroy();
    Mixed mixed;
    mixed.Call(target, any.in());
    std::string text;
    for (int i = 0; i < 4000; ++i) {
        text += (i == 0 ? "{member_with_a_number_" : " member_with_a_number_") + std::to_string(i) + " 0";
    }
    ExpectSame(Mixed::Request(text + "}"), Mixed::Reply(text + "}"));
}

// The ORB copies such elements as one block, padding included.
TEST_F(LargeMarshalledValues, ManyStructsWithPaddingInAnAny) {
    Calls::Spreads spreads;
    spreads.length(20000);
    std::string text;
    for (CORBA::ULong i = 0; i < spreads.length(); ++i) {
        spreads[i].mark = static_cast<CORBA::Octet>('a' + i % 26);
        spreads[i].number = static_cast<CORBA::Long>(i);
        text += text.empty() ? "{" : " ";
        text +=
            std::string("{mark ") + static_cast<char>(spreads[i].mark) + " number " + std::to_string(i) + "}";
    }
    CORBA::Any any;
    any <<= spreads;
    Mixed mixed;
    mixed.Call(target, any);
    ExpectSame(Mixed::Request(text + "}"), Mixed::Reply(text + "}"));
}

TEST_F(LargeMarshalledValues, ALargeTextInATypeThatContainsItself) {
    const std::string name(70000, 'n');
    Values::Tree tree;
    tree.name = CORBA::string_dup(name.c_str());
    tree.children.length(1);
    tree.children[0].name = CORBA::string_dup("leaf");
    target->plant(tree);
    const std::string block =
        "ParaList = {\n--- Parameter No.1 = {name " + name + " children {{name leaf children {}}}}\n } ";
    ExpectSame(block, block + "ReplyStatus = SUCCESSFUL!\n");
}

}  // namespace
