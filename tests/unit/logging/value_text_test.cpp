#include <stdexcept>

#include "orb/portability.h"
#include "tests/unit/logging/fake_services.h"
#include "tests/unit/logging/golden_values.h"
#include "tests/unit/logging/log_fixture.h"
#include "tests/unit/logging/orb_environment.h"
#include "valuesS.h"

// Every kind of value, printed as a parameter and through a DynAny. The texts were made by hand from the
// rules of the record.

namespace {

using namespace NS_CORBA;
using qv_test::GoldenText;
using qv_test::Octets;
using qv_test::Point;
using qv_test::TestDynAnyFactory;
using qv_test::TestOrb;

class ValueText : public qv_test::LogFixture {
  protected:
    ValueText() { TestOrb(); }

    int AsParameter(const CORBA::Any& value, std::string& text) {
        Dynamic::ParameterList list;
        list.length(1);
        list[0].argument = value;
        list[0].mode = CORBA::PARAM_IN;
        return Manager().ParseParaInfo(&list, text, 0);
    }
    std::string AsParameter(const CORBA::Any& value) {
        std::string text;
        EXPECT_EQ(AsParameter(value, text), 0);
        return text;
    }
    std::string ThroughDynAny(const CORBA::Any& value) {
        std::ostringstream out;
        DynamicAny::DynAny_var dynamic = TestDynAnyFactory()->create_dyn_any(value);
        EXPECT_EQ(Manager().ParseAnyData(dynamic.in(), out), 0);
        dynamic->destroy();
        return out.str();
    }
    static std::string Block(const std::string& value) {
        return "ParaList = {\n--- Parameter No.1 = " + value + "\n } ";
    }

