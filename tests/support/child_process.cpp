#include "tests/support/child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

#include "tests/support/wait_for.h"

namespace qv_test {
namespace {

void Check(int result, const std::string& what) {
    if (result != 0) {
        throw std::system_error(result, std::generic_category(), what);
    }
}

struct Pipe {
    int ends[2] = {-1, -1};
    Pipe() {
        if (pipe2(ends, O_CLOEXEC) != 0) {
            throw std::system_error(errno, std::generic_category(), "pipe");
        }
    }
    ~Pipe() {
        Close(ends[0]);
        Close(ends[1]);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    static void Close(int& fd) {
        if (fd >= 0) {
            close(fd);
            fd = -1;
        }
    }
    int Release(int end) { return std::exchange(ends[end], -1); }
};

/// The environment of the child, in the form posix_spawn wants.
class Environment {
  public:
    explicit Environment(const std::map<std::string, std::optional<std::string>>& changes) {
        for (char** entry = environ; *entry != nullptr; ++entry) {
            const std::string text = *entry;
            if (changes.count(text.substr(0, text.find('='))) == 0) {
                m_texts.push_back(text);
            }
        }
        for (const auto& [name, value] : changes) {
            if (value) {
                m_texts.push_back(name + "=" + *value);
            }
        }
        for (std::string& text : m_texts) {
            m_pointers.push_back(text.data());
        }
        m_pointers.push_back(nullptr);
    }
    char** data() { return m_pointers.data(); }

  private:
    std::vector<std::string> m_texts;
    std::vector<char*> m_pointers;
};

pid_t Spawn(const std::vector<std::string>& args, const ChildOptions& options, int out, int err) {
    posix_spawn_file_actions_t actions;
    Check(posix_spawn_file_actions_init(&actions), "spawn actions");
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, out, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, err, STDERR_FILENO);
    if (!options.working_dir.empty()) {
        posix_spawn_file_actions_addchdir_np(&actions, options.working_dir.c_str());
    }
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);

    std::vector<std::string> texts = args;
    std::vector<char*> argv;
    for (std::string& text : texts) {
        argv.push_back(text.data());
    }
    argv.push_back(nullptr);
    Environment environment(options.env);
    pid_t pid = -1;
    const int result = posix_spawnp(&pid, argv[0], &actions, &attributes, argv.data(), environment.data());
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    Check(result, "can't start " + args.at(0));
    return pid;
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& args, const ChildOptions& options) {
    if (args.empty()) {
        throw std::system_error(EINVAL, std::generic_category(), "no program to start");
    }
    Pipe out;
    Pipe err;
    Pipe stop;
    m_pid = Spawn(args, options, out.ends[1], err.ends[1]);
    m_out.fd = out.Release(0);
    m_err.fd = err.Release(0);
    m_stop[0] = stop.Release(0);
    m_stop[1] = stop.Release(1);
    m_collector = std::thread(&ChildProcess::Collect, this);
}

ChildProcess::~ChildProcess() {
    Kill();
    close(m_stop[1]);
    m_collector.join();
    close(m_stop[0]);
    close(m_out.fd);
    close(m_err.fd);
}

void ChildProcess::Signal(int number) {
    if (Running()) {
        kill(m_pid, number);
    }
}

void ChildProcess::Kill() {
    Signal(SIGKILL);
    Wait();
}

std::optional<int> ChildProcess::Wait(Millis timeout) {
    qv_test::WaitFor([this] { return !Running(); }, timeout);
    if (!m_exit) {
        return std::nullopt;
    }
    // What it wrote last may still be on its way through the pipes. A grandchild may hold them open for long.
    std::unique_lock<std::mutex> lock(m_lock);
    m_changed.wait_for(lock, Millis(500), [this] { return m_out.ended && m_err.ended; });
    return m_exit;
}

bool ChildProcess::Running() {
    if (m_exit) {
        return false;
    }
    int status = 0;
    const pid_t result = waitpid(m_pid, &status, WNOHANG);
    if (result == m_pid) {
        m_exit = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    } else if (result < 0 && errno == ECHILD) {
        m_exit = -1;  // somebody else has waited for it
    }
    return !m_exit;
}

std::string ChildProcess::Out() const {
    std::lock_guard<std::mutex> guard(m_lock);
    return m_out.text;
}

std::string ChildProcess::Err() const {
    std::lock_guard<std::mutex> guard(m_lock);
    return m_err.text;
}

bool ChildProcess::WaitForOut(const std::string& text, Millis timeout) const {
    return WaitFor(m_out, text, timeout);
}

bool ChildProcess::WaitForErr(const std::string& text, Millis timeout) const {
    return WaitFor(m_err, text, timeout);
}

bool ChildProcess::WaitFor(const Stream& stream, const std::string& text, Millis timeout) const {
    std::unique_lock<std::mutex> lock(m_lock);
    const auto found = [&] { return stream.text.find(text) != std::string::npos; };
    m_changed.wait_for(lock, timeout, [&] { return found() || stream.ended; });
    return found();
}

void ChildProcess::Collect() {
    bool outOpen = true;
    bool errOpen = true;
    while (outOpen || errOpen) {
        pollfd fds[] = {{outOpen ? m_out.fd : -1, POLLIN, 0},
                        {errOpen ? m_err.fd : -1, POLLIN, 0},
                        {m_stop[0], POLLIN, 0}};
        if (poll(fds, 3, -1) < 0 && errno != EINTR) {
            return;
        }
        if (fds[0].revents != 0) {
            outOpen = ReadInto(m_out);
        }
        if (fds[1].revents != 0) {
            errOpen = ReadInto(m_err);
        }
        if (fds[2].revents != 0) {
            return;
        }
    }
}

bool ChildProcess::ReadInto(Stream& stream) {
    char buffer[4096];
    const ssize_t got = read(stream.fd, buffer, sizeof(buffer));
    if (got < 0 && errno == EINTR) {
        return true;
    }
    std::lock_guard<std::mutex> guard(m_lock);
    if (got > 0) {
        stream.text.append(buffer, static_cast<std::size_t>(got));
    } else {
        stream.ended = true;
    }
    m_changed.notify_all();
    return got > 0;
}

RunResult Run(const std::vector<std::string>& args, const ChildOptions& options,
              ChildProcess::Millis timeout) {
    ChildProcess child(args, options);
    if (!child.Wait(timeout)) {
        child.Kill();
    }
    const std::optional<int> code = child.Wait();
    return {code.value_or(-1), child.Out(), child.Err()};
}

}  // namespace qv_test
