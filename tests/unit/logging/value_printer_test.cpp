#include "logging/value_printer.h"

#include <gtest/gtest.h>

#include <initializer_list>

// Types that this ORB's own Anys can't hold, but a peer's or another ORB's can, as CDR made by hand.

namespace {

using NS_CORBA::CdrReader;
using NS_CORBA::ValuePlan;
using NS_CORBA::ValuePrinter;

/// Little-endian CDR.
class Cdr {
  public:
    explicit Cdr(std::initializer_list<int> bytes = {}) { Octets(bytes); }

    Cdr& Octets(std::initializer_list<int> bytes) {
        for (const int byte : bytes) {
            m_bytes += static_cast<char>(byte);
        }
        return *this;
    }
    Cdr& ULong(std::uint32_t number) {
        m_bytes.append(-m_bytes.size() % 4, '\0');
        for (int i = 0; i < 4; ++i) {
            m_bytes += static_cast<char>(number >> (8 * i));
        }
        return *this;
    }
    Cdr& Text(const std::string& text) {
        ULong(static_cast<std::uint32_t>(text.size() + 1));
        m_bytes += text + '\0';
        return *this;
    }
    Cdr& Encapsulated(const Cdr& inner) {
        ULong(static_cast<std::uint32_t>(inner.m_bytes.size()));
        m_bytes += inner.m_bytes;
        return *this;
    }
    CdrReader Reader() const { return CdrReader(m_bytes.data(), m_bytes.size()); }

  private:
    std::string m_bytes;
};

/// union switch (wchar) { case L'a': octet letter; case L'\u20ac': octet euro; default: octet other; }, with
/// the wide characters of its labels as given.
Cdr UnionByWideCharacter(std::initializer_list<int> letter, std::initializer_list<int> euro) {
    Cdr type({1});
    type.Text("IDL:W:1.0").Text("W").ULong(CORBA::tk_wchar).ULong(2).ULong(3);
    type.Octets(letter).Text("letter").ULong(CORBA::tk_octet);
    type.Octets(euro).Text("euro").ULong(CORBA::tk_octet);
    type.Octets({2, 0, 0}).Text("other").ULong(CORBA::tk_octet);
    return Cdr().ULong(CORBA::tk_union).Encapsulated(type);
}

std::string Printed(const Cdr& type, const Cdr& value) {
    CdrReader typeReader = type.Reader();
    CdrReader reader = value.Reader();
    std::string text;
    ValuePrinter(text, [] { return true; }).Print(*ValuePlan::Read(typeReader), reader);
    EXPECT_EQ(reader.Left(), 0u);
    return text;
}

TEST(ValuePrinter, AWideCharacterSelectsTheMemberOfAUnion) {
    const Cdr type = UnionByWideCharacter({2, 0x00, 'a'}, {2, 0x20, 0xac});
    EXPECT_EQ(Printed(type, Cdr({2, 0x00, 'a', 'x'})), "letter x");
    EXPECT_EQ(Printed(type, Cdr({2, 0x20, 0xac, 'x'})), "euro x");
    EXPECT_EQ(Printed(type, Cdr({2, 0xac, 0x20, 'x'})), "other x");
    EXPECT_EQ(Printed(type, Cdr({4, 0xd8, 0x01, 0xdc, 0x00, 'x'})), "other x");
}

TEST(ValuePrinter, AByteOrderMarkIsNoPartOfAWideCharacter) {
    const Cdr type = UnionByWideCharacter({4, 0xfe, 0xff, 0x00, 'a'}, {2, 0x20, 0xac});
    EXPECT_EQ(Printed(type, Cdr({2, 0x00, 'a', 'x'})), "letter x");
    EXPECT_EQ(Printed(type, Cdr({4, 0xff, 0xfe, 0xac, 0x20, 'x'})), "euro x");
    EXPECT_EQ(Printed(type, Cdr({4, 0xfe, 0xff, 0x20, 0xac, 'x'})), "euro x");
}

TEST(ValuePrinter, WideCharactersInTheMachinesOwnFormAreEqualWhenTheirBytesAre) {
    const Cdr type = UnionByWideCharacter({4, 'a', 0, 0, 0}, {4, 0xac, 0x20, 0, 0});
    EXPECT_EQ(Printed(type, Cdr({4, 0xac, 0x20, 0, 0, 'x'})), "euro x");
    EXPECT_EQ(Printed(type, Cdr({4, 'a', 0, 0, 0, 'x'})), "letter x");
    EXPECT_EQ(Printed(type, Cdr({4, 'b', 0, 0, 0, 'x'})), "other x");
}

TEST(ValuePrinter, AWideCharacterOfNoFormIsRefused) {
    const Cdr type = UnionByWideCharacter({2, 0x00, 'a'}, {2, 0x20, 0xac});
    EXPECT_THROW(Printed(type, Cdr({9, 0, 0, 0, 0, 0, 0, 0, 0, 'a', 'x'})), CORBA::MARSHAL);
    EXPECT_THROW(Printed(type, Cdr({0, 'x'})), CORBA::MARSHAL);
    EXPECT_THROW(Printed(type, Cdr({2, 0})), CORBA::MARSHAL);
}

}  // namespace
