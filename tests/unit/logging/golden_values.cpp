#include "tests/unit/logging/golden_values.h"

#include <algorithm>
#include <limits>

namespace qv_test {

Values::Point Point(CORBA::Long x, const char* label) {
    Values::Point point;
    point.x = x;
    point.label = CORBA::string_dup(label);
    return point;
}

Values::Octets Octets(const std::string& bytes) {
    Values::Octets octets;
    octets.length(static_cast<CORBA::ULong>(bytes.size()));
    std::copy(bytes.begin(), bytes.end(), octets.get_buffer());
    return octets;
}

namespace {

template <class Sequence>
Sequence Numbers(std::initializer_list<CORBA::Long> numbers) {
    Sequence sequence;
    sequence.length(static_cast<CORBA::ULong>(numbers.size()));
    CORBA::ULong i = 0;
    for (const CORBA::Long number : numbers) {
        sequence[i++] = number;
    }
    return sequence;
}

Values::Mixed Mixed() {
    Values::Mixed mixed;
    mixed.yes = true;
    mixed.no = false;
    mixed.letter = 'Z';
    mixed.s = -32768;
    mixed.us = 65535;
    mixed.l = std::numeric_limits<CORBA::Long>::min();
    mixed.ul = 4294967295u;
    mixed.f = 0.5f;
    return mixed;
}

/// Made where it stays: a copied fixed forgets its limits.
Values::Silent* NewSilent() {
    auto* const made = new Values::Silent;
    Values::Silent& silent = *made;
    silent.d = 1.5;
    silent.first = 11;
    silent.c = 'x';
    silent.ll = 1;
    silent.ull = 2;
    silent.ld = 3;
    silent.ws = CORBA::wstring_dup(L"wide");
    silent.wc = L'w';
    silent.amount = CORBA::Fixed("123.45");
    silent.fee = CORBA::Fixed("123.4");
    silent.type = CORBA::TypeCode::_duplicate(Values::_tc_Tree);
    silent.last = 12;
    return made;
}

Values::Holder Holder(const std::function<void(CORBA::Any&)>& fill) {
    Values::Holder holder;
    fill(holder.inner);
    holder.mark = '!';
    return holder;
}

Values::Rows Rows() {
    Values::Rows rows;
    rows.length(3);
    rows[0] = Numbers<Values::Longs>({1, 2, 3});
    rows[2] = Numbers<Values::Longs>({-4});
    return rows;
}

Values::Points Points() {
    Values::Points points;
    points.length(2);
    points[0] = Point(1, "one");
    points[1] = Point(2, "");
    return points;
}

Values::Tree Tree() {
    Values::Tree tree;
    tree.name = CORBA::string_dup("root");
    tree.children.length(2);
    tree.children[0].name = CORBA::string_dup("left");
    tree.children[1].name = CORBA::string_dup("right");
    tree.children[1].children.length(1);
    tree.children[1].children[0].name = CORBA::string_dup("leaf");
    return tree;
}

Values::Choice Choice(const std::function<void(Values::Choice&)>& set) {
    Values::Choice choice;
    set(choice);
    return choice;
}

}  // namespace

const std::vector<GoldenText>& GoldenTexts() {
    static const std::vector<GoldenText> golden = {
        {"True", [](CORBA::Any& a) { a <<= CORBA::Any::from_boolean(true); }, "true"},
        {"False", [](CORBA::Any& a) { a <<= CORBA::Any::from_boolean(false); }, "false"},
        {"Short", [](CORBA::Any& a) { a <<= static_cast<CORBA::Short>(-7); }, "-7"},
        {"UnsignedShort", [](CORBA::Any& a) { a <<= static_cast<CORBA::UShort>(65535); }, "65535"},
        {"Long", [](CORBA::Any& a) { a <<= static_cast<CORBA::Long>(-2147483647 - 1); }, "-2147483648"},
        {"UnsignedLong", [](CORBA::Any& a) { a <<= static_cast<CORBA::ULong>(4294967295u); }, "4294967295"},
        {"Float", [](CORBA::Any& a) { a <<= static_cast<CORBA::Float>(0.1f); }, "0.1"},
        {"LargeFloat", [](CORBA::Any& a) { a <<= static_cast<CORBA::Float>(1.5e10f); }, "1.5e+10"},
        {"WholeFloat", [](CORBA::Any& a) { a <<= static_cast<CORBA::Float>(100000.0f); }, "100000"},
        {"NegativeFloat", [](CORBA::Any& a) { a <<= static_cast<CORBA::Float>(-1234567.0f); },
         "-1.23457e+06"},
        {"Infinity",
         [](CORBA::Any& a) { a <<= static_cast<CORBA::Float>(std::numeric_limits<float>::infinity()); },
         "inf"},
        {"Octet", [](CORBA::Any& a) { a <<= CORBA::Any::from_octet(65); }, "A"},
        {"String", [](CORBA::Any& a) { a <<= "two words"; }, "two words"},
        {"EmptyString", [](CORBA::Any& a) { a <<= ""; }, ""},
        {"InvalidUtf8", [](CORBA::Any& a) { a <<= "\xff\xc3("; }, "\xff\xc3("},
        {"BoundedString", [](CORBA::Any& a) { a <<= CORBA::Any::from_string("short", 8); }, "short"},
        {"Enum", [](CORBA::Any& a) { a <<= Values::blue; }, "2"},
        {"Struct", [](CORBA::Any& a) { a <<= Point(5, "five"); }, "{x 5 label five}"},
        {"NestedStruct",
         [](CORBA::Any& a) {
             Values::Nested nested;
             nested.place = Point(5, "five");
             nested.tint = Values::green;
             a <<= nested;
         },
         "{place {x 5 label five} tint 1}"},
        {"BasicMembers", [](CORBA::Any& a) { a <<= Mixed(); },
         "{yes true no false letter Z s -32768 us 65535 l -2147483648 ul 4294967295 f 0.5}"},
        {"SilentMembers", [](CORBA::Any& a) { a <<= NewSilent(); },
         "{d null first 11 c null ll null ull null ld null ws null wc null amount null fee null type null "
         "last "
         "12}"},
        {"Sequence",
         [](CORBA::Any& a) {
             a <<= Numbers<Values::Longs>({1, 2, 3});
         },
         "{1 2 3}"},
        {"EmptySequence", [](CORBA::Any& a) { a <<= Values::Longs(); }, "{}"},
        {"SequenceOfSequences", [](CORBA::Any& a) { a <<= Rows(); }, "{{1 2 3} {} {-4}}"},
        {"SequenceOfStructs", [](CORBA::Any& a) { a <<= Points(); }, "{{x 1 label one} {x 2 label }}"},
        {"SequenceOfStrings",
         [](CORBA::Any& a) {
             Values::Texts texts;
             texts.length(3);
             texts[0] = CORBA::string_dup("a");
             texts[2] = CORBA::string_dup("b");
             a <<= texts;
         },
         "{a  b}"},
        {"SequenceOfOctets", [](CORBA::Any& a) { a <<= Octets("abc"); }, "{a b c}"},
        {"OneOctet", [](CORBA::Any& a) { a <<= Octets("a"); }, "{a}"},
        {"NoOctets", [](CORBA::Any& a) { a <<= Octets(""); }, "{}"},
        {"Array",
         [](CORBA::Any& a) {
             const Values::Grid grid = {{1, 2, 3}, {4, 5, 6}};
             a <<= Values::Grid_forany(const_cast<Values::Grid_slice*>(grid), false);
         },
         "{{1 2 3} {4 5 6}}"},
        {"ArrayOfOctets",
         [](CORBA::Any& a) {
             const Values::Code code = {'x', 'y', 'z'};
             a <<= Values::Code_forany(const_cast<Values::Code_slice*>(code), false);
         },
         "{x y z}"},
        {"UnionByLabel",
         [](CORBA::Any& a) { a <<= Choice([](Values::Choice& choice) { choice.number(9); }); }, "number 9"},
        {"UnionBySecondLabel",
         [](CORBA::Any& a) {
             a <<= Choice([](Values::Choice& choice) {
                 choice.text("words");
                 choice._d(-3);
             });
         },
         "text words"},
        {"UnionByDefault",
         [](CORBA::Any& a) { a <<= Choice([](Values::Choice& choice) { choice.flag(true); }); }, "flag true"},
        {"UnionByBoolean",
         [](CORBA::Any& a) {
             Values::Maybe maybe;
             maybe.value(Point(1, "one"));
             a <<= maybe;
         },
         "value {x 1 label one}"},
        {"UnionByEnum",
         [](CORBA::Any& a) {
             Values::ByColor choice;
             choice.items(Numbers<Values::Longs>({7, 8}));
             a <<= choice;
         },
         "items {7 8}"},
        {"UnionByChar",
         [](CORBA::Any& a) {
             Values::ByChar choice;
             choice.small(-1);
             a <<= choice;
         },
         "small -1"},
        {"UnionByLongLong",
         [](CORBA::Any& a) {
             Values::ByWide choice;
             choice.far('f');
             a <<= choice;
         },
         "far f"},
        {"Recursive", [](CORBA::Any& a) { a <<= Tree(); },
         "{name root children {{name left children {}} {name right children {{name leaf children {}}}}}}"},
        {"AnyOfLong",
         [](CORBA::Any& a) {
             CORBA::Any inner;
             inner <<= static_cast<CORBA::Long>(3);
             a <<= inner;
         },
         "3"},
        {"AnyOfStructInStruct",
         [](CORBA::Any& a) { a <<= Holder([](CORBA::Any& inner) { inner <<= Point(4, "four"); }); },
         "{inner {x 4 label four} mark !}"},
        {"AnyOfRecursive", [](CORBA::Any& a) { a <<= Holder([](CORBA::Any& inner) { inner <<= Tree(); }); },
         "{inner {name root children {{name left children {}} {name right children {{name leaf children "
         "{}}}}}} "
         "mark !}"},
        {"EmptyAnyInStruct", [](CORBA::Any& a) { a <<= Holder([](CORBA::Any&) {}); }, "{inner null mark !}"},
        {"AnyOfDoubleInStruct",
         [](CORBA::Any& a) { a <<= Holder([](CORBA::Any& inner) { inner <<= CORBA::Double(2.5); }); },
         "{inner null mark !}"},
        {"UserException", [](CORBA::Any& a) { a <<= Values::Refused(13, "not you"); },
         "{code 13 reason not you}"},
        {"BareException", [](CORBA::Any& a) { a <<= Values::Bare(); }, "{}"},
        {"SystemException", [](CORBA::Any& a) { a <<= CORBA::NO_PERMISSION(5, CORBA::COMPLETED_NO); },
         "{minor 5 completed 1}"},
        {"Double", [](CORBA::Any& a) { a <<= CORBA::Double(2.5); }, "null"},
        {"Char", [](CORBA::Any& a) { a <<= CORBA::Any::from_char('c'); }, "null"},
        {"LongLong", [](CORBA::Any& a) { a <<= static_cast<CORBA::LongLong>(5); }, "null"},
        {"UnsignedLongLong", [](CORBA::Any& a) { a <<= static_cast<CORBA::ULongLong>(5); }, "null"},
        {"WideString", [](CORBA::Any& a) { a <<= CORBA::WString_var(CORBA::wstring_dup(L"wide")).in(); },
         "null"},
        {"Fixed", [](CORBA::Any& a) { a <<= CORBA::Any::from_fixed(CORBA::Fixed("1.5"), 2, 1); }, "null"},
        {"TypeCode", [](CORBA::Any& a) { a <<= Values::_tc_Point; }, "null"},
        {"Nothing", [](CORBA::Any&) {}, "null"},
        {"Void", [](CORBA::Any& a) { a.replace(CORBA::_tc_void, nullptr); }, "null"},
    };
    return golden;
}

}  // namespace qv_test
