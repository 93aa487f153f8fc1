#include "demo/oss/text.h"

#include <algorithm>
#include <cctype>
#include <utility>

namespace qv_oss {
namespace {

constexpr const char* kGap = "  ";

/// Characters, not bytes: the bytes that go on with an UTF-8 character don't count.
std::size_t Width(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char byte) {
        return (static_cast<unsigned char>(byte) & 0xc0) != 0x80;
    }));
}

}  // namespace

std::string Printable(const std::string& text) {
    std::string result = text;
    std::replace_if(
        result.begin(), result.end(), [](char c) { return std::iscntrl(static_cast<unsigned char>(c)) != 0; },
        '?');
    return result;
}

std::string Seconds(std::chrono::milliseconds time) {
    std::string text = std::to_string(time.count() / 1000);
    std::string decimals = std::to_string(1000 + time.count() % 1000).substr(1);
    decimals.erase(decimals.find_last_not_of('0') + 1);
    return decimals.empty() ? text : text + "." + decimals;
}

Table::Table(std::vector<std::string> titles) : titles_(std::move(titles)) {
    for (const std::string& title : titles_) {
        widths_.push_back(Width(title));
    }
}

void Table::Add(std::vector<std::string> row) {
    row.resize(titles_.size());
    for (std::size_t i = 0; i < row.size(); ++i) {
        row[i] = Printable(row[i]);
        widths_[i] = std::max(widths_[i], Width(row[i]));
    }
    rows_.push_back(std::move(row));
}

std::string Table::Take() {
    std::string text;
    if (!titled_) {
        text = Line(titles_);
        titled_ = true;
    }
    for (const auto& row : rows_) {
        text += Line(row);
    }
    rows_.clear();
    return text;
}

std::string Table::Line(const std::vector<std::string>& row) const {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) {
        line += row[i];
        if (i + 1 < row.size()) {
            line += std::string(widths_[i] - Width(row[i]), ' ') + kGap;
        }
    }
    line.erase(line.find_last_not_of(' ') + 1);
    return line + "\n";
}

}  // namespace qv_oss
