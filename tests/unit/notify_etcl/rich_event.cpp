#include "rich_event.h"

#include <tao/TimeBaseC.h>

#include <initializer_list>
#include <limits>

#include "eventC.h"

namespace qv_test {

namespace {

template <class Value>
void Add(CosNotification::PropertySeq& list, const char* name, const Value& value) {
    const CORBA::ULong last = list.length();
    list.length(last + 1);
    list[last].name = name;
    list[last].value <<= value;
}

template <class List, class Value>
void Append(List& list, const Value& value) {
    const CORBA::ULong last = list.length();
    list.length(last + 1);
    list[last] = value;
}

CORBA::Any AnyOf(const char* text) {
    CORBA::Any any;
    any <<= text;
    return any;
}

template <class Value>
CORBA::Any AnyOf(const Value& value) {
    CORBA::Any any;
    any <<= value;
    return any;
}

Probe::Point PointOf(CORBA::Long x, const char* label) {
    Probe::Point point;
    point.x = x;
    point.label = label;
    return point;
}

Probe::Longs LongsOf(std::initializer_list<CORBA::Long> values) {
    Probe::Longs longs;
    for (const CORBA::Long value : values) {
        Append(longs, value);
    }
    return longs;
}

void FillBasic(Probe::Body& body) {
    body.yes = true;
    body.no = false;
    body.bits = 200;
    body.letter = 'x';
    body.wide_letter = L'\u00e9';
    body.s = -3;
    body.us = 60000;
    body.l = -100000;
    body.ul = 4000000000U;
    body.ll = std::numeric_limits<CORBA::LongLong>::min();
    body.ull = std::numeric_limits<CORBA::ULongLong>::max();
    body.f = 0.1F;
    body.d = 2.5;
    body.text = "it's a text";
    body.wide = CORBA::wstring_dup(L"gr\u00fc\u00dfe");
    body.amount = CORBA::Fixed("-123.45");
    body.target = Probe::Thing::_nil();
    body.type = CORBA::TypeCode::_duplicate(Probe::_tc_Point);
    body.inner = AnyOf(AnyOf(AnyOf(CORBA::Long{7})));
    body.reading = 17;
    body.in = "keyword";
}

void FillLists(Probe::Body& body) {
    body.longs = LongsOf({10, 20, 30});
    body.more = LongsOf({});
    Append(body.texts, "one");
    Append(body.texts, "two");
    Append(body.octets, CORBA::Octet{1});
    Append(body.octets, CORBA::Octet{255});
    Append(body.severities, Probe::minor);
    Append(body.severities, Probe::critical);
    Append(body.anys, AnyOf(CORBA::Short{5}));
    Append(body.anys, AnyOf("five"));
    Append(body.anys, AnyOf(AnyOf(Probe::major)));
    Append(body.points, PointOf(1, "first"));
    Append(body.points, PointOf(2, "second"));
    for (CORBA::Long i = 0; i < 6; ++i) {
        body.table[i / 3][i % 3] = i;
    }
    for (int i = 0; i < 3; ++i) {
        body.samples[i] = i * 0.5;
    }
    body.pairs.length(2);
    body.pairs[0].key = "first";
    body.pairs[0].content = AnyOf(PointOf(11, "paired"));
    body.pairs[1].key = "second";
    body.pairs[1].content = AnyOf("2nd");
}

void FillUnions(Probe::Body& body) {
    body.numbered.number(12);
    body.texted.text("chosen");
    body.texted._d(-3);
    body.defaulted.flag(true);
    body.defaulted._d(99);
    body.maybe.value(PointOf(6, "maybe"));
    body.nothing._default();
    body.colored.shade(4);
    body.lettered.big("b it is");
}

void FillParts(Probe::Body& body) {
    body.severity = Probe::major;
    body.perceived = Probe::warning;
    body.tint = Probe::green;
    body.place = PointOf(4, "here");
    body.tree.name = "root";
    body.tree.children.length(2);
    body.tree.children[0].name = "left";
    body.tree.children[1].name = "right";
    body.tree.children[1].children.length(1);
    body.tree.children[1].children[0].name = "leaf";
}

CORBA::Any WideAny() {
    CORBA::Any any;
    any <<= L"gr\u00fc\u00dfe";
    return any;
}

void FillHeader(CosNotification::EventHeader& header) {
    header.fixed_header.event_type.domain_name = "Telecom";
    header.fixed_header.event_type.type_name = "CommunicationsAlarm";
    header.fixed_header.event_name = "lost_packet";
    Add(header.variable_header, "Priority", CORBA::Short{3});
    TimeBase::UtcT start{};
    start.time = 5000;
    Add(header.variable_header, "StartTime", start);
    CORBA::Any perceived = AnyOf(Probe::major);
    perceived.type(Probe::_tc_PerceivedSeverity);
    Append(header.variable_header, CosNotification::Property());
    header.variable_header[2].name = "perceived";
    header.variable_header[2].value = perceived;
    Add(header.variable_header, "both", "header");
    Add(header.variable_header, "domain_name", "shadow");
}

void FillData(CosNotification::PropertySeq& data) {
    Add(data, "count", CORBA::Long{42});
    Add(data, "rate", CORBA::Double{2.5});
    Add(data, "ratio", CORBA::Float{0.1F});
    Add(data, "node", "node-7");
    Add(data, "big", std::numeric_limits<CORBA::ULongLong>::max());
    Add(data, "ok", CORBA::Any::from_boolean(true));
    Add(data, "bad", CORBA::Any::from_boolean(false));
    Add(data, "letter", CORBA::Any::from_char('x'));
    Add(data, "octet", CORBA::Any::from_octet(7));
    Add(data, "severity", Probe::major);
    Add(data, "list", LongsOf({1, 2, 3}));
    Add(data, "deep", AnyOf(AnyOf(CORBA::Long{7})));
    Add(data, "both", "body");
    Add(data, "alarm-id", CORBA::Long{9});
    Add(data, "in", CORBA::Long{5});
    Add(data, "point", PointOf(4, "here"));
    Add(data, "wide", WideAny());
    Add(data, "empty", CORBA::Any());
    Add(data, "zero", CORBA::Long{0});
    Add(data, "count", CORBA::Long{43});
}

}  // namespace

CORBA::ORB_ptr EtclOrb() {
    static CORBA::ORB_var orb = [] {
        int argc = 0;
        char* argv[] = {nullptr};
        return CORBA::ORB_init(argc, argv);
    }();
    return orb.in();
}

CORBA::Any RichBody() {
    EtclOrb();
    // Handed over, since a copy of a structure loses the digits of its fixed members.
    auto* const body = new Probe::Body;
    CORBA::Any any;
    any <<= body;
    FillBasic(*body);
    FillLists(*body);
    FillUnions(*body);
    FillParts(*body);
    return any;
}

CosNotification::StructuredEvent RichEvent() {
    EtclOrb();
    CosNotification::StructuredEvent event;
    FillHeader(event.header);
    FillData(event.filterable_data);
    event.remainder_of_body = RichBody();
    return event;
}

}  // namespace qv_test
