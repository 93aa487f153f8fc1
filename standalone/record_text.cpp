#include "standalone/record_text.h"

#include <endian.h>

#include <cstdint>
#include <cstring>

namespace qv_standalone {
namespace {

constexpr const char* kContinuation = "\n    ";
constexpr std::size_t kRoomForContinuations = 64;

void AppendEscaped(std::string& out, char c) {
    static constexpr char kDigits[] = "0123456789abcdef";
    const auto byte = static_cast<unsigned char>(c);
    out += "\\x";
    out += kDigits[byte >> 4];
    out += kDigits[byte & 15];
}

bool IsControl(char c) {
    return (static_cast<unsigned char>(c) < ' ' && c != '\t') || c == '\x7f';
}

// Compared all at once, as compilers for any processor know to do.
constexpr std::size_t kBlock = 16;
using Block = unsigned char __attribute__((vector_size(kBlock)));

/// How many bytes of a block, counted from the first one, are neither below ' ' nor 0x7f: nearly all text of
/// a log is so.
std::size_t CountPlain(const char* bytes) {
    constexpr std::size_t kWord = sizeof(std::uint64_t);
    Block block;
    std::memcpy(&block, bytes, kBlock);
    const auto others =
        (block < static_cast<unsigned char>(' ')) | (block == static_cast<unsigned char>(0x7f));
    std::uint64_t words[kBlock / kWord];
    std::memcpy(words, &others, kBlock);
    std::size_t count = 0;
    for (const std::uint64_t word : words) {
        if (word != 0) {
            return count + static_cast<std::size_t>(__builtin_ctzll(le64toh(word))) / 8;
        }
        count += kWord;
    }
    return count;
}

/// The first control character from `at` on; `end` when there is none.
std::size_t FindControl(const std::string& text, std::size_t at, std::size_t end) {
    while (at < end) {
        std::size_t plain = 0;
        while (end - at >= kBlock && (plain = CountPlain(text.data() + at)) == kBlock) {
            at += kBlock;
        }
        at += end - at >= kBlock ? plain : 0;
        if (at == end || IsControl(text[at])) {
            return at;
        }
        ++at;  // one of the last, or a tab
    }
    return at;
}

}  // namespace

void AppendRecordText(std::string& out, const std::string& text) {
    std::size_t length = text.size();
    while (length > 0 && (text[length - 1] == '\n' || text[length - 1] == '\r')) {
        --length;
    }
    for (std::size_t i = 0; i < length; ++i) {
        const std::size_t plain = i;
        i = FindControl(text, i, length);
        out.append(text, plain, i - plain);
        if (i == length) {
            break;
        }
        const char c = text[i];
        if (c == '\r' && text[i + 1] == '\n') {
            continue;
        }
        if (c == '\n') {
            out += kContinuation;
        } else {
            AppendEscaped(out, c);
        }
    }
}

std::string RecordText(const std::string& text) {
    std::string out;
    out.reserve(text.size() + kRoomForContinuations);
    AppendRecordText(out, text);
    return out;
}

void AppendOneLine(std::string& out, const std::string& text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::size_t plain = i;
        i = FindControl(text, i, text.size());
        out.append(text, plain, i - plain);
        if (i < text.size()) {
            AppendEscaped(out, text[i]);
        }
    }
}

std::string OneLine(const std::string& text) {
    std::string out;
    out.reserve(text.size());
    AppendOneLine(out, text);
    return out;
}

const char* LevelName(int level) {
    switch (level) {
        case 0:
            return "critical";
        case 1:
            return "error";
        case 2:
            return "warning";
        case 3:
            return "trace";
        default:
            return level < 0 ? "record" : "debug";
    }
}

}  // namespace qv_standalone
