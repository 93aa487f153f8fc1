#include "services/notify/etcl/lexer.h"

#include <charconv>
#include <system_error>
#include <utility>

#include "services/notify/etcl/constraint.h"

namespace qv_notify::etcl {

namespace {

// Of the C locale, whatever the process's is.
bool IsBlank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

bool IsLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool IsInName(char c) {
    return IsLetter(c) || IsDigit(c) || c == '_';
}

Token::Kind KindOfWord(std::string_view word) {
    static constexpr std::pair<std::string_view, Token::Kind> kKeywords[] = {
        {"and", Token::Kind::kAnd},   {"or", Token::Kind::kOr},       {"not", Token::Kind::kNot},
        {"in", Token::Kind::kIn},     {"exist", Token::Kind::kExist}, {"default", Token::Kind::kDefault},
        {"TRUE", Token::Kind::kTrue}, {"FALSE", Token::Kind::kFalse},
    };
    for (const auto& [keyword, kind] : kKeywords) {
        if (word == keyword) {
            return kind;
        }
    }
    return Token::Kind::kName;
}

}  // namespace

void Lexer::SkipBlanks() {
    while (!AtEnd() && IsBlank(m_text[m_next])) {
        ++m_next;
    }
}

std::size_t Lexer::Column() {
    SkipBlanks();
    return m_next + 1;
}

void Lexer::Expected(const std::string& what) {
    throw ConstraintError(Column(), what);
}

char Lexer::Peek() {
    SkipBlanks();
    return At(m_next);
}

bool Lexer::Take(char character) {
    if (AtEnd() || Peek() != character) {
        return false;
    }
    ++m_next;
    return true;
}

std::string_view Lexer::Word() {
    const std::size_t begin = m_next;
    while (IsInName(At(m_next))) {
        ++m_next;
    }
    return m_text.substr(begin, m_next - begin);
}

std::string Lexer::TakeName(const char* expected) {
    const char first = Peek();
    if (first == '\\' && IsLetter(At(m_next + 1))) {
        ++m_next;
        return std::string(Word());
    }
    if (!IsLetter(first)) {
        Expected(expected);
    }
    const std::size_t begin = m_next;
    const std::string_view word = Word();
    if (KindOfWord(word) != Token::Kind::kName) {
        m_next = begin;
        Expected(std::string(expected) + ", not the keyword '" + std::string(word) +
                 "', which takes a backslash ahead of it to be a name");
    }
    return std::string(word);
}

std::string Lexer::TakeReservedName() {
    return Peek() == '_' ? std::string(Word()) : std::string();
}

std::uint64_t Lexer::TakeDigits(const char* expected) {
    if (!IsDigit(Peek())) {
        Expected(expected);
    }
    const char* const begin = m_text.data() + m_next;
    std::uint64_t value = 0;
    const auto end = std::from_chars(begin, m_text.data() + m_text.size(), value);
    if (end.ec != std::errc()) {
        Expected("a number of at most 64 bits");
    }
    m_next += static_cast<std::size_t>(end.ptr - begin);
    return value;
}

std::string Lexer::TakeText() {
    const std::size_t column = Column();
    ++m_next;  // the quote
    std::string text;
    while (!AtEnd() && m_text[m_next] != '\'') {
        const char next = At(m_next + 1);
        if (m_text[m_next] == '\\' && (next == '\'' || next == '\\')) {
            ++m_next;
        }
        text += m_text[m_next++];
    }
    if (AtEnd()) {
        throw ConstraintError(column, "a quote at the end of the text that begins here");
    }
    ++m_next;
    return text;
}

Number Lexer::NumberOf(std::string_view digits, std::size_t column, bool whole) const {
    const char* const begin = digits.data();
    const char* const end = begin + digits.size();
    if (whole) {
        std::uint64_t value = 0;
        if (std::from_chars(begin, end, value).ec == std::errc()) {
            return Number::OfUnsigned(value).Weak();
        }
        throw ConstraintError(column, "an integer of at most 64 bits");
    }
    double value = 0;
    if (std::from_chars(begin, end, value).ec != std::errc()) {
        throw ConstraintError(column, "a number that a double can hold");
    }
    return Number::OfReal(value).Weak();
}

/// Digits with a point anywhere or nowhere, and an exponent, with or without sign.
Number Lexer::TakeNumber() {
    const std::size_t begin = m_next;
    bool whole = true;
    while (IsDigit(At(m_next)) || (whole && At(m_next) == '.')) {
        whole = whole && At(m_next) != '.';
        ++m_next;
    }
    if (At(m_next) == 'e' || At(m_next) == 'E') {
        const bool sign = At(m_next + 1) == '+' || At(m_next + 1) == '-';
        m_next += sign ? 2 : 1;
        if (!IsDigit(At(m_next))) {
            throw ConstraintError(m_next + 1, "the digits of the exponent");
        }
        while (IsDigit(At(m_next))) {
            ++m_next;
        }
        whole = false;
    }
    if (IsInName(At(m_next)) || At(m_next) == '.') {
        throw ConstraintError(m_next + 1, "an operator or the end behind the number");
    }
    return NumberOf(m_text.substr(begin, m_next - begin), begin + 1, whole);
}

Token::Kind Lexer::TakeSymbol() {
    static constexpr std::pair<std::string_view, Token::Kind> kSymbols[] = {
        {"==", Token::Kind::kEqual},       {"!=", Token::Kind::kNotEqual},
        {"<=", Token::Kind::kLessOrEqual}, {">=", Token::Kind::kGreaterOrEqual},
        {"<", Token::Kind::kLess},         {">", Token::Kind::kGreater},
        {"~", Token::Kind::kTilde},        {"+", Token::Kind::kPlus},
        {"-", Token::Kind::kMinus},        {"*", Token::Kind::kTimes},
        {"/", Token::Kind::kDivide},       {"(", Token::Kind::kOpen},
        {")", Token::Kind::kClose},        {"$", Token::Kind::kDollar},
    };
    const std::string_view rest = m_text.substr(m_next);
    for (const auto& [symbol, kind] : kSymbols) {
        if (rest.substr(0, symbol.size()) == symbol) {
            m_next += symbol.size();
            return kind;
        }
    }
    Expected("an operand, an operator or a parenthesis");
}

Token Lexer::Name() {
    Token token;
    token.column = Column();
    if (Peek() == '\\') {
        token.kind = Token::Kind::kName;
        token.text = TakeName("a name behind the backslash");
        return token;
    }
    token.text = std::string(Word());
    token.kind = KindOfWord(token.text);
    return token;
}

Token Lexer::Next() {
    Token token;
    token.column = Column();
    if (AtEnd()) {
        return token;
    }
    const char first = m_text[m_next];
    if (IsLetter(first) || first == '\\') {
        return Name();
    }
    if (IsDigit(first) || (first == '.' && IsDigit(At(m_next + 1)))) {
        token.kind = Token::Kind::kNumber;
        token.number = TakeNumber();
    } else if (first == '\'') {
        token.kind = Token::Kind::kText;
        token.text = TakeText();
    } else {
        token.kind = TakeSymbol();
    }
    return token;
}

const char* NameOf(Token::Kind kind) {
    static constexpr const char* kNames[] = {
        "the end", "a name", "a number", "a text", "'$'",     "'('",       "')'",    "'=='",    "'!='",
        "'<'",     "'<='",   "'>'",      "'>='",   "'~'",     "'+'",       "'-'",    "'*'",     "'/'",
        "'and'",   "'or'",   "'not'",    "'in'",   "'exist'", "'default'", "'TRUE'", "'FALSE'",
    };
    return kNames[static_cast<std::size_t>(kind)];
}

}  // namespace qv_notify::etcl
