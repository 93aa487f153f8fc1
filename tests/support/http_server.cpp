#include "tests/support/http_server.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>
#include <utility>

namespace qv_test {
namespace {

void Check(int result, const char* what) {
    if (result < 0) {
        throw std::system_error(errno, std::generic_category(), what);
    }
}

std::size_t ContentLength(const std::string& head) {
    static const std::string kName = "\r\nContent-Length: ";
    const std::size_t at = head.find(kName);
    return at == std::string::npos ? 0 : std::strtoul(head.c_str() + at + kName.size(), nullptr, 10);
}

}  // namespace

HttpServer::HttpServer() {
    Check(pipe(m_stop), "pipe");
    m_listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    Check(m_listener, "socket");
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    Check(bind(m_listener, reinterpret_cast<sockaddr*>(&address), size), "bind");
    Check(listen(m_listener, 16), "listen");
    Check(getsockname(m_listener, reinterpret_cast<sockaddr*>(&address), &size), "getsockname");
    m_port = ntohs(address.sin_port);
    m_thread = std::thread(&HttpServer::Run, this);
}

HttpServer::~HttpServer() {
    close(m_stop[1]);
    m_thread.join();
    close(m_stop[0]);
    close(m_listener);
}

void HttpServer::AnswerNext(std::deque<int> answers) {
    const std::lock_guard<std::mutex> guard(m_lock);
    m_next = std::move(answers);
}

void HttpServer::AnswerAlways(int answer) {
    const std::lock_guard<std::mutex> guard(m_lock);
    m_always = answer;
}

std::vector<HttpRequest> HttpServer::Requests() const {
    const std::lock_guard<std::mutex> guard(m_lock);
    return m_requests;
}

int HttpServer::Note(const HttpRequest& request) {
    const std::lock_guard<std::mutex> guard(m_lock);
    m_requests.push_back(request);
    if (m_next.empty()) {
        return m_always;
    }
    const int answer = m_next.front();
    m_next.pop_front();
    return answer;
}

/// False when the server is to end.
bool HttpServer::WaitReadable(int fd) const {
    pollfd wanted[2] = {{fd, POLLIN, 0}, {m_stop[0], POLLIN, 0}};
    while (poll(wanted, 2, -1) < 0 && errno == EINTR) {
    }
    return wanted[1].revents == 0;
}

void HttpServer::Run() {
    while (WaitReadable(m_listener)) {
        const int connection = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (connection >= 0) {
            Serve(connection);
            close(connection);
        }
    }
}

void HttpServer::Serve(int connection) {
    std::string buffer;
    HttpRequest request;
    while (ReadRequest(connection, buffer, request)) {
        const int answer = Note(request);
        if (answer == kHangUp) {
            return;
        }
        if (answer == kSilence) {
            char unused = 0;
            while (WaitReadable(connection) && recv(connection, &unused, 1, 0) > 0) {
            }
            return;
        }
        const std::string text =
            "HTTP/1.1 " + std::to_string(answer) + " x\r\nContent-Length: 5\r\n\r\nhello";
        if (send(connection, text.data(), text.size(), MSG_NOSIGNAL) < 0) {
            return;
        }
    }
}

bool HttpServer::ReadRequest(int connection, std::string& buffer, HttpRequest& request) {
    static const std::string kEnd = "\r\n\r\n";
    while (true) {
        if (const std::size_t end = buffer.find(kEnd); end != std::string::npos) {
            const std::size_t begin = end + kEnd.size();
            const std::size_t length = ContentLength(buffer.substr(0, end));
            if (buffer.size() >= begin + length) {
                request = {buffer.substr(0, end), buffer.substr(begin, length)};
                buffer.erase(0, begin + length);
                return true;
            }
        }
        char chunk[4096];
        if (!WaitReadable(connection)) {
            return false;
        }
        const ssize_t got = recv(connection, chunk, sizeof chunk, 0);
        if (got <= 0) {
            return false;
        }
        buffer.append(chunk, static_cast<std::size_t>(got));
    }
}

}  // namespace qv_test
