#pragma once

#include <sys/types.h>

#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace qv_test {

/// How a child process is started.
struct ChildOptions {
    std::map<std::string, std::optional<std::string>> env;  ///< set these variables; without a value: unset
    std::string working_dir;                                ///< empty: this process's
};

/// A process that a test started. It is killed, by its id, and waited for when the object goes. What it
/// writes to its standard output and error is collected while it runs, by a thread of this object.
/// One thread uses the object; it need not be the one that made it.
class ChildProcess {
  public:
    using Millis = std::chrono::milliseconds;

    /// Starts `args[0]` (a path, or a name to be found in PATH) with these arguments, the name first.
    /// Throws std::system_error when it can't be started.
    explicit ChildProcess(const std::vector<std::string>& args, const ChildOptions& options = {});
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// The process id; stays the same after the end.
    pid_t pid() const { return m_pid; }

    /// Sends a signal; without effect after the end.
    void Signal(int number);
    /// Ends the process at once (SIGKILL) and waits for it.
    void Kill();

    /// Waits until the process has ended: its exit code, or 128 plus the number of the signal that ended it.
    /// Nothing when the time is up and it still runs.
    std::optional<int> Wait(Millis timeout = Millis(30000));
    bool Running();

    /// What it wrote so far to its standard output and to its standard error.
    std::string Out() const;
    std::string Err() const;

    /// Waits until the standard output (or error) holds `text`; false when the time is up or the stream has
    /// ended without it.
    bool WaitForOut(const std::string& text, Millis timeout = Millis(30000)) const;
    bool WaitForErr(const std::string& text, Millis timeout = Millis(30000)) const;

  private:
    struct Stream {
        int fd = -1;
        std::string text;
        bool ended = false;
    };

    void Collect();
    bool ReadInto(Stream& stream);
    bool WaitFor(const Stream& stream, const std::string& text, Millis timeout) const;

    pid_t m_pid = -1;
    std::optional<int> m_exit;
    mutable std::mutex m_lock;
    mutable std::condition_variable m_changed;
    Stream m_out;
    Stream m_err;
    int m_stop[2] = {-1, -1};
    std::thread m_collector;
};

/// Runs a program to its end: exit code (as ChildProcess::Wait) and what it wrote. Killed when the time is
/// up; the code is then 137.
struct RunResult {
    int code = 0;
    std::string out;
    std::string err;
};
RunResult Run(const std::vector<std::string>& args, const ChildOptions& options = {},
              ChildProcess::Millis timeout = ChildProcess::Millis(60000));

}  // namespace qv_test
