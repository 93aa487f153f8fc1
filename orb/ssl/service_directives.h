// The directives of a service configuration file, before anybody makes sense of their options.
#pragma once

#include <string>
#include <vector>

namespace qv_ssl {

/// One "dynamic" or "static" directive.
struct ServiceDirective {
    std::string service;
    std::string options;  ///< the quoted text; '\n' where it goes on in the next line
    unsigned line = 0;    ///< where the directive begins, from 1
};

/// All of them, in order; other directives are skipped. `path` is for messages. Throws SslError for a string
/// without an end.
std::vector<ServiceDirective> SplitDirectives(const std::string& text, const std::string& path);

/// The words of an option text with the quotes around them taken off. A line's end parts words; "\n" is a
/// word of its own, for it ends an option's value.
std::vector<std::string> SplitOptions(const std::string& options);

}  // namespace qv_ssl
