#include "tools/secrets/secret_input.h"

#include <signal.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <iostream>
#include <iterator>
#include <stdexcept>

namespace qv_secrets {
namespace {

// Those that end or stop a program which asks.
constexpr int kSignals[] = {SIGINT, SIGQUIT, SIGHUP, SIGTERM, SIGTSTP};

// For the signal handler, which nothing else reaches.
termios g_former{};
termios g_silent{};
struct sigaction g_actions[std::size(kSignals)];

struct sigaction* ActionOf(int number) {
    for (std::size_t i = 0; i < std::size(kSignals); ++i) {
        if (kSignals[i] == number) {
            return &g_actions[i];
        }
    }
    return nullptr;
}

/// Lets the signal do what it would have done, with the terminal as it was, and asks on if the program lives.
void ShowAndPassOn(int number) {
    const int error = errno;
    tcsetattr(STDIN_FILENO, TCSANOW, &g_former);
    struct sigaction own {};
    sigaction(number, ActionOf(number), &own);
    raise(number);
    sigset_t passed;
    sigemptyset(&passed);
    sigaddset(&passed, number);
    pthread_sigmask(SIG_UNBLOCK, &passed, nullptr);  // here it comes
    pthread_sigmask(SIG_BLOCK, &passed, nullptr);
    sigaction(number, &own, nullptr);
    tcsetattr(STDIN_FILENO, TCSANOW, &g_silent);
    errno = error;
}

/// Turns the terminal's echo off as long as it lives, and on again for a signal that ends or stops the
/// program; without effect where standard input is no terminal. One at a time.
class NoEcho {
  public:
    NoEcho() {
        if (isatty(STDIN_FILENO) == 1 && tcgetattr(STDIN_FILENO, &g_former) == 0) {
            g_silent = g_former;
            g_silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
            TakeSignals();
            changed_ = tcsetattr(STDIN_FILENO, TCSAFLUSH, &g_silent) == 0;
            if (!changed_) {
                GiveSignalsBack();
            }
        }
    }
    ~NoEcho() {
        if (changed_) {
            tcsetattr(STDIN_FILENO, TCSAFLUSH, &g_former);
            GiveSignalsBack();
        }
    }
    NoEcho(const NoEcho&) = delete;
    NoEcho& operator=(const NoEcho&) = delete;

    bool at_terminal() const { return changed_; }

  private:
    static void TakeSignals() {
        struct sigaction own {};
        own.sa_handler = ShowAndPassOn;
        own.sa_flags = SA_RESTART;
        sigfillset(&own.sa_mask);
        for (const int number : kSignals) {
            struct sigaction* const former = ActionOf(number);
            sigaction(number, nullptr, former);
            if (former->sa_handler != SIG_IGN) {
                sigaction(number, &own, nullptr);
            }
        }
    }
    static void GiveSignalsBack() {
        for (const int number : kSignals) {
            sigaction(number, ActionOf(number), nullptr);
        }
    }

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