    qv_test::FakeServices services;
};

class GoldenValue : public ValueText, public ::testing::WithParamInterface<GoldenText> {};

TEST_P(GoldenValue, PrintsAsAParameter) {
    ASSERT_TRUE(InitLog());
    CORBA::Any value;
    GetParam().fill(value);
    EXPECT_EQ(AsParameter(value), Block(GetParam().text));
}

TEST_P(GoldenValue, PrintsTheSameAfterATravel) {
    ASSERT_TRUE(InitLog());
    CORBA::Any value;
    GetParam().fill(value);
    // A value that came from outside holds its bytes, and not what the program put in.
    CORBA::Any outer;
    outer <<= value;
    EXPECT_EQ(AsParameter(outer), Block(GetParam().text));
}

TEST_P(GoldenValue, PrintsTheSameThroughADynAny) {
    ASSERT_TRUE(InitLog());
    CORBA::Any value;
    GetParam().fill(value);
    EXPECT_EQ(ThroughDynAny(value), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Kinds, GoldenValue, ::testing::ValuesIn(qv_test::GoldenTexts()),
                         [](const auto& golden) { return std::string(golden.param.name); });

TEST_F(ValueText, AnAliasPrintsAsWhatItStandsFor) {
    ASSERT_TRUE(InitLog());
    CORBA::Any value;
    Values::Longs numbers;
    numbers.length(2);
    numbers[0] = 1;
    numbers[1] = 2;
    value <<= numbers;
    value.type(Values::_tc_MoreLongs);
    EXPECT_EQ(AsParameter(value), Block("{1 2}"));
    CORBA::Any title;
    title <<= CORBA::Any::from_string("title", 8);
    title.type(Values::_tc_Title);
    EXPECT_EQ(AsParameter(title), Block("title"));
}

TEST_F(ValueText, AZeroOctetEndsTheBlockThere) {
    ASSERT_TRUE(InitLog());
    CORBA::Any value;
    value <<= Octets(std::string("ab\0cd", 5));
    EXPECT_EQ(AsParameter(value), "ParaList = {\n--- Parameter No.1 = {a b ");
    EXPECT_EQ(ThroughDynAny(value), std::string("{a b \0 c d}", 11));
}

TEST_F(ValueText, AMegabyteOfOctetsPrintsWhole) {
    ASSERT_TRUE(InitLog());
    std::string bytes;
    std::string text;
    for (int i = 0; i < 1000003; ++i) {
        bytes += static_cast<char>('a' + i % 26);
        text += text.empty() ? "" : " ";
        text += bytes.back();
    }
    CORBA::Any value;
    value <<= Octets(bytes);
    EXPECT_EQ(AsParameter(value), Block("{" + text + "}"));
}

TEST_F(ValueText, AReferenceShowsItsTypeAndItsIor) {
    ASSERT_TRUE(InitLog());
    CorbaBaseAgentConfig::Instance()->SetOrb(TestOrb());
    const CORBA::Object_var object =
        TestOrb()->string_to_object("corbaloc:iiop:1.2@host.example.net:2809/key");
    const Values::Thing_var thing = Values::Thing::_unchecked_narrow(object);
    const CORBA::String_var ior = TestOrb()->object_to_string(thing);
    const std::string text = std::string("Object reference( IDL:Values/Thing:1.0 )") + ior.in() + "\n";
    CORBA::Any value;
    value <<= thing;
    EXPECT_EQ(AsParameter(value), Block(text));
    EXPECT_EQ(ThroughDynAny(value), text);
    Values::Reference held;
    held.target = thing;
    held.behind = 5;
    value <<= held;
    EXPECT_EQ(AsParameter(value), Block("{target " + text + " behind 5}"));
}

class ThingServant : public POA_Values::Thing {};

TEST_F(ValueText, AReferenceToAnObjectOfThisProcessIsTheOneThatAPeerGets) {
    ASSERT_TRUE(InitLog());
    CorbaBaseAgentConfig::Instance()->SetOrb(TestOrb());
    PortableServer::Servant_var<ThingServant> servant = new ThingServant;
    const PortableServer::ObjectId_var id = qv_test::TestRootPoa()->activate_object(servant.in());
    const CORBA::Object_var object = qv_test::TestRootPoa()->id_to_reference(id.in());
    const CORBA::String_var ior = TestOrb()->object_to_string(object);
    CORBA::Any value;
    value <<= Values::Thing_var(Values::Thing::_narrow(object)).in();
    EXPECT_EQ(AsParameter(value),
              Block(std::string("Object reference( IDL:Values/Thing:1.0 )") + ior.in() + "\n"));
    qv_test::TestRootPoa()->deactivate_object(id.in());
}

TEST_F(ValueText, ANilReferencePrintsAsTheOrbStringifiesIt) {
    ASSERT_TRUE(InitLog());
    CorbaBaseAgentConfig::Instance()->SetOrb(TestOrb());
    const CORBA::String_var ior = TestOrb()->object_to_string(CORBA::Object::_nil());
    CORBA::Any value;
    value <<= Values::Reference();
    EXPECT_EQ(AsParameter(value), Block(std::string("{target Object reference( IDL:Values/Thing:1.0 )") +
                                        ior.in() + "\n behind 0}"));
}

TEST_F(ValueText, AReferenceWithoutAnOrbFailsWithoutALine) {
    CorbaBaseAgentConfig::Instance()->SetOrb(CORBA::ORB::_nil());
    ASSERT_TRUE(InitLog());
    Values::Reference held;
    CORBA::Any value;
    value <<= held;
    std::string text;
    EXPECT_EQ(AsParameter(value, text), -1);
    EXPECT_EQ(text, "ParaList = {\n--- Parameter No.1 = {target \n}");
    EXPECT_TRUE(capture->Entries("corbadebug").empty());
}

TEST_F(ValueText, AUnionWithoutAnActiveMemberFails) {
    ASSERT_TRUE(InitLog());
    Values::Maybe maybe;
    maybe._default();
    CORBA::Any value;
    value <<= maybe;
    std::string text;
    EXPECT_EQ(AsParameter(value, text), -1);
    EXPECT_EQ(text, "ParaList = {\n--- Parameter No.1 = \n}");
    const auto debug = capture->Entries("corbadebug");
    ASSERT_EQ(debug.size(), 1u);
    qv_test::ExpectEntry(debug[0], "corbadebug", 3, "logmgr", 1054,
                         "[CorbaLogMgr::ParseAnyData] CORBA exception <" +
                             qv_orb::ExceptionText(DynamicAny::DynAny::InvalidValue()) +
                             "> received when parsing any data!");
}

TEST_F(ValueText, AValueTypeInAnAnyOfItsOwnIsNull) {
    ASSERT_TRUE(InitLog());
    const Values::Boxed_var boxed = new Values::Boxed(7);
    CORBA::Any box;
    box <<= boxed.in();
    CORBA::Any either;
    either <<= Values::Either::_nil();
    CORBA::Any wrapped;
    wrapped <<= box;
    for (const CORBA::Any& value : {box, either, wrapped}) {
        EXPECT_EQ(AsParameter(value), Block("null")) << value.type()->kind();
    }
    EXPECT_TRUE(capture->Entries("corbadebug").empty());
}

TEST_F(ValueText, AValueTypeInAStructFails) {
    ASSERT_TRUE(InitLog());
    Values::Carrier carrier;
    carrier.name = CORBA::string_dup("bag");
    carrier.inside = new Values::Boxed(7);
    CORBA::Any value;
    value <<= carrier;
    std::string text;
    EXPECT_EQ(AsParameter(value, text), -1);
    EXPECT_EQ(text, "ParaList = {\n--- Parameter No.1 = {name bag inside \n}");
    EXPECT_TRUE(capture->Contains("corbadebug", "NO_IMPLEMENT"));
}

TEST_F(ValueText, AnExceptionOfAnotherKindIsToldWithoutItsText) {
    ASSERT_TRUE(InitLog());
    Values::Maybe maybe;
    maybe._default();
    CORBA::Any value;
    value <<= maybe;
    capture->SetWriteHook([](const qv_test::LogEntry& entry) {
        if (entry.line == 1054) {
            throw std::runtime_error("disk full");
        }
    });
    std::ostringstream out;
    const DynamicAny::DynAny_var dynamic = TestDynAnyFactory()->create_dyn_any(value);
    EXPECT_EQ(Manager().ParseAnyData(dynamic.in(), out), -1);
    capture->SetWriteHook({});
    const auto debug = capture->Entries("corbadebug");
    ASSERT_FALSE(debug.empty());
    qv_test::ExpectEntry(debug.back(), "corbadebug", 3, "logmgr", 1059,
                         "[CorbaLogMgr::ParseAnyData] CORBA exception received when parsing any data!");
    dynamic->destroy();
}

TEST_F(ValueText, NoDynAnyIsAFailureWithoutALine) {
    ASSERT_TRUE(InitLog());
    std::ostringstream out;
    EXPECT_EQ(Manager().ParseAnyData(nullptr, out), -1);
    EXPECT_EQ(out.str(), "");
    EXPECT_TRUE(capture->Entries("corbadebug").empty());
}

TEST_F(ValueText, ADestroyedDynAnyIsToldOnce) {
    ASSERT_TRUE(InitLog());
    CORBA::Any value;
    value <<= Point(1, "one");
    DynamicAny::DynAny_var dynamic = TestDynAnyFactory()->create_dyn_any(value);
    dynamic->destroy();
    std::ostringstream out;
    EXPECT_EQ(Manager().ParseAnyData(dynamic.in(), out), -1);
    const auto debug = capture->Entries("corbadebug");
    ASSERT_EQ(debug.size(), 1u);
    EXPECT_EQ(debug[0].line, 1054);
}

/// A sequence in a sequence and so on, one element each, a long at the bottom.
DynamicAny::DynAny_ptr NestedSequences(int depth) {
    CORBA::TypeCode_var type = CORBA::TypeCode::_duplicate(CORBA::_tc_long);
    for (int i = 0; i < depth; ++i) {
        type = TestOrb()->create_sequence_tc(0, type);
    }
    DynamicAny::DynAny_var whole = TestDynAnyFactory()->create_dyn_any_from_type_code(type);
    DynamicAny::DynAny_var level = DynamicAny::DynAny::_duplicate(whole);
    for (int i = 0; i < depth; ++i) {
        DynamicAny::DynSequence_var(DynamicAny::DynSequence::_narrow(level))->set_length(1);
        level->rewind();
        level = level->current_component();
    }
    level->insert_long(7);
    return whole._retn();
}

TEST_F(ValueText, SequencesNested200DeepPrint) {
    ASSERT_TRUE(InitLog());
    DynamicAny::DynAny_var nested = NestedSequences(200);
    const CORBA::Any_var value = nested->to_any();
    EXPECT_EQ(AsParameter(value.in()), Block(std::string(200, '{') + "7" + std::string(200, '}')));
    nested->destroy();
}

TEST_F(ValueText, ValuesNestedWithoutEndAreAFailureAndNoCrash) {
    ASSERT_TRUE(InitLog());
    Values::Tree tree;
    tree.name = CORBA::string_dup("leaf");
    for (int i = 0; i < 600; ++i) {
        Values::Tree parent;
        parent.name = CORBA::string_dup("node");
        parent.children.length(1);
        std::swap(parent.children[0], tree);
        std::swap(tree, parent);
    }
    CORBA::Any value;
    value <<= tree;
    std::string text;
    EXPECT_EQ(AsParameter(value, text), -1);
    EXPECT_TRUE(capture->Contains("corbadebug", "IMP_LIMIT"));
}

/// So many structs of one octet each, whose member has a name of a thousand characters.
CORBA::Any* StructsWithLongName(CORBA::ULong count) {
    CORBA::StructMemberSeq members;
    members.length(1);
    members[0].name = CORBA::string_dup(std::string(1000, 'n').c_str());
    members[0].type = CORBA::TypeCode::_duplicate(CORBA::_tc_octet);
    const CORBA::TypeCode_var element = TestOrb()->create_struct_tc("IDL:Values/Long:1.0", "Long", members);
    const CORBA::TypeCode_var type = TestOrb()->create_sequence_tc(0, element);
    const DynamicAny::DynAny_var whole = TestDynAnyFactory()->create_dyn_any_from_type_code(type);
    DynamicAny::DynSequence_var(DynamicAny::DynSequence::_narrow(whole))->set_length(count);
    CORBA::Any_var value = whole->to_any();
    whole->destroy();
    return value._retn();
}

TEST_F(ValueText, LongNamesOfMembersPrint) {
    ASSERT_TRUE(InitLog());
    const CORBA::Any_var value = StructsWithLongName(500);
    std::string text;
    EXPECT_EQ(AsParameter(value.in(), text), 0);
}

TEST_F(ValueText, AValueWhoseNamesTakeAThousandTimesItsSizeBreaksOff) {
    ASSERT_TRUE(InitLog());
    const CORBA::Any_var value = StructsWithLongName(20000);
    std::string text;
    EXPECT_EQ(AsParameter(value.in(), text), -1);
    EXPECT_LT(text.size(), 2u << 20);
    EXPECT_TRUE(capture->Contains("corbadebug", "IMP_LIMIT"));
}

}  // namespace
