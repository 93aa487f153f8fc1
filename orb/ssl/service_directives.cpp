#include "orb/ssl/service_directives.h"

#include "orb/ssl/ssl_error.h"

namespace qv_ssl {
namespace {

constexpr char kBlanks[] = " \t\r\f\v";

bool IsBlank(char c) {
    return std::string(kBlanks).find(c) != std::string::npos;
}

// A string's line without what only says that it goes on: blanks, a backslash, a carriage return.
std::string WithoutContinuation(std::string line) {
    const std::size_t last = line.find_last_not_of(kBlanks);
    line.erase(last == std::string::npos ? 0 : last + 1);
    if (!line.empty() && line.back() == '\\') {
        line.pop_back();
    }
    return line;
}

bool IsComment(const std::string& line) {
    const std::size_t first = line.find_first_not_of(kBlanks);
    return first != std::string::npos && line[first] == '#';
}

class DirectiveReader {
  public:
    DirectiveReader(const std::string& text, const std::string& path) : text_(text), path_(path) {}

    std::vector<ServiceDirective> Run() {
        while (at_ < text_.size()) {
            const char c = text_[at_];
            if (c == '#') {
                SkipLine();
            } else if (c == '"' || c == '\'') {
                TakeString(c);
            } else if (c == '\n' || IsBlank(c)) {
                Step();
            } else {
                TakeWord();
            }
        }
        return std::move(directives_);
    }

  private:
    void Step() {
        line_ += text_[at_] == '\n' ? 1 : 0;
        ++at_;
    }

    void SkipLine() { at_ = std::min(text_.find('\n', at_), text_.size()); }

    void TakeWord() {
        const std::size_t begin = at_;
        while (at_ < text_.size() && text_[at_] != '\n' && text_[at_] != '"' && text_[at_] != '\'' &&
               !IsBlank(text_[at_])) {
            ++at_;
        }
        const std::string word = text_.substr(begin, at_ - begin);
        if (word == "dynamic" || word == "static") {
            state_ = State::kName;
        } else if (word == "stream" || word == "remove" || word == "suspend" || word == "resume") {
            state_ = State::kOther;
        } else if (state_ == State::kName) {
            directives_.push_back({word, "", line_});
            state_ = State::kOptions;
        }
    }

    void TakeString(char quote) {
        const unsigned begin = line_;
        Step();
        std::string value;
        std::string current;
        for (;;) {
            if (at_ == text_.size()) {
                throw SslError("the service configuration file " + path_ + " has a " + quote + " in line " +
                               std::to_string(begin) + " that nothing closes");
            }
            if (text_[at_] == '\n') {
                value += WithoutContinuation(std::move(current)) + "\n";
                current.clear();
            } else if (text_[at_] == '#' && begin != line_ && IsComment(current + "#")) {
                SkipLine();
                continue;
            } else if (text_[at_] == quote) {
                Step();
                break;
            } else {
                current += text_[at_];
            }
            Step();
        }
        if (state_ == State::kOptions) {
            directives_.back().options = value + current;
            state_ = State::kOther;
        }
    }

    enum class State { kOther, kName, kOptions };

    const std::string& text_;
    const std::string& path_;
    std::size_t at_ = 0;
    unsigned line_ = 1;
    State state_ = State::kOther;
    std::vector<ServiceDirective> directives_;
};

}  // namespace

std::vector<ServiceDirective> SplitDirectives(const std::string& text, const std::string& path) {
    return DirectiveReader(text, path).Run();
}

std::vector<std::string> SplitOptions(const std::string& options) {
    std::vector<std::string> words;
    std::string word;
    bool in_word = false;
    char quote = '\0';
    const auto end_word = [&] {
        if (in_word) {
            words.push_back(word);
        }
        word.clear();
        in_word = false;
    };
    for (const char c : options) {
        if (quote != '\0') {
            if (c == quote) {
                quote = '\0';
            } else {
                word += c;
            }
        } else if (c == '\n') {
            end_word();
            words.emplace_back("\n");
        } else if (IsBlank(c)) {
            end_word();
        } else if (!in_word && (c == '"' || c == '\'')) {
            quote = c;
            in_word = true;
        } else {
            word += c;
            in_word = true;
        }
    }
    end_word();
    return words;
}

}  // namespace qv_ssl
