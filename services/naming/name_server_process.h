// The omniNames process below the naming service.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace qv_naming {

/// How a process ended.
struct ProcessEnd {
    int exit_code = 0;  // as a shell gives it: 128 + signal for a signal
    std::string text;   // "exit code 1", "signal 9 (Killed)"
};

/// Path of the program to run: $QV_OMNINAMES, or omniNames on the PATH, or below /usr/bin.
/// Throws StartError when there is none.
std::string FindNameServer();

/// Owns the child. The kernel kills the child when the calling thread ends for whatever reason, so that it is
/// never left behind; the constructor must therefore be called on the main thread. Not thread safe.
class NameServerProcess {
  public:
    /// Starts it with standard output and error in one pipe, and with these variables ("NAME=VALUE") in its
    /// environment besides this process's. Throws StartError.
    explicit NameServerProcess(const std::vector<std::string>& command,
                               const std::vector<std::string>& variables = {});
    NameServerProcess(const NameServerProcess&) = delete;
    NameServerProcess& operator=(const NameServerProcess&) = delete;
    /// Kills the child if it still runs.
    ~NameServerProcess();

    pid_t Pid() const { return pid_; }
    /// Read end of the pipe, non-blocking; owned by this object.
    int Output() const { return output_; }
    /// What can be read from the pipe without waiting.
    std::string ReadOutput() const;

    void Signal(int signal) const;
    /// Collects the child if it has ended; afterwards it is remembered.
    const std::optional<ProcessEnd>& TryWait();
    const ProcessEnd& Kill();

  private:
    void Collect(int options);

    pid_t pid_ = -1;
    int output_ = -1;
    std::optional<ProcessEnd> end_;
};

}  // namespace qv_naming
