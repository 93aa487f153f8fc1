// Texts that are no constraints: which column the message names, and what it expects there.

#include <string>

#include "expectations.h"

namespace {

using qv_notify::etcl::Constraint;
using qv_notify::etcl::ConstraintError;

struct Refused {
    const char* text;
    std::size_t column;
    const char* expected;  // part of the message
};

void ExpectRefused(const std::string& text, std::size_t column, const std::string& expected) {
    try {
        Constraint::Parse(text);
        ADD_FAILURE() << "accepted: " << text.substr(0, 100);
    } catch (const ConstraintError& error) {
        EXPECT_EQ(error.column(), column) << text.substr(0, 100) << ": " << error.what();
        EXPECT_NE(std::string(error.what()).find(expected), std::string::npos)
            << text.substr(0, 100) << ": " << error.what();
        EXPECT_EQ(std::string(error.what()).rfind("Column " + std::to_string(column) + ": expected ", 0), 0U)
            << error.what();
    }
}

TEST(ParseErrors, OperatorsAndOperands) {
    const Refused cases[] = {
        {"and", 1, "an operand instead of 'and'"},
        {"$a ==", 6, "an operand instead of the end"},
        {"== 1", 1, "an operand"},
        {"1 = 1", 3, "an operand, an operator or a parenthesis"},
        {"1 == 1 == 1", 8, "can't be chained"},
        {"1 < 2 < 3", 7, "can't be chained"},
        {"a ~ b ~ c", 7, "an operator or the end instead of '~'"},
        {"1 in $a in $b", 9, "an operator or the end instead of 'in'"},
        {"not not TRUE", 5, "an operand instead of 'not'"},
        {"not", 4, "an operand instead of the end"},
        {"1 +", 4, "an operand instead of the end"},
        {"1 + * 2", 5, "an operand instead of '*'"},
        {"1 2", 3, "an operator or the end instead of a number"},
        {"'a' 'b'", 5, "an operator or the end instead of a text"},
        {"--1 == 1", 2, "an operand behind the sign"},
        {"1 - - -1 == 1", 7, "an operand behind the sign"},
        {"TRUE or", 8, "an operand instead of the end"},
        {"TRUE or or TRUE", 9, "an operand instead of 'or'"},
        {"1 in 2", 6, "the component that is the list instead of a number"},
        {"1 in ($a)", 6, "the component that is the list instead of '('"},
        {"exist 1", 7, "a component instead of a number"},
        {"exist", 6, "a component instead of the end"},
        {"exist exist $a", 7, "a component"},
        {"default a", 9, "a component that ends with ._d"},
        {"default $.a", 9, "a component that ends with ._d"},
        {"default $", 9, "a component that ends with ._d"},
        {"default", 8, "a component that ends with ._d"},
        {"1 & 2", 3, "an operand, an operator"},
        {"1 ! 2", 3, "an operand, an operator"},
        {"a.b == 1", 2, "an operand, an operator"},
        {"1 == \"a\"", 6, "an operand, an operator"},
        {"\xc3\xbc == 1", 1, "an operand, an operator"},
        {"_a == 1", 1, "an operand, an operator"},
    };
    for (const Refused& refused : cases) {
        ExpectRefused(refused.text, refused.column, refused.expected);
    }
}

TEST(ParseErrors, Parentheses) {
    const Refused cases[] = {
        {"(", 2, "an operand instead of the end"},
        {")", 1, "an operand instead of ')'"},
        {"()", 2, "an operand instead of ')'"},
        {"(TRUE", 6, "an operator or ')' instead of the end"},
        {"TRUE)", 5, "an operator or the end instead of ')'"},
        {"(1 == 1))", 9, "an operator or the end instead of ')'"},
        {"((TRUE)", 8, "an operator or ')'"},
    };
    for (const Refused& refused : cases) {
        ExpectRefused(refused.text, refused.column, refused.expected);
    }
}

TEST(ParseErrors, LiteralsAndNames) {
    const Refused cases[] = {
        {"'abc", 1, "a quote at the end of the text that begins here"},
        {"$a == 'abc\\'", 7, "a quote at the end"},
        {"'", 1, "a quote at the end"},
        {"1 == 1x", 7, "an operator or the end behind the number"},
        {"1.2.3 == 1", 4, "an operator or the end behind the number"},
        {"1e == 1", 3, "the digits of the exponent"},
        {"1e+ == 1", 4, "the digits of the exponent"},
        {"18446744073709551616 == 1", 1, "an integer of at most 64 bits"},
        {"1e999 == 1", 1, "a number that a double can hold"},
        {". == 1", 1, "an operand, an operator"},
        {"\\1 == 1", 1, "a name behind the backslash"},
        {"\\ == 1", 1, "a name behind the backslash"},
        {"\\_a == 1", 1, "a name behind the backslash"},
    };
    for (const Refused& refused : cases) {
        ExpectRefused(refused.text, refused.column, refused.expected);
    }
    ExpectRefused(std::string("1 == \0 1", 8), 6, "an operand, an operator");
}

TEST(ParseErrors, Components) {
    const Refused cases[] = {
        {"$. == 1", 4, "the name or the place of a member"},
        {"$.", 3, "the name or the place of a member"},
        {"$.a. == 1", 6, "the name or the place of a member"},
        {"$.a..b == 1", 5, "the name or the place of a member"},
        {"$.in == 1", 3, "not the keyword 'in', which takes a backslash"},
        {"$.a(not) == 1", 5, "not the keyword 'not'"},
        {"$.a[] == 1", 5, "the number of an element"},
        {"$.a[x] == 1", 5, "the number of an element"},
        {"$.a[-1] == 1", 5, "the number of an element"},
        {"$.a[1 == 1", 7, "']'"},
        {"$.a[99999999999999999999] == 1", 5, "a number of at most 64 bits"},
        {"$.a() == 1", 5, "the name of a name-value pair"},
        {"$.a(1) == 1", 5, "the name of a name-value pair"},
        {"$.a(b == 1", 7, "')'"},
        {"$.a('b == 1", 5, "a quote at the end"},
        {"$.a.(x) == 1", 6, "the discriminator's value, a text or ')'"},
        {"$.a.(1 == 1", 8, "')'"},
        {"$.a.(+) == 1", 7, "the discriminator's value"},
        {"$.a.(- == 1", 8, "the discriminator's value"},
        {"$.a.('x' == 1", 10, "')'"},
        {"$._size == 1", 3, "_length, _d, _type_id or _repos_id"},
        {"$.a._length.b == 1", 12, "this component has no parts"},
        {"$.a._d[0] == 1", 7, "this component has no parts"},
        {"$.a._type_id(x) == 1", 13, "this component has no parts"},
        {"$$ == 1", 2, "an operator or the end"},
        {"$.a b == 1", 5, "an operator or the end instead of a name"},
        {"$1 == 1", 2, "an operator or the end instead of a number"},
        {"$.\\9 == 1", 3, "the name or the place of a member"},
    };
    for (const Refused& refused : cases) {
        ExpectRefused(refused.text, refused.column, refused.expected);
    }
}

TEST(ParseErrors, NestingIsLimited) {
    constexpr unsigned kMost = Constraint::kMaxNesting;
    const auto nested = [](unsigned depth) {
        return std::string(depth, '(') + "TRUE" + std::string(depth, ')');
    };
    EXPECT_TRUE(Constraint::Parse(nested(kMost))->Matches(CosNotification::PropertySeq()));
    ExpectRefused(nested(kMost + 1), kMost + 1, "at most 200 parentheses inside of each other");
    ExpectRefused(std::string(60000, '('), kMost + 1, "at most 200 parentheses");
}

TEST(ParseErrors, LengthIsLimited) {
    constexpr std::size_t kMost = Constraint::kMaxText;
    const std::string longest = "TRUE" + std::string(kMost - 4, ' ');
    EXPECT_TRUE(Constraint::Parse(longest)->Matches(CosNotification::PropertySeq()));
    ExpectRefused(longest + " ", kMost + 1, "at most 65536 bytes");
}

TEST(ParseErrors, LongChainsAreNotDeep) {
    std::string sum = "0 ==0";
    while (sum.size() + 4 < Constraint::kMaxText) {
        sum += "+1-1";
    }
    EXPECT_TRUE(Constraint::Parse(sum)->Matches(CosNotification::PropertySeq()));
    std::string any = "FALSE";
    while (any.size() + 9 < Constraint::kMaxText) {
        any += " or FALSE";
    }
    EXPECT_FALSE(Constraint::Parse(any)->Matches(CosNotification::PropertySeq()));
}

}  // namespace
