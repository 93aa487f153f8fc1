#pragma once

#include <stdexcept>
#include <string>
#include <unordered_map>

namespace qv_standalone {

/// A file of risk levels that can't be used; the text names the file and the line.
class RiskFileError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// How risky operations are: by exact name, or by the longest beginning of a name that the table holds. What
/// it doesn't hold has no risk. Constant after it was made, so any thread may read it.
class RiskTable {
  public:
    /// The levels that are in force without a file: operations of an MTNM interface that change the network,
    /// services, sessions or passwords.
    static RiskTable Default();

    /// Reads a TOML file with a table [risk] of names and levels 0 to 2. A name that ends in "*" stands for
    /// all names that begin so. Throws RiskFileError.
    static RiskTable Load(const std::string& path);

    /// 0 not audited, 1 a minor risk, 2 a risk.
    int LevelOf(const std::string& operation) const;

    std::size_t size() const { return m_levels.size() + m_beginnings.size(); }

  private:
    void Add(const std::string& name, int level);

    std::unordered_map<std::string, int> m_levels;
    std::unordered_map<std::string, int> m_beginnings;
    std::size_t m_longest_beginning = 0;
};

}  // namespace qv_standalone
