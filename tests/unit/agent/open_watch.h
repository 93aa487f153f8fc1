#pragma once

#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <string>
#include <vector>

namespace qv_test {

/// Counts, from its construction on, how often somebody opens the files and directories themselves.
class OpenWatch {
  public:
    explicit OpenWatch(const std::vector<std::string>& paths)
        : m_fd(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
        EXPECT_GE(m_fd, 0);
        for (const std::string& path : paths) {
            EXPECT_GE(inotify_add_watch(m_fd, path.c_str(), IN_OPEN), 0) << path;
        }
    }
    ~OpenWatch() { close(m_fd); }
    OpenWatch(const OpenWatch&) = delete;
    OpenWatch& operator=(const OpenWatch&) = delete;

    /// How often since the last call. Equal ones in succession that nobody asked for in between are one.
    int Opened() const {
        alignas(inotify_event) char events[4096];
        int count = 0;
        for (ssize_t size = 0; (size = read(m_fd, events, sizeof events)) > 0;) {
            for (ssize_t at = 0; at < size; ++count) {
                const auto* event = reinterpret_cast<const inotify_event*>(events + at);
                at += static_cast<ssize_t>(sizeof *event + event->len);
            }
        }
        return count;
    }

  private:
    const int m_fd;
};

}  // namespace qv_test
