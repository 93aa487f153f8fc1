#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "services/notify/etcl/number.h"

namespace qv_notify::etcl {

struct Token {
    enum class Kind : std::uint8_t {
        kEnd,
        kName,  ///< text
        kNumber,
        kText,    ///< text, unescaped
        kDollar,  ///< what follows it is the component parser's
        kOpen,
        kClose,
        kEqual,
        kNotEqual,
        kLess,
        kLessOrEqual,
        kGreater,
        kGreaterOrEqual,
        kTilde,
        kPlus,
        kMinus,
        kTimes,
        kDivide,
        kAnd,
        kOr,
        kNot,
        kIn,
        kExist,
        kDefault,
        kTrue,
        kFalse,
    };

    Kind kind = Kind::kEnd;
    std::size_t column = 1;  ///< of its first character
    std::string text;
    Number number;
};

/// Cuts a constraint's text into tokens. What is inside of a component is read by its pieces, since ".1" is a
/// number elsewhere. Throws ConstraintError. The text has to stay.
class Lexer {
  public:
    explicit Lexer(std::string_view text) : m_text(text) {}

    /// The next token of an expression.
    Token Next();

    /// The next character that is no blank, not taken; NUL at the end and for a NUL.
    char Peek();
    /// Takes the next character if it is this one.
    bool Take(char character);
    /// A name, with or without the backslash that makes one of a keyword. Throws for anything else,
    /// which is said to be `expected`.
    std::string TakeName(const char* expected);
    /// A name that begins with an underscore, or nothing.
    std::string TakeReservedName();
    /// Digits only.
    std::uint64_t TakeDigits(const char* expected);
    std::string TakeText();

    /// The column of the next character that is no blank.
    std::size_t Column();
    [[noreturn]] void Expected(const std::string& what);

  private:
    bool AtEnd() const { return m_next >= m_text.size(); }
    char At(std::size_t place) const { return place < m_text.size() ? m_text[place] : '\0'; }
    void SkipBlanks();
    std::string_view Word();
    Token Name();
    Number TakeNumber();
    Number NumberOf(std::string_view digits, std::size_t column, bool whole) const;
    Token::Kind TakeSymbol();

    const std::string_view m_text;
    std::size_t m_next = 0;
};

/// How messages name a token of that kind.
const char* NameOf(Token::Kind kind);

}  // namespace qv_notify::etcl
