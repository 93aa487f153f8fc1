// Components inside of an Any: every kind of value, and every kind of step.

#include "expectations.h"
#include "rich_event.h"

namespace {

using qv_test::ExpectMatches;
using qv_test::ExpectNoValue;

/// An untyped event, so that $ is the body.
const CORBA::Any& Event() {
    static const auto* const event = new CORBA::Any(qv_test::RichBody());
    return *event;
}

TEST(Body, BasicKinds) {
    ExpectMatches(true, Event(),
                  {"$.yes",
                   "not $.no",
                   "$.bits == 200",
                   "$.letter == 'x'",
                   "$.wide_letter == '\xc3\xa9'",
                   "$.s == -3",
                   "$.us == 60000",
                   "$.l == -100000",
                   "$.ul == 4000000000",
                   "$.ll == -9223372036854775808",
                   "$.ull == 18446744073709551615",
                   "$.f == 0.1",
                   "$.d == 2.5",
                   "$.text == 'it\\'s a text'",
                   "$.wide == 'gr\xc3\xbc\xc3\x9f"
                   "e'",
                   "$.amount == -123.45",
                   "$.amount < -123",
                   "$.inner == 7",
                   "$.reading == 17",
                   "$.\\in == 'keyword'",
                   "$.ll < $.ull",
                   "$.s < $.us",
                   "$.f < $.d",
                   "$.0",
                   "$.5 == -3",
                   "$.text > 'it'",
                   "$text == $.text",
                   "$s == -3"});
    ExpectMatches(false, Event(), {"$.no", "$.us == -5536", "$.ull == -1", "$.f == 0.2"});
    ExpectNoValue(Event(), {"$.missing == 1", "$.s.x == 1", "$.999 == 1", "$.target == 1", "$.type == 1",
                            "$ == 1", "$.s[0] == 1", "$.text[0] == 'i'", "$.text._length == 1"});
}

TEST(Body, WhatOperatorsCanNotUseExistsNevertheless) {
    ExpectMatches(
        true, Event(),
        {"exist $.target", "exist $.type", "exist $.place", "exist $.s", "exist $.inner",
         "not exist $.missing", "not exist $.place.missing", "exist $.more", "not exist $.more[0]"});
}

TEST(Body, Enumerators) {
    ExpectMatches(
        true, Event(),
        {"$.severity == major", "$.perceived == warning", "$.severity > $.perceived", "$.tint == green",
         "green == $.tint", "$.severity >= minor", "$.severity == 3", "major in $.anys",
         "critical in $.severities", "not (major in $.severities)", "$.severity == $.anys[2]"});
    ExpectMatches(false, Event(), {"$.severity == minor"});
    ExpectNoValue(
        Event(), {"$.severity == green", "$.tint == major", "$.tint == $.severity", "unknown == $.severity"});
}

TEST(Body, StructuresSequencesAndArrays) {
    ExpectMatches(true, Event(),
                  {"$.place.x == 4",
                   "$.place.0 == 4",
                   "$.place.1 == 'here'",
                   "$.longs[0] == 10",
                   "$.longs[2] == 30",
                   "$.longs._length == 3",
                   "$.more._length == 0",
                   "$.texts[1] == 'two'",
                   "$.octets[1] == 255",
                   "$.severities[0] == minor",
                   "$.points[1].label == 'second'",
                   "$.points[0].x == 1",
                   "$.points._length == 2",
                   "$.table[1][2] == 5",
                   "$.table[0][0] == 0",
                   "$.table._length == 2",
                   "$.table[0]._length == 3",
                   "$.samples[2] == 1.0",
                   "$.samples._length == 3",
                   "$.anys[0] == 5",
                   "$.anys[1] == 'five'",
                   "$.anys[2] == major",
                   "$.anys._length == 3"});
    ExpectNoValue(Event(),
                  {"$.longs[3] == 1", "$.more[0] == 1", "$.table[2][0] == 1", "$.place[0] == 1",
                   "$.longs.x == 1", "$.place._length == 2", "$.longs[4294967296] == 10", "$.longs.0 == 10"});
}

TEST(Body, Membership) {
    ExpectMatches(true, Event(),
                  {"20 in $.longs", "'two' in $.texts", "255 in $.octets", "0.5 in $.samples", "5 in $.anys",
                   "'five' in $.anys", "not (21 in $.longs)", "not (1 in $.more)",
                   "$.points[0].x + 19 in $.longs", "'zwei' in $.texts == FALSE"});
    ExpectMatches(false, Event(), {"'x' in $.texts", "'20' in $.longs", "6 in $.anys"});
    ExpectNoValue(Event(), {"1 in $.place", "'t' in $.text"});
}

TEST(Body, NameValuePairs) {
    ExpectMatches(
        true, Event(),
        {"$.pairs(first).x == 11", "$.pairs(second) == '2nd'", "$.pairs('second') == '2nd'",
         "$.pairs[0].key == 'first'", "$.pairs[0].content.label == 'paired'", "not exist $.pairs(third)"});
    ExpectNoValue(Event(), {"$.longs(first) == 1", "$.points(first) == 1", "$.place(x) == 4"});
}

TEST(Body, PairsOfStructuresWhoseFirstMemberIsNoText) {
    ExpectMatches(false, Event(), {"exist $.points(first)"});
}

TEST(Body, UnionMembersByTheirLabel) {
    ExpectMatches(true, Event(),
                  {"$.numbered.(1) == 12",
                   "$.numbered.(+1) == 12",
                   "$.numbered.number == 12",
                   "$.numbered._d == 1",
                   "$.texted.(-3) == 'chosen'",
                   "$.texted.text == 'chosen'",
                   "$.texted._d == -3",
                   "$.texted.('text') == 'chosen'",
                   "$.defaulted.()",
                   "$.defaulted.flag",
                   "$.defaulted._d == 99",
                   "$.defaulted.(99)",
                   "$.maybe.(1).x == 6",
                   "$.maybe.value.label == 'maybe'",
                   "$.maybe._d",
                   "$.colored.('green') == 4",
                   "$.colored.(1) == 4",
                   "$.colored._d == green",
                   "$.colored.shade == 4",
                   "$.lettered.('b') == 'b it is'",
                   "$.lettered.(98) == 'b it is'",
                   "$.lettered._d == 'b'",
                   "$.lettered.('big') == 'b it is'",
                   "not exist $.texted.(2)",
                   "not exist $.numbered.(2)",
                   "not exist $.numbered.()",
                   "exist $.defaulted.()",
                   "not exist $.nothing.value",
                   "not $.nothing._d",
                   "not exist $.nothing.()",
                   "exist $.numbered._d",
                   "not exist $.colored.('red')"});
    ExpectNoValue(Event(), {"$.texted.(2) == 'chosen'", "$.numbered.text == ''", "$.place.(1) == 1",
                            "$.numbered.(-1) == 12", "$.numbered.('zzz') == 12", "$.place._d == 1",
                            "$.numbered.0 == 1"});
}

TEST(Body, DefaultMembers) {
    ExpectMatches(true, Event(),
                  {"default $.defaulted._d", "not default $.numbered._d", "not default $.maybe._d",
                   "not default $.nothing._d"});
    ExpectMatches(false, Event(), {"default $.texted._d"});
    ExpectNoValue(Event(), {"default $.place._d", "default $.missing._d", "default $.s._d"});
}

TEST(Body, RecursiveTypes) {
    ExpectMatches(true, Event(),
                  {"$.tree.name == 'root'", "$.tree.children[1].children[0].name == 'leaf'",
                   "$.tree.children[0].children._length == 0", "$.reading == 17"});
}

TEST(Body, NamesOfTypes) {
    ExpectMatches(
        true, Event(),
        {"$._type_id == 'Body'", "$._repos_id == 'IDL:Probe/Body:1.0'", "$.place._type_id == 'Point'",
         "$.perceived._type_id == 'PerceivedSeverity'", "$.severity._type_id == 'Severity'",
         "$.longs._type_id == 'Longs'", "$.more._type_id == 'MoreLongs'", "$.target._type_id == 'Thing'",
         "$.numbered._repos_id == 'IDL:Probe/Choice:1.0'", "$.reading._type_id == 'Reading'",
         "$.pairs(first)._type_id == 'Point'"});
    ExpectNoValue(Event(), {"$.s._type_id == 'short'", "$.text._repos_id == ''"});
}

}  // namespace
