// Operators, literals and the short forms, over the event's properties.

#include "expectations.h"
#include "rich_event.h"

namespace {

using qv_test::ExpectMatches;
using qv_test::ExpectNoValue;

const CosNotification::StructuredEvent& Event() {
    static const auto* const event = new CosNotification::StructuredEvent(qv_test::RichEvent());
    return *event;
}

TEST(Expressions, WithoutAnyTextTheConstraintIsTrue) {
    ExpectMatches(true, Event(), {"", "   ", "\t\r\n\v\f"});
}

TEST(Expressions, LiteralsAndLogic) {
    ExpectMatches(
        true, Event(),
        {"TRUE", "not FALSE", "TRUE and TRUE", "FALSE or TRUE", "TRUE or FALSE and FALSE",
         "not FALSE and TRUE", "(TRUE)", "((((TRUE))))", "not (TRUE and FALSE)", "TRUE and not FALSE",
         "FALSE or FALSE or TRUE", "TRUE and TRUE and TRUE", " ( TRUE )or( FALSE ) "});
    ExpectMatches(false, Event(),
                  {"FALSE", "not TRUE", "TRUE and FALSE", "FALSE or FALSE", "(TRUE or FALSE) and FALSE",
                   "TRUE and FALSE or FALSE", "not (TRUE or FALSE)"});
}

TEST(Expressions, WhatDoesNotMatterIsNotEvaluated) {
    ExpectMatches(true, Event(),
                  {"TRUE or $missing == 1", "not (FALSE and $missing == 1)",
                   "not exist $missing or $missing > 1", "TRUE or 1 / 0 == 1"});
    ExpectMatches(false, Event(), {"exist $missing and $missing > 1", "FALSE and 'a'"});
    ExpectNoValue(Event(), {"$missing == 1 or TRUE", "TRUE and $missing == 1", "FALSE or $missing"});
}

TEST(Expressions, Comparisons) {
    ExpectMatches(true, Event(),
                  {"1 == 1",       "1 != 2",        "1 < 2",        "2 <= 2",     "3 > 2",      "3 >= 3",
                   "'a' == 'a'",   "'a' != 'b'",    "'a' < 'b'",    "'a' <= 'a'", "'b' > 'a'",  "'ab' >= 'a'",
                   "TRUE == TRUE", "TRUE != FALSE", "FALSE < TRUE", "TRUE == 1",  "0 == FALSE", "'' == ''",
                   "'' < 'a'",     "1<2",           "1 <2 and 2> 1"});
    ExpectMatches(false, Event(),
                  {"1 == 2", "1 != 1", "2 < 1", "3 <= 2", "2 > 3", "2 >= 3", "'a' == 'A'", "'b' < 'a'",
                   "TRUE == FALSE", "TRUE < FALSE", "TRUE == 2"});
    ExpectNoValue(Event(),
                  {"1 == 'a'", "'1' == 1", "TRUE == 'TRUE'", "red == 1", "red == red", "red == 'red'"});
}

TEST(Expressions, NumbersInEveryForm) {
    ExpectMatches(
        true, Event(),
        {"5. == 5", ".5 == 0.5", "1e2 == 100", "1E+2 == 100", "12.5e-1 == 1.25", "-5 < 0", "+5 == 5",
         "- 5 == 0 - 5", "18446744073709551615 == $big", "-9223372036854775808 < 0", "007 == 7", "1.0 == 1",
         "5.e1 == 50", "-(2 + 3) == -5", "-$count == -42", "+$count == 42"});
    ExpectNoValue(Event(), {"-'a' == 'a'", "+'a' == 'a'", "-$node == 1"});
}

TEST(Expressions, Arithmetic) {
    ExpectMatches(true, Event(),
                  {"1 + 2 == 3",
                   "5 - 2 - 1 == 2",
                   "2 * 3 + 4 == 10",
                   "2 + 3 * 4 == 14",
                   "(2 + 3) * 4 == 20",
                   "7 / 2 == 3",
                   "7 / 2.0 == 3.5",
                   "-7 / 2 == -3",
                   "100 / 10 / 2 == 5",
                   "2 * 3 / 4 == 1",
                   "1 - -1 == 2",
                   "TRUE + TRUE == 2",
                   "$count * 2 == 84",
                   "$rate * 2 == 5",
                   "$count / 4 == 10",
                   "2.5 * ($count / 4) == 25",
                   "$count + $rate == 44.5",
                   "TRUE == ((('lang' ~ 'language') + ('fun' ~ 'functional')) >= 2)",
                   "$big + 1 > 1",
                   "$big * $big > 1",
                   "9223372036854775807 + 1 == 9223372036854775808"});
    ExpectMatches(false, Event(), {"1 + 1 == 3", "7 / 2 == 3.5"});
    ExpectNoValue(Event(), {"1 / 0 == 1", "1 / $zero == 1", "1.5 / 0.0 == 1", "'a' + 'b' == 'ab'",
                            "$node + 1 == 8", "1 + $missing == 1", "red + 1 == 2"});
}

TEST(Expressions, PrecedenceFollowsTheGrammar) {
    ExpectMatches(true, Event(),
                  {"TRUE or TRUE and FALSE", "1 + 1 == 2 and 2 * 2 == 4", "not FALSE == TRUE",
                   "'a' ~ 'abc' == TRUE", "3 in $list == TRUE", "1 + 2 in $list", "not $bad and $ok"});
    // `not` binds tighter than a comparison.
    ExpectNoValue(Event(), {"not $count == 41", "not 1 == 1"});
}

TEST(Expressions, Substrings) {
    ExpectMatches(true, Event(),
                  {"'node' ~ $node", "'' ~ $node", "'-7' ~ 'node-7'", "$letter ~ 'xyz'",
                   "'Alarm' ~ $type_name", "not ('zzz' ~ $node)", "'fic' ~ 'traffic'"});
    ExpectMatches(false, Event(), {"$node ~ 'node'", "'NODE' ~ $node"});
    ExpectNoValue(Event(), {"1 ~ 'a1'", "'1' ~ 1", "'a' ~ $missing", "'a' ~ $list"});
}

TEST(Expressions, Texts) {
    ExpectMatches(true, Event(),
                  {R"('it\'s' == 'it\'s')", R"('\\' != '')", R"('\\' ~ 'a\\b')", R"('a\b' == 'a\\b')",
                   "'\xc3\xbc' ~ 'gr\xc3\xbc\xc3\x9f'", "'a b' == 'a b'", "'$x' ~ 'a$x'"});
    ExpectMatches(false, Event(), {R"('\'' == '\\')"});
}

TEST(Expressions, MembershipInLists) {
    ExpectMatches(true, Event(),
                  {"2 in $list", "2.0 in $.filterable_data(list)", "not (4 in $list)", "1 in list",
                   "$count - 40 in $list", "TRUE in $list"});
    ExpectMatches(false, Event(), {"4 in $list", "0 in $list"});
    ExpectNoValue(Event(),
                  {"2 in $missing", "2 in $count", "$missing in $list", "1 in $", "1 in $.filterable_data"});
}

TEST(Expressions, ShortFormsOfTheFixedHeader) {
    ExpectMatches(true, Event(),
                  {"$domain_name == 'Telecom'", "$type_name == 'CommunicationsAlarm'",
                   "$event_name == 'lost_packet'", "'lost' ~ $event_name", "exist $type_name",
                   "$.header.fixed_header.event_type.domain_name == 'Telecom'",
                   "$.header.fixed_header.event_type.type_name == $type_name",
                   "$.header.fixed_header.event_name == $event_name", "$.0.0.0.0 == 'Telecom'",
                   "$.0.0.0.1 == 'CommunicationsAlarm'", "$.0.0.1 == 'lost_packet'", "exist type_name"});
    ExpectNoValue(Event(), {"$type_name.x == 1", "$type_name[0] == 'C'", "$type_name._length == 1"});
}

TEST(Expressions, ShortFormsTakeTheHeaderAheadOfTheBody) {
    ExpectMatches(true, Event(),
                  {"$both == 'header'", "$.filterable_data(both) == 'body'",
                   "$.header.variable_header(both) == 'header'", "$Priority == 3",
                   "$Priority == $.header.variable_header(Priority)", "$count == 42",
                   "$header.fixed_header.event_name == 'lost_packet'", "$filterable_data(count) == 42",
                   "$remainder_of_body.s == -3", "exist $remainder_of_body", "exist count",
                   "not exist $priority", "not exist missing"});
}

TEST(Expressions, PropertiesOfEveryKind) {
    ExpectMatches(true, Event(),
                  {"$count == 42",
                   "$rate == 2.5",
                   "$rate > 2",
                   "$ratio == 0.1",
                   "$ratio < 0.11",
                   "$node == 'node-7'",
                   "$ok",
                   "not $bad",
                   "$ok == TRUE",
                   "$ok == 1",
                   "$bad + 1 == 1",
                   "$letter == 'x'",
                   "$octet == 7",
                   "$severity == major",
                   "major == $severity",
                   "$severity > minor",
                   "warning < $severity",
                   "$severity != critical",
                   "$severity == 3",
                   "$perceived == major",
                   "$deep == 7",
                   "$deep + 1 == 8",
                   "$wide == 'gr\xc3\xbc\xc3\x9f"
                   "e'",
                   "'r\xc3\xbc' ~ $wide",
                   "$point.x == 4",
                   "$point.label == 'here'",
                   "$severity == $perceived"});
    ExpectMatches(false, Event(), {"$ratio == 0.2", "$ok and $bad", "$severity == minor"});
    ExpectNoValue(Event(), {"$count", "$node", "$severity == green", "$severity != green", "$point == 4",
                            "$list == 1", "$empty == 1", "$severity == 'major'", "$count == major",
                            "$count and TRUE", "$letter == 120"});
}

TEST(Expressions, PropertiesAsALists) {
    ExpectMatches(true, Event(),
                  {"$.filterable_data(count) == 42",
                   "$.filterable_data[0].name == 'count'",
                   "$.filterable_data[0].value == 42",
                   "$.filterable_data[0].0 == 'count'",
                   "$.filterable_data[0].1 == 42",
                   "$.1[0].1 == 42",
                   "$.1(count) == 42",
                   "$.0.1(Priority) == 3",
                   "$.filterable_data._length == 20",
                   "$.filterable_data('alarm-id') == 9",
                   "$.filterable_data(\\in) == 5",
                   "$\\in == 5",
                   "$.header.variable_header[0].name == 'Priority'",
                   "$.filterable_data(point).x == 4",
                   "$.filterable_data(list)[2] == 3",
                   "$.filterable_data(list)._length == 3",
                   "exist $.filterable_data[19]",
                   "not exist $.filterable_data[20]",
                   "exist $.filterable_data",
                   "exist $.filterable_data(empty)",
                   "exist $",
                   "$ . filterable_data ( count ) == 42"});
    ExpectNoValue(
        Event(), {"$.filterable_data == 1", "$.filterable_data(count)(x) == 1", "$.filterable_data[0].2 == 1",
                  "$.filterable_data[99999999999].name == ''", "$.header(count) == 1", "$ == 1", "$.3 == 1"});
}

TEST(Expressions, NamesOfTypes) {
    ExpectMatches(
        true, Event(),
        {"$._type_id == 'StructuredEvent'",
         "$._repos_id == 'IDL:omg.org/CosNotification/StructuredEvent:1.0'",
         "$.header._type_id == 'EventHeader'", "$.header.fixed_header._type_id == 'FixedEventHeader'",
         "$.header.fixed_header.event_type._type_id == 'EventType'",
         "$.header.variable_header._type_id == 'OptionalHeaderFields'",
         "$.filterable_data._type_id == 'FilterableEventBody'", "$.filterable_data[0]._type_id == 'Property'",
         "$severity._type_id == 'Severity'", "$perceived._type_id == 'PerceivedSeverity'",
         "$perceived._repos_id == 'IDL:Probe/PerceivedSeverity:1.0'", "$point._type_id == 'Point'",
         "$list._type_id == 'Longs'", "exist $point._type_id", "not exist $count._type_id",
         "'Alarm' ~ $type_name and $point._repos_id == 'IDL:Probe/Point:1.0'"});
    ExpectNoValue(Event(), {"$count._type_id == 'long'", "$node._repos_id == ''"});
}

TEST(Expressions, TheTimeOfTheEvaluation) {
    ExpectMatches(
        true, Event(),
        {"$curtime == 6000", "$curtime > $StartTime", "$curtime - $StartTime == 1000",
         "$curtime.time == 6000", "$curtime.0 == 6000", "$curtime.tdf == 0", "$StartTime.time == 5000",
         "exist $curtime", "$curtime._type_id == 'UtcT'", "$StartTime._type_id == 'UtcT'"});
    ExpectNoValue(Event(), {"$curtime.year == 1", "$curtime.4 == 1", "$curtime[0] == 1"});
}

TEST(Expressions, TheSystemsClockIsTheDefault) {
    // 2020 and 2200, in units of 100 ns since 15 October 1582.
    EXPECT_TRUE(
        qv_notify::etcl::Constraint::Parse("$curtime > 137971296000000000 and $curtime < 194775840000000000")
            ->Matches(Event()));
}

TEST(Expressions, TheTextStays) {
    EXPECT_EQ(qv_test::ParseForTest(" $count == 42 ")->Text(), " $count == 42 ");
}

}  // namespace
