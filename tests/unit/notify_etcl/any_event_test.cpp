// Untyped events: a plain value, Anys in Anys, and a structured event in an Any.

#include "expectations.h"
#include "rich_event.h"

namespace {

using qv_test::ExpectMatches;
using qv_test::ExpectNoValue;

class AnyEvent : public testing::Test {
  protected:
    AnyEvent() { qv_test::EtclOrb(); }
};

TEST_F(AnyEvent, APlainValueIsTheEvent) {
    CORBA::Any event;
    event <<= CORBA::Long{40};
    ExpectMatches(true, event, {"$ == 40", "$ + 2 == 42", "exist $", "not exist $.x", "not exist $x"});
    event <<= "text";
    ExpectMatches(true, event, {"$ == 'text'", "'ex' ~ $", "not exist $._type_id"});
    event <<= CORBA::Any::from_boolean(true);
    ExpectMatches(true, event, {"$", "$ and TRUE"});
}

TEST_F(AnyEvent, AnEmptyAnyHasNoValue) {
    const CORBA::Any event;
    ExpectMatches(true, event,
                  {"", "exist $", "not exist $.x", "not exist $type_name", "not exist $._type_id"});
    ExpectNoValue(event, {"$ == 1", "$ == ''", "$", "1 in $"});
}

TEST_F(AnyEvent, NestedAnysAreUnwrapped) {
    CORBA::Any event;
    event <<= CORBA::Long{7};
    for (int i = 0; i < 6; ++i) {
        CORBA::Any outer;
        outer <<= event;
        event = outer;
    }
    ExpectMatches(true, event, {"$ == 7", "$ < 8"});
}

TEST_F(AnyEvent, AStructuredEventInAnAnyIsTreatedLikeOne) {
    CORBA::Any event;
    event <<= qv_test::RichEvent();
    ExpectMatches(
        true, event,
        {"$domain_name == 'Telecom'", "$type_name == 'CommunicationsAlarm'", "$event_name == 'lost_packet'",
         "$Priority == 3", "$count == 42", "$both == 'header'", "$.filterable_data(both) == 'body'",
         "$severity == major", "$remainder_of_body.text == 'it\\'s a text'", "$.0.0.0.1 == $type_name",
         "$.remainder_of_body.longs[1] == 20", "$.filterable_data[0].name == 'count'",
         "$.filterable_data._length == 20", "$._type_id == 'StructuredEvent'",
         "$.header.variable_header._type_id == 'OptionalHeaderFields'", "2 in $list",
         "$._repos_id == 'IDL:omg.org/CosNotification/StructuredEvent:1.0'", "$curtime > $StartTime",
         "not exist $missing"});
}

TEST_F(AnyEvent, VariablesAreMembersOfAnythingElse) {
    CORBA::Any event;
    CosNotification::EventType type;
    type.domain_name = "d";
    type.type_name = "t";
    event <<= type;
    ExpectMatches(true, event,
                  {"$domain_name == 'd'", "$type_name == 't'", "$.type_name == 't'", "$.1 == 't'",
                   "not exist $event_name"});
}

TEST_F(AnyEvent, PropertiesInAnAnyAreFoundByName) {
    CosNotification::PropertySeq list(1);
    list.length(1);
    list[0].name = "level";
    list[0].value <<= CORBA::UShort{5};
    CORBA::Any event;
    event <<= list;
    ExpectMatches(true, event, {"$level == 5", "$(level) == 5", "$[0].name == 'level'", "$._length == 1"});
}

}  // namespace
