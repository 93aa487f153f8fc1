// The lines of the input are the configured addresses of an access list, and the lines of its file.

#include <arpa/inet.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <list>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "request/aclmgr.h"
#include "tests/support/config_items.h"
#include "tests/support/temp_dir.h"

namespace {

constexpr unsigned kLoopback = 0x7f000001;
constexpr std::size_t kMostLines = 256;

void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

std::vector<std::string> LinesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::size_t begin = 0;
    while (begin < text.size() && lines.size() < kMostLines) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        lines.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return lines;
}

// The addresses among the lines that are plain dotted quads, and whether all lines are.
struct Quads {
    std::set<unsigned> addresses;
    bool all = true;
};

Quads QuadsOf(const std::vector<std::string>& lines) {
    Quads quads;
    for (const std::string& line : lines) {
        in_addr address{};
        if (inet_pton(AF_INET, line.c_str(), &address) == 1) {
            quads.addresses.insert(ntohl(address.s_addr));
        } else {
            quads.all = false;
        }
    }
    return quads;
}

void CheckDecisions(NS_UTIL::IPAcl& acl, const std::vector<std::string>& lines) {
    const Quads quads = QuadsOf(lines);
    Require(acl.IsValidIP(kLoopback));
    for (const unsigned address : quads.addresses) {
        Require(acl.IsValidIP(address));
    }
    unsigned stranger = 1;
    while (quads.addresses.count(stranger) != 0) {
        ++stranger;
    }
    if (lines.empty() || quads.all) {
        Require(acl.IsValidIP(stranger) == lines.empty());
    }
}

void CheckFile(NS_UTIL::IPAcl& acl, const std::string& path, const std::vector<std::string>& lines) {
    std::string expected = "# this is a get_distribute acl config file.\n";
    std::map<unsigned, bool> table;
    std::list<unsigned> addresses;
    for (const std::string& line : lines) {
        expected += line + "\n";
        addresses.push_back(static_cast<unsigned>(line.size()));
    }
    Require(acl.RefreshNodeIpAclList({lines.begin(), lines.end()}, addresses, table));
    Require(qv_test::ReadFile(path) == expected);
    for (const unsigned address : addresses) {
        Require(table.count(address) == 1);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const qv_test::TempDir dir;
    static qv_test::ScopedConfigItems items;
    const std::vector<std::string> lines = LinesOf(std::string(reinterpret_cast<const char*>(data), size));
    items.SetIPAddresses(lines);

    const std::string path = dir.File("access_list.cfg");
    NS_UTIL::IPAcl acl;
    acl.Init(path, -1, NS_UTIL::IPACL_OSS);  // every check reads the configuration
    CheckDecisions(acl, lines);
    CheckFile(acl, path, lines);
    return 0;
}
