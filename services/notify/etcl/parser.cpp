#include "services/notify/etcl/parser.h"

#include <string>
#include <utility>

#include "services/notify/etcl/component_parser.h"
#include "services/notify/etcl/constraint.h"
#include "services/notify/etcl/lexer.h"

namespace qv_notify::etcl {

namespace {

using Kind = Expression::Kind;
using ExpressionPtr = std::unique_ptr<const Expression>;
using TokenKind = Token::Kind;

Operator ComparisonOf(TokenKind kind) {
    switch (kind) {
        case TokenKind::kEqual:
            return Operator::kEqual;
        case TokenKind::kNotEqual:
            return Operator::kNotEqual;
        case TokenKind::kLess:
            return Operator::kLess;
        case TokenKind::kLessOrEqual:
            return Operator::kLessOrEqual;
        case TokenKind::kGreater:
            return Operator::kGreater;
        case TokenKind::kGreaterOrEqual:
            return Operator::kGreaterOrEqual;
        default:
            return Operator::kNone;
    }
}

Operator SumOf(TokenKind kind) {
    switch (kind) {
        case TokenKind::kPlus:
            return Operator::kPlus;
        case TokenKind::kMinus:
            return Operator::kMinus;
        default:
            return Operator::kNone;
    }
}

Operator ProductOf(TokenKind kind) {
    switch (kind) {
        case TokenKind::kTimes:
            return Operator::kTimes;
        case TokenKind::kDivide:
            return Operator::kDivide;
        default:
            return Operator::kNone;
    }
}

/// One function for each level of precedence, the weakest first.
class Parser {
  public:
    explicit Parser(std::string_view text) : m_lexer(text) { Advance(); }

    ExpressionPtr Whole() {
        if (m_token.kind == TokenKind::kEnd) {
            return nullptr;
        }
        ExpressionPtr expression = Or();
        if (m_token.kind != TokenKind::kEnd) {
            Expected("an operator or the end");
        }
        return expression;
    }

  private:
    using Level = ExpressionPtr (Parser::*)();

    void Advance() { m_token = m_lexer.Next(); }

    [[noreturn]] void Expected(const std::string& what) {
        throw ConstraintError(m_token.column, what + " instead of " + NameOf(m_token.kind));
    }

    bool Take(TokenKind kind) {
        if (m_token.kind != kind) {
            return false;
        }
        Advance();
        return true;
    }

    static std::unique_ptr<Expression> Make(Kind kind) { return std::make_unique<Expression>(kind); }

    static std::unique_ptr<Expression> Make(Kind kind, ExpressionPtr operand) {
        auto made = Make(kind);
        made->operands.push_back({Operator::kNone, std::move(operand)});
        return made;
    }

    /// Operands of one level with the operators of `kind` between them.
    template <class OperatorOf>
    ExpressionPtr Chain(Kind kind, Level operand, OperatorOf operator_of) {
        ExpressionPtr first = (this->*operand)();
        if (operator_of(m_token.kind) == Operator::kNone) {
            return first;
        }
        auto chain = Make(kind, std::move(first));
        for (Operator next = operator_of(m_token.kind); next != Operator::kNone;
             next = operator_of(m_token.kind)) {
            Advance();
            chain->operands.push_back({next, (this->*operand)()});
        }
        return chain;
    }

    ExpressionPtr Logical(Kind kind, Level operand, TokenKind word) {
        ExpressionPtr first = (this->*operand)();
        if (m_token.kind != word) {
            return first;
        }
        auto chain = Make(kind, std::move(first));
        while (Take(word)) {
            chain->operands.push_back({Operator::kNone, (this->*operand)()});
        }
        return chain;
    }

    ExpressionPtr Or() { return Logical(Kind::kOr, &Parser::And, TokenKind::kOr); }
    ExpressionPtr And() { return Logical(Kind::kAnd, &Parser::Comparison, TokenKind::kAnd); }
    ExpressionPtr Sum() { return Chain(Kind::kSum, &Parser::Product, SumOf); }
    ExpressionPtr Product() { return Chain(Kind::kProduct, &Parser::Negation, ProductOf); }

