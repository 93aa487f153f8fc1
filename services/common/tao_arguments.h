// Command lines in the spelling of TAO's services.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace qv_service {

/// Whether an argument is the option of that name. Upper and lower case are the same, but for single letters.
bool SameOption(const std::string& given, const char* name);

/// An option that a service of TAO's knows and that has no counterpart here.
struct UnusedOption {
    const char* name;
    bool takes_value;
    const char* reason;
};

/// The arguments of a command line, from the first to the last. Not thread-safe.
class TaoArguments {
  public:
    /// `list` has to outlive this. `hint` is the sentence that ends each refusal.
    TaoArguments(const std::vector<std::string>& list, std::string hint);

    bool More() const { return m_next < m_list.size(); }
    const std::string& Next() { return m_list[m_next++]; }
    /// Whether an argument comes that isn't an option; it may be empty.
    bool ValueFollows() const;
    /// The next argument, whatever it looks like. Refuses the command line when there is none or an empty
    /// one.
    const std::string& ValueOf(const std::string& option);

    /// Throws StartError (kExitUsage).
    [[noreturn]] void Refuse(const std::string& sentence) const;

    /// Passes over one of `unused`, with its value, and adds to `ignored` why it has no effect, once. Refuses
    /// an option that is none of them.
    template <class Options>
    void PassOver(const std::string& option, const Options& unused, std::vector<std::string>& ignored) {
        const auto found = std::find_if(unused.begin(), unused.end(), [&](const UnusedOption& known) {
            return SameOption(option, known.name);
        });
        PassOver(option, found == unused.end() ? nullptr : &*found, ignored);
    }

  private:
    void PassOver(const std::string& option, const UnusedOption* unused, std::vector<std::string>& ignored);

    const std::vector<std::string>& m_list;
    const std::string m_hint;
    std::size_t m_next = 0;
};

/// The parts of "iiop://[version@]host:port[,…][/option[&option…]]".
struct TaoEndpoint {
    std::string host;                 ///< of the first address, an IPv6 address in brackets; may be empty
    std::optional<std::string> port;  ///< of the first address, as it stands; none: there is no colon
    bool several = false;             ///< there are more addresses
    std::vector<std::string> options;
};

/// Nothing when the text is none of IIOP's.
std::optional<TaoEndpoint> SplitEndpoint(const std::string& endpoint);

/// The value of an end point's option when it is that of `name`.
std::optional<std::string> EndpointValue(const std::string& option, const std::string& name);

/// A number from 0 to 65535; nothing when the text is none.
std::optional<std::uint16_t> ReadPort(const std::string& digits);

}  // namespace qv_service
