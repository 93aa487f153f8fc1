#include <ace/Message_Block.h>
#include <gtest/gtest.h>
#include <tao/CDR.h>

#include <cstring>
#include <string>

namespace {

constexpr int kBig = 0;
constexpr int kLittle = 1;

// A block with the bytes, the first of which lies at an aligned address.
struct Block : ACE_Message_Block {
    explicit Block(const std::string& bytes) : ACE_Message_Block(bytes.size() + ACE_CDR::MAX_ALIGNMENT) {
        ACE_CDR::mb_align(this);
        copy(bytes.data(), bytes.size());
    }
};

struct Stream {
    explicit Stream(const std::string& bytes, int order = kBig) : block(bytes), cdr(&block, nullptr, order) {}
    Block block;
    TAO_InputCDR cdr;
};

std::string Bytes(std::initializer_list<int> values) {
    std::string bytes;
    for (const int value : values) {
        bytes.push_back(static_cast<char>(value));
    }
    return bytes;
}

TEST(InputCdr, ReadsBasicTypesInBothOrders) {
    Stream big(Bytes({7, 0, 1, 2, 0, 0, 3, 4}), kBig);
    CORBA::Octet octet = 0;
    CORBA::UShort number = 0;
    CORBA::ULong large = 0;
    EXPECT_TRUE(big.cdr.read_octet(octet));
    EXPECT_EQ(7, octet);
    EXPECT_TRUE(big.cdr.read_ushort(number));  // aligned: the second byte is padding
    EXPECT_EQ(0x0102, number);
    EXPECT_TRUE(big.cdr.read_ulong(large));
    EXPECT_EQ(0x0304u, large);
    EXPECT_FALSE(big.cdr.read_octet(octet));
    EXPECT_FALSE(big.cdr.good_bit());

    Stream little(Bytes({4, 3, 0, 0, 2, 1}), kLittle);
    EXPECT_TRUE(little.cdr.read_ulong(large));
    EXPECT_EQ(0x0304u, large);
    EXPECT_TRUE(little.cdr.read_ushort(number));
    EXPECT_EQ(0x0102, number);
}

TEST(InputCdr, ReadsAStringThatTheOrbFrees) {
    Stream stream(Bytes({0, 0, 0, 3, 'a', 'b', 0}));
    char* text = nullptr;
    ASSERT_TRUE(stream.cdr.read_string(text));
    EXPECT_STREQ("ab", text);
    CORBA::string_free(text);
    EXPECT_EQ(0u, stream.cdr.length());
}

TEST(InputCdr, EndsAStringThatLacksItsEnd) {
    Stream stream(Bytes({0, 0, 0, 2, 'a', 'b', 'c'}));
    char* text = nullptr;
    ASSERT_TRUE(stream.cdr.read_string(text));
    EXPECT_STREQ("ab", text);
    CORBA::string_free(text);
}

TEST(InputCdr, AStringOfNoBytesIsEmpty) {
    Stream stream(Bytes({0, 0, 0, 0}));
    char* text = nullptr;
    ASSERT_TRUE(stream.cdr.read_string(text));
    EXPECT_STREQ("", text);
    CORBA::string_free(text);
}

TEST(InputCdr, AStringLongerThanTheStreamFails) {
    for (const std::string& length : {Bytes({0, 0, 0, 4}), Bytes({0x7f, 0xff, 0xff, 0xff}),
                                      Bytes({0x80, 0, 0, 0}), Bytes({0xff, 0xff, 0xff, 0xff})}) {
        Stream stream(length + "abc");
        char* text = CORBA::string_alloc(0);
        char* const before = text;
        EXPECT_FALSE(stream.cdr.read_string(text));
        EXPECT_EQ(nullptr, text);
        EXPECT_FALSE(stream.cdr.good_bit());
        CORBA::string_free(before);
    }
}

TEST(InputCdr, SkipsNoFurtherThanItsEnd) {
    Stream stream("abc");
    EXPECT_TRUE(stream.cdr.skip_bytes(2));
    EXPECT_FALSE(stream.cdr.skip_bytes(2));
    EXPECT_FALSE(stream.cdr.good_bit());
    for (const size_t huge : {size_t{0xffffffff}, ~size_t{0}, ~size_t{0} / 2}) {
        Stream other("abc");
        EXPECT_FALSE(other.cdr.skip_bytes(huge));
        EXPECT_EQ(3u, other.cdr.length());
    }
}

TEST(InputCdr, AnEncapsulationHasItsOwnOrderAndEnd) {
    Stream outer(Bytes({0, 0, 0, 8, kLittle, 0, 0, 0, 4, 3, 0, 0, 9}));
    CORBA::ULong size = 0;
    ASSERT_TRUE(outer.cdr.read_ulong(size));
    TAO_InputCDR inner(outer.cdr, size);
    ASSERT_TRUE(inner.good_bit());
    CORBA::ULong value = 0;
    EXPECT_TRUE(inner.read_ulong(value));
    EXPECT_EQ(0x0304u, value);
    CORBA::Octet past = 0;
    EXPECT_FALSE(inner.read_octet(past));

    EXPECT_TRUE(outer.cdr.skip_bytes(size));  // the outer one stood still
    EXPECT_TRUE(outer.cdr.read_octet(past));
    EXPECT_EQ(9, past);
}

TEST(InputCdr, AnEncapsulationLongerThanItsStreamIsBad) {
    for (const size_t size : {size_t{0}, size_t{4}, size_t{64}, size_t{0xffffffff}, ~size_t{0}}) {
        Stream outer("abc");
        const TAO_InputCDR inner(outer.cdr, size);
        EXPECT_FALSE(inner.good_bit()) << size;
        EXPECT_TRUE(outer.cdr.good_bit());
    }
}

}  // namespace
