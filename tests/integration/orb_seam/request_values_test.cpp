// The values of a request as its interception points see them (CORBA 3.0, 21.3.12): arguments before and
// after the servant, result, and the exceptions that the operation declares.

#include <algorithm>
#include <cstring>

#include "both_sides.h"

namespace {

using namespace qv_test;
using Info = Probe::Info;

/// Texts of a parameter list: "in:…" with the value of strings and longs.
std::string Text(const CORBA::Any& any) {
    const char* text = nullptr;
    CORBA::Long number = 0;
    const Seam::Item* item = nullptr;
    const Seam::ItemList* items = nullptr;
    Seam::Colour colour = Seam::RED;
    const Seam::Choice* choice = nullptr;
    const CORBA::Any* inner = nullptr;
    CORBA::Boolean flag = false;
    const CORBA::TypeCode_var type = any.type();
    if (any >>= text) {
        return text;
    }
    if (any >>= CORBA::Any::to_string(text, 8)) {
        return std::string("8:") + text;
    }
    if (any >>= number) {
        return std::to_string(number);
    }
    if (any >>= CORBA::Any::to_boolean(flag)) {
        return flag ? "true" : "false";
    }
    if (any >>= item) {
        return std::string("{") + item->name.in() + "," + std::to_string(item->count) + "}";
    }
    if (any >>= items) {
        std::string all = "[";
        for (CORBA::ULong i = 0; i < items->length(); ++i) {
            all.append((*items)[i].name).append(",").append(std::to_string((*items)[i].count)).append(";");
        }
        return all + "]";
    }
    if (any >>= colour) {
        return "colour" + std::to_string(colour);
    }
    if (any >>= choice) {
        return choice->_d() == 1 ? std::string("text ") + choice->text()
                                 : "number " + std::to_string(choice->number());
    }
    if (any >>= inner) {
        return "any " + Text(*inner);
    }
    const CORBA::TypeCode_var bare =
        type->kind() == CORBA::tk_alias ? type->content_type() : CORBA::TypeCode::_duplicate(type.in());
    switch (bare->kind()) {
        case CORBA::tk_null:
            return "null";
        case CORBA::tk_void:
            return "void";
        case CORBA::tk_objref:
            return std::string("reference ") + bare->id();
        case CORBA::tk_wstring:
            return "wide";
        default:
            return "kind " + std::to_string(type->kind());
    }
}

std::string Parameters(Info info) {
    const Dynamic::ParameterList_var list = info->arguments();
    const std::string modes[] = {"in", "out", "inout"};
    std::string all;
    for (CORBA::ULong i = 0; i < list->length(); ++i) {
        const Dynamic::Parameter& parameter = list.in()[i];
        all += modes[parameter.mode] + ":" + Text(parameter.argument) + " ";
    }
    return all;
}

std::string Exceptions(Info info) {
    const Dynamic::ExceptionList_var list = info->exceptions();
    std::string all;
    for (CORBA::ULong i = 0; i < list->length(); ++i) {
        all.append(list.in()[i]->id());
    }
    return all;
}

struct ValuesCase {
    const char* operation;
    const char* argument;
    const char* outcome;
    const char* idl_name;
    const char* before;
    const char* after;
    const char* result;
    const char* exceptions;
};

class RequestValuesTest : public BothSidesTest {
  protected:
    void Expect(const ValuesCase& expected) {
        SCOPED_TRACE(expected.operation);
        std::string name;
        std::string before;
        std::string after;
        std::string result;
        std::string exceptions;
        server.b->request = [&](Info info) {
            name = CORBA::String_var(info->operation());
            before = Parameters(info);
            exceptions = Exceptions(info);
        };
        server.b->reply = [&](Info info) {
            after = Parameters(info);
            result = Text(CORBA::Any_var(info->result()).in());
        };
        EXPECT_EQ(Call(expected.operation, expected.argument), expected.outcome);
        EXPECT_EQ(name, expected.idl_name);
        EXPECT_EQ(before, expected.before);
        EXPECT_EQ(after, expected.after);
        EXPECT_EQ(result, expected.result);
        EXPECT_EQ(exceptions, expected.exceptions);
    }
};

INSTANTIATE_TEST_SUITE_P(From, RequestValuesTest, ::testing::Values(true, false), SideName);

TEST_P(RequestValuesTest, ArgumentsAndResultsOfEveryKindOfOperation) {
    const char* const refused = "IDL:Seam/Refused:1.0";
    const char* const reference = "reference IDL:Seam/Target:1.0";
    const std::string self_before =
        std::string("in:") + reference + " inout:reference IDL:omg.org/CORBA/Object:1.0 ";
    const ValuesCase cases[] = {
        {"echo", "hello", "hello", "echo", "in:hello ", "in:hello ", "hello", ""},
        {"mix", "z", "9 x=1 y=2 z=8 2", "mix", "in:{z,7} inout:[x,1;y,2;] out:null ",
         "in:{z,7} inout:[x,1;y,2;z,8;] out:colour2 ", "9", refused},
        {"choose", "four", "4 41", "choose", "in:text four in:any 41 out:null ",
         "in:text four in:any 41 out:any 41 ", "number 4", ""},
        {"self", "", "same set", "self", self_before.c_str(), self_before.c_str(), reference, ""},
        {"shorten", "brief", "brief", "shorten", "in:8:brief ", "in:8:brief ", "8:brief", ""},
        {"wide", "", "equal", "wide", "in:wide ", "in:wide ", "wide", ""},
        {"title", "", "target", "_get_title", "", "", "target", ""},
        {"get_level", "", "3", "_get_level", "", "", "3", ""},
        {"set_level", "12", "done", "_set_level", "in:12 ", "in:12 ", "void", ""},
        {"inherited", "gold", "inherited gold", "inherited", "in:gold ", "in:gold ", "inherited gold",
         refused},
        {"_is_a", "IDL:Seam/Stranger:1.0", "no", "_is_a", "in:IDL:Seam/Stranger:1.0 ",
         "in:IDL:Seam/Stranger:1.0 ", "false", ""},
        {"_non_existent", "", "there", "_non_existent", "", "", "false", ""},
    };
    for (const ValuesCase& expected : cases) {
        Expect(expected);
    }
}

TEST_P(RequestValuesTest, ChangingTheCopyChangesNothingForTheServant) {
    server.a->request = [](Info info) {
        const Dynamic::ParameterList_var list = info->arguments();
        const char* text = nullptr;
        ASSERT_TRUE(list.in()[0].argument >>= text);
        std::fill(const_cast<char*>(text), const_cast<char*>(text) + std::strlen(text), '*');
    };
    EXPECT_EQ(Call("echo", "secret"), "secret");
}

}  // namespace
