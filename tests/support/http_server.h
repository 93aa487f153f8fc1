#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace qv_test {

/// What came with one request.
struct HttpRequest {
    std::string head;  ///< request line and header lines
    std::string body;
};

/// An HTTP server on a free port of 127.0.0.1, one connection after the other. Any thread may use it.
class HttpServer {
  public:
    /// Answers that are no status.
    static constexpr int kSilence = 0;  ///< reads the request and never answers
    static constexpr int kHangUp = 1;   ///< reads the request and closes the connection

    HttpServer();
    ~HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    int port() const { return m_port; }
    std::string Url(const std::string& path) const {
        return "http://127.0.0.1:" + std::to_string(m_port) + path;
    }

    /// What the next requests get, one each; afterwards what AnswerAlways says, at first 202.
    void AnswerNext(std::deque<int> answers);
    void AnswerAlways(int answer);

    std::vector<HttpRequest> Requests() const;

  private:
    void Run();
    void Serve(int connection);
    bool ReadRequest(int connection, std::string& buffer, HttpRequest& request);
    bool WaitReadable(int fd) const;
    int Note(const HttpRequest& request);

    int m_listener = -1;
    int m_port = 0;
    int m_stop[2] = {-1, -1};
    mutable std::mutex m_lock;  // guards what follows
    std::deque<int> m_next;
    int m_always = 202;
    std::vector<HttpRequest> m_requests;
    std::thread m_thread;
};

}  // namespace qv_test
