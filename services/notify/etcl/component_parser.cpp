#include "services/notify/etcl/component_parser.h"

#include <utility>

namespace qv_notify::etcl {

namespace {

using Kind = ComponentPath::Kind;
using Start = ComponentPath::Start;
using Step = ComponentPath::Step;

bool IsLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

void Close(Lexer& lexer, char bracket) {
    if (!lexer.Take(bracket)) {
        lexer.Expected(std::string("'") + bracket + "'");
    }
}

Step Element(Lexer& lexer) {
    Step step;
    step.kind = Kind::kElement;
    step.number = lexer.TakeDigits("the number of an element");
    Close(lexer, ']');
    return step;
}

Step Pair(Lexer& lexer) {
    Step step;
    step.kind = Kind::kPair;
    step.name = lexer.Peek() == '\'' ? lexer.TakeText() : lexer.TakeName("the name of a name-value pair");
    Close(lexer, ')');
    return step;
}

Step UnionMember(Lexer& lexer) {
    Step step;
    step.kind = Kind::kUnionNumber;
    if (lexer.Take(')')) {
        step.kind = Kind::kUnionDefault;
        return step;
    }
    if (lexer.Peek() == '\'') {
        step.kind = Kind::kUnionText;
        step.name = lexer.TakeText();
    } else {
        step.negative = lexer.Take('-');
        if (!step.negative) {
            lexer.Take('+');
        }
        step.number = lexer.TakeDigits("the discriminator's value, a text or ')'");
    }
    Close(lexer, ')');
    return step;
}

/// Sets `last` when nothing may follow: these are no components that have parts.
Step ReservedMember(Lexer& lexer, bool& last) {
    static constexpr std::pair<const char*, Kind> kNames[] = {
        {"_length", Kind::kLength},
        {"_d", Kind::kDiscriminator},
        {"_type_id", Kind::kTypeName},
        {"_repos_id", Kind::kRepositoryId},
    };
    Lexer ahead = lexer;
    const std::string word = ahead.TakeReservedName();
    for (const auto& [name, kind] : kNames) {
        if (word == name) {
            lexer.TakeReservedName();
            last = true;
            Step step;
            step.kind = kind;
            return step;
        }
    }
    lexer.Expected("_length, _d, _type_id or _repos_id");
}

Step AfterPoint(Lexer& lexer, bool& last) {
    const char next = lexer.Peek();
    if (lexer.Take('(')) {
        return UnionMember(lexer);
    }
    if (next == '_') {
        return ReservedMember(lexer, last);
    }
    Step step;
    if (next >= '0' && next <= '9') {
        step.kind = Kind::kPosition;
        step.number = lexer.TakeDigits("the place of a member");
    } else {
        step.name =
            lexer.TakeName("the name or the place of a member, '(' or _length, _d, _type_id or _repos_id");
    }
    return step;
}

bool TakeStep(Lexer& lexer, Step& step, bool& last) {
    if (lexer.Take('.')) {
        step = AfterPoint(lexer, last);
    } else if (lexer.Take('[')) {
        step = Element(lexer);
    } else if (lexer.Take('(')) {
        step = Pair(lexer);
    } else {
        return false;
    }
    return true;
}

bool IsKeywordAhead(Lexer lexer) {
    return lexer.Next().kind != Token::Kind::kName;
}

}  // namespace

ComponentPath PathOfName(std::string name) {
    static constexpr std::pair<const char*, Start> kVariables[] = {
        {"curtime", Start::kCurrentTime},
        {"domain_name", Start::kDomainName},
        {"type_name", Start::kTypeName},
        {"event_name", Start::kEventName},
    };
    ComponentPath path;
    path.start = Start::kName;
    for (const auto& [variable, start] : kVariables) {
        if (name == variable) {
            path.start = start;
        }
    }
    path.name = std::move(name);
    return path;
}

ComponentPath ParseComponent(Lexer& lexer) {
    ComponentPath path;
    const char next = lexer.Peek();
    // A keyword behind the event's '$' goes on with the expression: "$ in $list".
    if (next == '\\' || (IsLetter(next) && !IsKeywordAhead(lexer))) {
        path = PathOfName(lexer.TakeName("the name of a component"));
    }
    Step step;
    bool last = false;
    while (!last && TakeStep(lexer, step, last)) {
        path.steps.push_back(std::move(step));
    }
    const char behind = lexer.Peek();
    if (last && (behind == '.' || behind == '[' || behind == '(')) {
        lexer.Expected("an operator or the end, since this component has no parts");
    }
    return path;
}

}  // namespace qv_notify::etcl
