#include "services/notify/store/description.h"

#include <gmock/gmock.h>

#include <limits>

namespace {

using namespace qv_notify;
using ::testing::HasSubstr;

PropertyValues AllTypes() {
    return {{"A", true},
            {"B", false},
            {"C", std::numeric_limits<std::int16_t>::min()},
            {"D", std::numeric_limits<std::int32_t>::min()},
            {"E", std::numeric_limits<std::uint64_t>::max()}};
}

std::string AllOctets() {
    std::string octets;
    for (int octet = 0; octet < 256; ++octet) {
        octets += static_cast<char>(octet);
    }
    return octets;
}

ChannelState Channel() {
    return {7, AllTypes(), {{"MaxConsumers", std::int32_t{3}}}};
}

AdminState Admin() {
    AdminState state;
    state.id = 8;
    state.for_consumers = true;
    state.and_operator = true;
    state.qos = AllTypes();
    state.types = {{"Telecom", "*"}, {"", "\"\\\n"}};
    state.filters = {{1, 5, ""}, {2, std::nullopt, "IOR:00"}};
    state.next_filter_id = 3;
    return state;
}

ProxyState Proxy() {
    ProxyState state;
    state.id = 9;
    state.supplier = true;
    state.client_type = ClientKind::kSequence;
    state.peer = "IOR:0123";
    state.suspended = true;
    state.qos = {{"Priority", std::int16_t{-1}}};
    state.types = {{AllOctets(), "x"}};
    state.filters = {{-1, std::nullopt, ""}};
    state.next_filter_id = std::numeric_limits<std::int32_t>::max();
    return state;
}

FilterState Filter() {
    return {10, "EXTENDED_TCL", {{1, {{"a", "b"}, {"c", "d"}}, "$.x == 'y'"}, {4, {}, ""}}, 5};
}

template <class Read>
std::string ErrorOf(Read read, const std::string& text) {
    try {
        read(text);
    } catch (const StoreError& error) {
        return error.what();
    }
    return "";
}

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
    const std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

TEST(Description, IsReadAsItWasWritten) {
    EXPECT_EQ(ReadChannel(Text(Channel())), Channel());
    EXPECT_EQ(ReadAdmin(Text(Admin())), Admin());
    EXPECT_EQ(ReadProxy(Text(Proxy())), Proxy());
    EXPECT_EQ(ReadFilter(Text(Filter())), Filter());
    EXPECT_EQ(ReadChannel(Text(ChannelState())), ChannelState());
    EXPECT_EQ(ReadAdmin(Text(AdminState())), AdminState());
    EXPECT_EQ(ReadProxy(Text(ProxyState())), ProxyState());
    EXPECT_EQ(ReadFilter(Text(FilterState())), FilterState());
}

TEST(Description, EveryKindOfClientIsKept) {
    for (const ClientKind kind : {ClientKind::kAny, ClientKind::kStructured, ClientKind::kSequence}) {
        ProxyState state;
        state.client_type = kind;
        EXPECT_EQ(ReadProxy(Text(state)).client_type, kind);
    }
}

TEST(Description, KeepsTheTypeOfAProperty) {
    const PropertyValues read = ReadChannel(Text(Channel())).qos;
    EXPECT_TRUE(std::holds_alternative<bool>(read.at("A")));
    EXPECT_TRUE(std::holds_alternative<std::int16_t>(read.at("C")));
    EXPECT_TRUE(std::holds_alternative<std::int32_t>(read.at("D")));
    EXPECT_TRUE(std::holds_alternative<std::uint64_t>(read.at("E")));
}

TEST(Description, SkipsMembersThatAreNotKnown) {
    EXPECT_EQ(ReadAdmin(Replaced(Text(Admin()), "{", R"({"later":{"a":[1,2]},)")), Admin());
}

TEST(Description, OneKindIsNotTakenForAnother) {
    EXPECT_THAT(ErrorOf(ReadAdmin, Text(Proxy())), HasSubstr("something else"));
    EXPECT_THAT(ErrorOf(ReadFilter, Text(Channel())), HasSubstr("something else"));
}

TEST(Description, ANewerVersionIsRefused) {
    EXPECT_EQ(ErrorOf(ReadFilter, Replaced(Text(Filter()), "\"version\":1", "\"version\":2")),
              "The stored description of a filter has the version 2, and this service knows 1 at most. Start "
              "the newer service.");
    EXPECT_NE(ErrorOf(ReadFilter, Replaced(Text(Filter()), "\"version\":1", "\"version\":0")), "");
}

TEST(Description, WhatIsNoJsonObjectIsRefused) {
    const std::string sound = Text(Channel());
    for (const std::string& text :
         {std::string(), std::string("{"), std::string("[]"), std::string("null"), sound + "x", sound + sound,
          "// a comment\n" + sound, sound.substr(0, sound.size() - 1),
          std::string("{\"kind\":\"channel\",\"kind\":\"channel\"}"), std::string(5000, '['),
          "{\"a\":" + std::string(5000, '[')}) {
        EXPECT_THAT(ErrorOf(ReadChannel, text), HasSubstr("The stored description of a channel"))
            << text.substr(0, 60);
    }
}

TEST(Description, EachMemberIsNeededAndOfItsType) {
    const std::string sound = Text(Proxy());
    for (const char* member : {"kind", "version", "id", "supplier", "client", "peer", "suspended", "qos",
                               "types", "filters", "next_filter"}) {
        const std::string quoted = "\"" + std::string(member) + "\":";
        EXPECT_THAT(ErrorOf(ReadProxy, Replaced(sound, quoted, "\"other\":")),
                    HasSubstr("there is no \"" + std::string(member) + "\""));
        EXPECT_NE(ErrorOf(ReadProxy, Replaced(sound, quoted, quoted + "1.5,\"other\":")), "") << member;
        EXPECT_NE(ErrorOf(ReadProxy, Replaced(sound, quoted, quoted + "null,\"other\":")), "") << member;
    }
}

TEST(Description, ValuesOutOfRangeAreRefused) {
    const std::string sound = Text(Channel());
    EXPECT_NE(ErrorOf(ReadChannel, Replaced(sound, "{\"short\":-32768}", "{\"short\":-32769}")), "");
    EXPECT_NE(ErrorOf(ReadChannel, Replaced(sound, "-2147483648", "-2147483649")), "");
    EXPECT_NE(ErrorOf(ReadChannel, Replaced(sound, "18446744073709551615", "18446744073709551616")), "");
    EXPECT_NE(ErrorOf(ReadChannel, Replaced(sound, "18446744073709551615", "-1")), "");
    EXPECT_NE(ErrorOf(ReadChannel, Replaced(sound, "{\"short\":-32768}", "{}")), "");
    EXPECT_NE(ErrorOf(ReadProxy, Replaced(Text(Proxy()), "\"sequence\"", "\"telegram\"")), "");
    EXPECT_NE(ErrorOf(ReadProxy, Replaced(Text(Proxy()), "IOR:0123", "\\u20ac")), "");
}

}  // namespace
