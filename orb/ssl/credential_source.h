// The certificate that is shown, which may be replaced on disk at any time.
#pragma once

#include <sys/types.h>

#include <array>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "orb/ssl/credentials.h"

namespace qv_ssl {

/// Hands out what the certificate and key files hold. When one of them changed, both are read again; a pair
/// that can't be used is reported once and the former one stays. Thread-safe.
class CredentialSource {
  public:
    using Time = std::chrono::steady_clock::time_point;
    using Clock = std::function<Time()>;
    using Report = std::function<void(const std::string& sentence)>;
    /// How long the files are not looked at again. A handshake is not to wait for a slow disk each time.
    static constexpr std::chrono::seconds kPause{1};

    /// Loads the files of the settings; throws SslError.
    CredentialSource(SslSettings settings, Clock clock, Report report);

    std::shared_ptr<const Credentials> Current();

  private:
    /// What tells a file from the one that was there before.
    struct FileMark {
        bool exists = false;
        dev_t device = 0;
        ino_t inode = 0;
        off_t size = 0;
        long seconds = 0;
        long nanoseconds = 0;
        bool operator==(const FileMark& other) const;
    };
    using Marks = std::array<FileMark, 2>;

    static FileMark MarkOf(const std::string& file);
    Marks LookAtFiles() const;
    void Reload();

    const SslSettings settings_;
    const Clock clock_;
    const Report report_;

    std::mutex mutex_;  // guards what follows
    Time looked_at_;
    Marks marks_;
    std::shared_ptr<const Credentials> current_;
};

}  // namespace qv_ssl