    ExpressionPtr Comparison() {
        ExpressionPtr left = In();
        const Operator comparison = ComparisonOf(m_token.kind);
        if (comparison == Operator::kNone) {
            return left;
        }
        Advance();
        auto made = Make(Kind::kCompare, std::move(left));
        made->operands.push_back({comparison, In()});
        if (ComparisonOf(m_token.kind) != Operator::kNone) {
            Expected("'and', 'or' or the end, since comparisons can't be chained,");
        }
        return made;
    }

    ExpressionPtr In() {
        ExpressionPtr left = Substring();
        if (!Take(TokenKind::kIn)) {
            return left;
        }
        auto made = Make(Kind::kIn, std::move(left));
        made->path = Path("the component that is the list");
        return made;
    }

    ExpressionPtr Substring() {
        ExpressionPtr left = Sum();
        if (!Take(TokenKind::kTilde)) {
            return left;
        }
        auto made = Make(Kind::kSubstring, std::move(left));
        made->operands.push_back({Operator::kNone, Sum()});
        return made;
    }

    ExpressionPtr Negation() { return Take(TokenKind::kNot) ? Make(Kind::kNot, Factor()) : Factor(); }

    /// A component, or a name for $name.
    ComponentPath Path(const char* expected) {
        if (m_token.kind == TokenKind::kDollar) {
            ComponentPath path = ParseComponent(m_lexer);
            Advance();
            return path;
        }
        if (m_token.kind != TokenKind::kName) {
            Expected(expected);
        }
        ComponentPath path = PathOfName(std::move(m_token.text));
        Advance();
        return path;
    }

    ExpressionPtr Parenthesis() {
        if (++m_nesting > Constraint::kMaxNesting) {
            throw ConstraintError(m_token.column, "at most " + std::to_string(Constraint::kMaxNesting) +
                                                      " parentheses inside of each other");
        }
        Advance();
        ExpressionPtr inner = Or();
        if (!Take(TokenKind::kClose)) {
            Expected("an operator or ')'");
        }
        --m_nesting;
        return inner;
    }

    ExpressionPtr Exist() {
        Advance();
        auto made = Make(Kind::kExist);
        made->path = Path("a component");
        return made;
    }

    ExpressionPtr Default() {
        Advance();
        const std::size_t column = m_token.column;
        if (m_token.kind != TokenKind::kDollar) {
            Expected("a component that ends with ._d");
        }
        auto made = Make(Kind::kDefault);
        made->path = Path("");
        if (made->path.steps.empty() || made->path.steps.back().kind != ComponentPath::Kind::kDiscriminator) {
            throw ConstraintError(column, "a component that ends with ._d");
        }
        return made;
    }

    ExpressionPtr Signed(Kind kind) {
        Advance();
        if (m_token.kind == TokenKind::kMinus || m_token.kind == TokenKind::kPlus) {
            Expected("an operand behind the sign");
        }
        return Make(kind, Factor());
    }

    ExpressionPtr Component() {
        auto made = Make(Kind::kComponent);
        made->path = Path("");
        return made;
    }

    /// An operand that is one token.
    ExpressionPtr Literal(Kind kind) {
        auto made = Make(kind);
        made->flag = m_token.kind == TokenKind::kTrue;
        made->number = m_token.number;
        made->text = std::move(m_token.text);
        Advance();
        return made;
    }

    ExpressionPtr Factor() {
        switch (m_token.kind) {
            case TokenKind::kOpen:
                return Parenthesis();
            case TokenKind::kExist:
                return Exist();
            case TokenKind::kDefault:
                return Default();
            case TokenKind::kDollar:
                return Component();
            case TokenKind::kMinus:
                return Signed(Kind::kNegate);
            case TokenKind::kPlus:
                return Signed(Kind::kPlain);
            case TokenKind::kNumber:
                return Literal(Kind::kNumber);
            case TokenKind::kText:
                return Literal(Kind::kText);
            case TokenKind::kTrue:
            case TokenKind::kFalse:
                return Literal(Kind::kBoolean);
            case TokenKind::kName:
                return Literal(Kind::kEnumerator);
            default:
                Expected("an operand");
        }
    }

    Lexer m_lexer;
    Token m_token;
    unsigned m_nesting = 0;
};

}  // namespace

std::unique_ptr<const Expression> ParseConstraint(std::string_view text) {
    return Parser(text).Whole();
}

}  // namespace qv_notify::etcl
