#include "tools/secrets/secret_input.h"

#include <termios.h>
#include <unistd.h>

#include <iostream>
#include <stdexcept>

namespace qv_secrets {
namespace {

/// Turns the terminal's echo off as long as it lives; without effect where standard input is none.
class NoEcho {
  public:
    NoEcho() {
        if (isatty(STDIN_FILENO) == 1 && tcgetattr(STDIN_FILENO, &former_) == 0) {
            termios silent = former_;
            silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
            changed_ = tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent) == 0;
        }
    }
    ~NoEcho() {
        if (changed_) {
            tcsetattr(STDIN_FILENO, TCSAFLUSH, &former_);
        }
    }
    NoEcho(const NoEcho&) = delete;
    NoEcho& operator=(const NoEcho&) = delete;

    bool at_terminal() const { return changed_; }

  private:
    termios former_{};
    bool changed_ = false;
};

}  // namespace

std::string ReadSecretLine(const std::string& prompt) {
    const NoEcho no_echo;
    if (no_echo.at_terminal()) {
        std::cerr << prompt << ": " << std::flush;
    }
    std::string line;
    const bool read = static_cast<bool>(std::getline(std::cin, line));
    if (no_echo.at_terminal()) {
        std::cerr << std::endl;
    }
    if (!read) {
        throw std::runtime_error("no password on standard input");
    }
    return line;
}

}  // namespace qv_secrets
