#include "tests/faults/switch/fabric.h"

#include <charconv>
#include <cstdlib>
#include <sstream>

namespace qv_faults {
namespace {

std::vector<std::string> Words(const std::string& line) {
    std::istringstream in(line);
    std::vector<std::string> words;
    for (std::string word; in >> word;) {
        words.push_back(word);
    }
    return words;
}

std::optional<double> Share(const std::string& text) {
    char* end = nullptr;
    const double share = std::strtod(text.c_str(), &end);
    const bool sound = !text.empty() && *end == '\0' && share >= 0 && share <= 1;
    return sound ? std::optional(share) : std::nullopt;
}

std::optional<Delay> Milliseconds(const std::string& text) {
    constexpr unsigned kMost = 600000;
    unsigned number = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    const bool sound = error == std::errc() && rest == end && number <= kMost;
    return sound ? std::optional(Delay(number)) : std::nullopt;
}

/// False when the order or its numbers are wrong.
bool Apply(LinkRules& rules, const std::vector<std::string>& words) {
    const std::string& order = words[0];
    if (order == "cut" && words.size() == 3) {
        rules.cut = true;
        return true;
    }
    if (order == "delay" && words.size() == 5) {
        const auto delay = Milliseconds(words[3]);
        const auto jitter = Milliseconds(words[4]);
        rules.delay = delay.value_or(Delay(0));
        rules.jitter = jitter.value_or(Delay(0));
        return delay && jitter;
    }
    if (order == "reorder" && words.size() == 5) {
        const auto share = Share(words[3]);
        const auto by = Milliseconds(words[4]);
        rules.reorder = share.value_or(0);
        rules.reorder_by = by.value_or(Delay(0));
        return share && by;
    }
    if ((order == "drop" || order == "duplicate") && words.size() == 4) {
        const auto share = Share(words[3]);
        (order == "drop" ? rules.drop : rules.duplicate) = share.value_or(0);
        return share.has_value();
    }
    return false;
}

}  // namespace

Fabric::Fabric(std::uint64_t seed, const std::vector<std::string>& hosts) {
    for (const std::string& from : hosts) {
        for (const std::string& to : hosts) {
            if (from != to) {
                links_.emplace(std::make_pair(from, to), Link(seed, from + ">" + to));
            }
        }
    }
}

Link* Fabric::Find(const std::string& from, const std::string& to) {
    const auto found = links_.find({from, to});
    return found == links_.end() ? nullptr : &found->second;
}

std::string Fabric::Order(const std::string& line) {
    const std::vector<std::string> words = Words(line);
    if (words == std::vector<std::string>{"heal"}) {
        for (auto& entry : links_) {
            entry.second.SetRules({});
        }
        return "ok";
    }
    if (words == std::vector<std::string>{"counts"}) {
        return Counts() + "ok";
    }
    return Change(words);
}

std::string Fabric::Change(const std::vector<std::string>& words) {
    if (words.size() < 3) {
        return "error an order names two hosts";
    }
    Link* const there = Find(words[1], words[2]);
    Link* const back = Find(words[2], words[1]);
    if (there == nullptr || back == nullptr) {
        return "error no link between " + words[1] + " and " + words[2];
    }
    LinkRules rules = there->rules();
    if (!Apply(rules, words)) {
        return "error not understood: " + words[0];
    }
    there->SetRules(rules);
    back->SetRules(rules);
    return "ok";
}

std::string Fabric::Counts() const {
    std::ostringstream out;
    for (const auto& [ends, link] : links_) {
        const LinkCounts& counts = link.counts();
        out << ends.first << " " << ends.second << " seen " << counts.seen << " passed " << counts.passed
            << " cut " << counts.cut << " dropped " << counts.dropped << " duplicated " << counts.duplicated
            << " reordered " << counts.reordered << " delayed " << counts.delayed << "\n";
    }
    return out.str();
}

}  // namespace qv_faults
