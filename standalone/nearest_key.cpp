#include "standalone/nearest_key.h"

#include <algorithm>
#include <cctype>
#include <vector>

#include "standalone/settings_table.h"

namespace qv_standalone {
namespace {

constexpr std::size_t kLongestCompared = 64;

std::string Lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

}  // namespace

std::size_t EditDistance(const std::string& a, const std::string& b) {
    std::vector<std::vector<std::size_t>> cost(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i) {
        for (std::size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0) {
                cost[i][j] = i + j;
                continue;
            }
            const std::size_t replace = cost[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            cost[i][j] = std::min({cost[i - 1][j] + 1, cost[i][j - 1] + 1, replace});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                cost[i][j] = std::min(cost[i][j], cost[i - 2][j - 2] + 1);
            }
        }
    }
    return cost[a.size()][b.size()];
}

std::string NearestTable(const std::string& name) {
    for (const char* const table : {"agent", "platform"}) {
        if (name.size() <= kLongestCompared && EditDistance(Lower(name), table) <= 2) {
            return table;
        }
    }
    return "";
}

std::string NearestKey(const std::string& key) {
    if (key.size() > kLongestCompared) {
        return "";
    }
    const std::string wanted = Lower(key);
    std::size_t best = std::max<std::size_t>(2, wanted.size() / 3) + 1;
    std::string nearest;
    for (const Setting& setting : AllSettings()) {
        const std::size_t distance = EditDistance(wanted, Lower(setting.key));
        if (distance < best) {
            best = distance;
            nearest = setting.key;
        }
    }
    return nearest;
}

}  // namespace qv_standalone
