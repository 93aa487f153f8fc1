// Bytes that are no value of their type, and types that are none: evaluation ends and reads nothing beyond
// them.

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "eventC.h"
#include "expectations.h"
#include "orb/cdr_reader.h"
#include "orb/value_access.h"
#include "rich_event.h"
#include "services/notify/etcl/type_table.h"
#include "services/notify/etcl/value_place.h"
#include "services/notify/etcl/value_skip.h"

namespace {

using namespace qv_notify::etcl;

const bool kLittleEndian = [] {
    const CORBA::ULong one = 1;
    return *reinterpret_cast<const char*>(&one) == 1;
}();

/// A copy whose end the sanitizer watches.
std::vector<char> Copy(std::string_view bytes) {
    return {bytes.begin(), bytes.end()};
}

std::string BytesOfBody(const CORBA::Any& body) {
    const qv_orb::ValueBytes bytes(body);
    return std::string(bytes.data(), bytes.size());
}

/// Whether the action succeeded; it may raise nothing but system exceptions.
bool Succeeds(const std::function<bool()>& action) {
    try {
        return action();
    } catch (const CORBA::SystemException&) {
        return false;
    }
}

TEST(BrokenValues, AnyBeginningOfAValueIsReadToItsEndAtMost) {
    const CORBA::Any body = qv_test::RichBody();
    const std::string whole = BytesOfBody(body);
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        const std::vector<char> bytes = Copy(std::string_view(whole).substr(0, size));
        const bool found = Succeeds([&] {
            ValuePlace place(qv_orb::TypeOf(body), CdrReader(bytes.data(), bytes.size()));
            if (!place.ToMember("in")) {
                return false;
            }
            CdrReader reader = place.reader();
            return reader.String() == "keyword";
        });
        EXPECT_EQ(found, size == whole.size()) << size;
    }
}

TEST(BrokenValues, DamagedTypesAreRefusedOrRead) {
    qv_test::EtclOrb();  // without an ORB no TypeCode is marshalled
    const std::string whole = qv_orb::TypeCodeBytes(Probe::_tc_Body);
    for (std::size_t place = 0; place < whole.size(); ++place) {
        for (const char damage : {'\0', '\x01', '\x15', '\x7f', '\xff'}) {
            std::string damaged = whole;
            damaged[place] = damage;
            const std::vector<char> bytes = Copy(damaged);
            Succeeds([&] {
                CdrReader reader(bytes.data(), bytes.size());
                return TypeTable::Read(reader) != nullptr;
            });
        }
        const std::vector<char> cut = Copy(std::string_view(whole).substr(0, place));
        EXPECT_FALSE(Succeeds([&] {
            CdrReader reader(cut.data(), cut.size());
            return TypeTable::Read(reader) != nullptr;
        })) << place;
    }
}

TEST(BrokenValues, AnAliasOfItselfIsNoType) {
    // An alias whose original type is an indirection to the alias: its kind stands 24 bytes ahead of the
    // offset.
    const unsigned char bytes[] = {0, 0, 0, 21, 0,    0,    0,    28,   0,    0,    0,    0,
                                   0, 0, 0, 1,  0,    0,    0,    0,    0,    0,    0,    1,
                                   0, 0, 0, 0,  0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xe0};
    std::vector<char> copy;
    for (const unsigned char byte : bytes) {
        copy.push_back(static_cast<char>(byte));
    }
    CdrReader reader(copy.data(), copy.size(), true);
    EXPECT_THROW(TypeTable::Read(reader), CORBA::BAD_TYPECODE);
}

/// An encapsulation in this machine's byte order, ahead of which its size stands.
std::vector<CORBA::ULong> Encapsulated(const std::vector<CORBA::ULong>& words) {
    std::vector<CORBA::ULong> all{static_cast<CORBA::ULong>((words.size() + 1) * sizeof words[0]), 0};
    const char little_endian = kLittleEndian ? 1 : 0;
    std::memcpy(&all[1], &little_endian, 1);
    all.insert(all.end(), words.begin(), words.end());
    return all;
}

