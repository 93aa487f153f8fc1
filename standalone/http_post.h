#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <string>

namespace qv_standalone {

/// What came of a POST.
struct PostResult {
    long status = 0;      ///< the HTTP status; 0 when there was no whole answer
    std::string failure;  ///< why not, in words without the URL
    bool Delivered() const { return status >= 200 && status < 300; }
    /// Whether the same may succeed later.
    bool WorthRetrying() const { return status == 0 || status == 408 || status == 429 || status >= 500; }
};

/// POSTs JSON to one URL, over one connection that is kept. Post is for one thread, EndBy for any.
class HttpPost {
  public:
    using Clock = std::chrono::steady_clock;

    /// @param url http or https. Throws std::runtime_error when it is neither.
    explicit HttpPost(const std::string& url);
    ~HttpPost();
    HttpPost(const HttpPost&) = delete;
    HttpPost& operator=(const HttpPost&) = delete;

    /// Ends after `timeout`, or at the moment set by EndBy, at the latest. What is answered is read and
    /// thrown away.
    PostResult Post(const std::string& json, std::chrono::milliseconds timeout);

    /// From now on no Post, the present one included, lasts beyond `moment`.
    void EndBy(Clock::time_point moment);

    /// The URL without user, password, query and fragment, for messages.
    const std::string& ShownUrl() const { return m_shown; }

  private:
    struct Handles;
    PostResult Run(Clock::time_point end);
    Clock::time_point EndOf(Clock::time_point end) const;

    std::string m_shown;
    std::unique_ptr<Handles> m_handles;
    std::atomic<Clock::rep> m_end{Clock::time_point::max().time_since_epoch().count()};
};

}  // namespace qv_standalone
