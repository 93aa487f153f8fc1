#include "orb/cdr_reader.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using qv_orb::CdrReader;

constexpr bool kLittle = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;

/// The bytes in big endian order, as they stand.
CdrReader BigEndian(const std::string& bytes) {
    return CdrReader(bytes.data(), bytes.size(), kLittle);
}

std::string Bytes(std::initializer_list<int> values) {
    std::string bytes;
    for (const int value : values) {
        bytes += static_cast<char>(value);
    }
    return bytes;
}

TEST(CdrReader, AlignsEachTypeToItsSize) {
    const std::string bytes = Bytes({7, 0, 1, 2, 0, 0, 0, 3, 0, 0, 0, 0, 0, 0, 0, 4});
    CdrReader reader = BigEndian(bytes);
    EXPECT_EQ(reader.Octet(), 7);
    EXPECT_EQ(reader.UShort(), 0x0102);
    EXPECT_EQ(reader.ULong(), 3U);
    EXPECT_EQ(reader.ULongLong(), 4U);
    EXPECT_EQ(reader.Left(), 0U);
}

TEST(CdrReader, ReadsFloatingPointNumbers) {
    const std::string bytes =
        Bytes({0x3f, 0xc0, 0, 0, 0, 0, 0, 0, 0xc0, 0x04, 0, 0, 0, 0, 0, 0});  // 1.5, padding, -2.5
    CdrReader reader = BigEndian(bytes);
    EXPECT_EQ(reader.Float(), 1.5F);
    EXPECT_EQ(reader.Double(), -2.5);
}

TEST(CdrReader, EndsAStringAtItsFirstNul) {
    const std::string bytes = Bytes({0, 0, 0, 5, 'a', 'b', 0, 'c', 0, 0, 0, 0, 0, 0, 0, 0});
    CdrReader reader = BigEndian(bytes);
    EXPECT_EQ(reader.String(), "ab");
    EXPECT_EQ(reader.String(), "");  // without even a NUL
    EXPECT_EQ(reader.Left(), 0U);
}

TEST(CdrReader, ReadsAnEncapsulationInItsOwnByteOrderAndAlignment) {
    const std::string bytes = Bytes({1, 0, 0, 0, 2, 0, 0, 0});
    CdrReader reader = CdrReader::Encapsulation(bytes);
    EXPECT_TRUE(reader.LittleEndian());
    EXPECT_EQ(reader.ULong(), 2U);
}

TEST(CdrReader, ReadsNothingBeyondTheBlock) {
    const std::string bytes = Bytes({0, 0, 0, 9, 'a'});
    CdrReader text = BigEndian(bytes);
    EXPECT_THROW(text.String(), CORBA::MARSHAL);
    CdrReader number = BigEndian(bytes);
    number.ULong();
    EXPECT_THROW(number.UShort(), CORBA::MARSHAL);
    CdrReader skipped = BigEndian(bytes);
    EXPECT_THROW(skipped.SkipAligned(1, 6), CORBA::MARSHAL);
    EXPECT_THROW(CdrReader::Encapsulation({}), CORBA::MARSHAL);
}

TEST(CdrReader, ACopyReadsOnByItself) {
    const std::string bytes = Bytes({1, 2});
    CdrReader reader = BigEndian(bytes);
    CdrReader copy = reader;
    EXPECT_EQ(reader.Octet(), 1);
    EXPECT_EQ(copy.Octet(), 1);
    EXPECT_EQ(reader.Octet(), 2);
}

}  // namespace
