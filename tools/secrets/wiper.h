#pragma once

#include <string>

namespace qv_secrets {

/// Overwrites a text up to its end; a null pointer is ignored.
void WipeText(char* secret);

/// Overwrites the text so that no copy of it stays behind in this buffer, and empties it.
void Wipe(std::string& secret);

/// Overwrites a secret when it goes out of scope, whatever came of its use. The secret outlives it.
class Wiper {
  public:
    explicit Wiper(std::string& secret) : string_(&secret) {}
    /// For a servant's argument: the text is the ORB's copy, which nobody reads again.
    explicit Wiper(const char* secret) : text_(const_cast<char*>(secret)) {}
    ~Wiper();
    Wiper(const Wiper&) = delete;
    Wiper& operator=(const Wiper&) = delete;

  private:
    std::string* const string_ = nullptr;
    char* const text_ = nullptr;
};

}  // namespace qv_secrets
