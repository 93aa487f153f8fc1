// Typed events: a list of properties.

#include "expectations.h"
#include "rich_event.h"

namespace {

using qv_test::ExpectMatches;
using qv_test::ExpectNoValue;

TEST(Properties, AreFoundByNameAndByPlace) {
    const CosNotification::PropertySeq event = qv_test::RichEvent().filterable_data;
    ExpectMatches(
        true, event,
        {"$count == 42", "$(count) == 42", "$[0].name == 'count'", "$[0].value == 42", "$._length == 20",
         "$severity == major", "$both == 'body'", "exist $node", "not exist $Priority", "$point.x == 4",
         "$('alarm-id') == 9", "3 in $list", "$._type_id == 'PropertySeq'",
         "$._repos_id == 'IDL:omg.org/CosNotification/PropertySeq:1.0'", "$curtime == 6000",
         "not exist $type_name", ""});
    ExpectMatches(false, event, {"$count == 43"});
    ExpectNoValue(event, {"$missing == 1", "$.count == 42", "$[20].name == ''", "$ == 1", "$[0] == 1"});
}

TEST(Properties, AnEmptyListHasNothing) {
    const CosNotification::PropertySeq event;
    ExpectMatches(true, event, {"TRUE", "not exist $a", "$._length == 0"});
    ExpectNoValue(event, {"$a == 1"});
}

TEST(Properties, OfATypedEventAreAlsoTheFixedNames) {
    qv_test::EtclOrb();
    CosNotification::PropertySeq event(1);
    event.length(1);
    event[0].name = "type_name";
    event[0].value <<= "mine";
    ExpectMatches(true, event, {"$type_name == 'mine'"});
}

}  // namespace
