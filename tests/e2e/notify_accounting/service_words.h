// What the service said to its operator about one consumer.
#pragma once

#include <cstddef>
#include <string>

namespace qv_accounting {

/// Lines about the proxy of that number in the default consumer admin.
class ServiceWords {
  public:
    ServiceWords(const std::string& said, int proxy);

    /// Events of which it said that they may come twice as the consumer did not answer.
    std::size_t in_doubt = 0;
    /// Starts after which it said that one event may come twice.
    std::size_t in_doubt_after_start = 0;
    /// The last total of events that were dropped.
    std::size_t dropped = 0;

  private:
    void Take(const std::string& line, const std::string& proxy);
};

/// How often `words` stand in `text`.
std::size_t CountOf(const std::string& text, const std::string& words);

}  // namespace qv_accounting