// Values of such a union would take up nothing, so an array of 2^32 of them would be there in any event.
TEST(BrokenValues, AUnionWithoutMembersNeedsADiscriminatorAllTheSame) {
    for (const CORBA::TCKind kind : {CORBA::tk_long, CORBA::tk_float, CORBA::tk_any, CORBA::tk_TypeCode}) {
        std::vector<CORBA::ULong> type{CORBA::tk_union};
        for (const CORBA::ULong word : Encapsulated({1, 0, 1, 0, static_cast<CORBA::ULong>(kind), ~0U, 0})) {
            type.push_back(word);
        }
        type.push_back(~0U);  // elements
        std::vector<CORBA::ULong> array = Encapsulated(type);
        array.insert(array.begin(), CORBA::tk_array);
        CdrReader reader(reinterpret_cast<const char*>(array.data()), array.size() * sizeof array[0]);
        if (kind != CORBA::tk_long) {
            EXPECT_THROW(TypeTable::Read(reader), CORBA::BAD_TYPECODE) << kind;
            continue;
        }
        const TypeTablePtr table = TypeTable::Read(reader);
        const std::vector<char> bytes(16, '\0');
        CdrReader value(bytes.data(), bytes.size());
        EXPECT_THROW(SkipValue(*table, table->root(), value), CORBA::MARSHAL);
    }
}

TEST(BrokenValues, TheOtherByteOrderIsRead) {
    // An Any with the long 258, big-endian.
    const char bytes[] = {0, 0, 0, 3, 0, 0, 1, 2};
    ValuePlace place(CORBA::_tc_any, CdrReader(bytes, sizeof bytes, kLittleEndian));
    EXPECT_EQ(place.kind(), CORBA::tk_long);
    EXPECT_EQ(place.reader().ULong(), 258U);
}

/// A sequence of two Anys, the first of which holds `depth` more around a long 1, the second the long 2.
std::vector<CORBA::ULong> NestedAnys(std::size_t depth) {
    std::vector<CORBA::ULong> words = {2};
    words.insert(words.end(), depth, CORBA::tk_any);
    words.insert(words.end(), {CORBA::tk_long, 1, CORBA::tk_long, 2});
    return words;
}

ValuePlace PlaceOf(const std::vector<CORBA::ULong>& words) {
    return ValuePlace(Probe::_tc_Anys,
                      CdrReader(reinterpret_cast<const char*>(words.data()), words.size() * sizeof words[0]));
}

TEST(BrokenValues, UnwrappingHasNoLimit) {
    const std::vector<CORBA::ULong> words = NestedAnys(1000000);
    ValuePlace place = PlaceOf(words);
    ASSERT_TRUE(place.ToElement(0));
    EXPECT_EQ(place.kind(), CORBA::tk_long);
    EXPECT_EQ(place.reader().ULong(), 1U);
}

TEST(BrokenValues, SkippingIsLimitedInDepth) {
    const std::vector<CORBA::ULong> flat = NestedAnys(100);
    ValuePlace place = PlaceOf(flat);
    ASSERT_TRUE(place.ToElement(1));
    EXPECT_EQ(place.reader().ULong(), 2U);
    const std::vector<CORBA::ULong> deep = NestedAnys(1000000);
    place = PlaceOf(deep);
    EXPECT_THROW(place.ToElement(1), CORBA::IMP_LIMIT);
}

TEST(BrokenValues, ACountBeyondTheBytesIsNoList) {
    const std::string type = qv_orb::TypeCodeBytes(Probe::_tc_Points);
    CdrReader of_type(type.data(), type.size());
    const TypeTablePtr table = TypeTable::Read(of_type);
    const std::vector<char> bytes(16, '\x7f');
    CdrReader reader(bytes.data(), bytes.size());
    EXPECT_THROW(SkipValue(*table, table->root(), reader), CORBA::MARSHAL);
}

}  // namespace
