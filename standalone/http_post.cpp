#include "standalone/http_post.h"

#include <curl/curl.h>

#include <algorithm>
#include <stdexcept>

namespace qv_standalone {
namespace {

constexpr long kConnectTimeout = 3000;  // ms

size_t Discard(char* /*data*/, size_t size, size_t count, void* /*unused*/) {
    return size * count;
}

/// One part of the URL; empty when it has none.
std::string Part(CURLU* url, CURLUPart part, unsigned flags) {
    char* text = nullptr;
    if (curl_url_get(url, part, &text, flags) != CURLUE_OK) {
        return {};
    }
    const std::unique_ptr<char, decltype(&curl_free)> owner(text, &curl_free);
    return text;
}

std::string WithoutSecrets(const std::string& url) {
    const std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> parsed(curl_url(), &curl_url_cleanup);
    if (!parsed || curl_url_set(parsed.get(), CURLUPART_URL, url.c_str(), 0) != CURLUE_OK) {
        throw std::runtime_error("it isn't a URL");
    }
    const std::string scheme = Part(parsed.get(), CURLUPART_SCHEME, 0);
    if (scheme != "http" && scheme != "https") {
        throw std::runtime_error("it doesn't begin with http:// or https://");
    }
    return scheme + "://" + Part(parsed.get(), CURLUPART_HOST, 0) + ":" +
           Part(parsed.get(), CURLUPART_PORT, CURLU_DEFAULT_PORT) + Part(parsed.get(), CURLUPART_PATH, 0);
}

}  // namespace

struct HttpPost::Handles {
    CURL* easy = curl_easy_init();
    CURLM* multi = curl_multi_init();
    curl_slist* headers = nullptr;
    char reason[CURL_ERROR_SIZE] = {};

    Handles() {
        headers = curl_slist_append(headers, "Content-Type: application/json");
        headers = curl_slist_append(headers, "Expect:");  // no question ahead of a large body
    }
    ~Handles() {
        curl_multi_cleanup(multi);
        curl_easy_cleanup(easy);
        curl_slist_free_all(headers);
    }
    Handles(const Handles&) = delete;
    Handles& operator=(const Handles&) = delete;
};

HttpPost::HttpPost(const std::string& url) {
    curl_global_init(CURL_GLOBAL_ALL);
    m_shown = WithoutSecrets(url);
    m_handles = std::make_unique<Handles>();
    CURL* const easy = m_handles->easy;
    if (easy == nullptr || m_handles->multi == nullptr) {
        throw std::runtime_error("no memory for a connection");
    }
    curl_easy_setopt(easy, CURLOPT_URL, url.c_str());
    curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(easy, CURLOPT_POST, 1L);
    curl_easy_setopt(easy, CURLOPT_HTTPHEADER, m_handles->headers);
    curl_easy_setopt(easy, CURLOPT_USERAGENT, "qv_callchain");
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &Discard);
    curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, m_handles->reason);
    curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT_MS, kConnectTimeout);
    curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
}

HttpPost::~HttpPost() = default;

void HttpPost::EndBy(Clock::time_point moment) {
    m_end = moment.time_since_epoch().count();
    curl_multi_wakeup(m_handles->multi);
}

HttpPost::Clock::time_point HttpPost::EndOf(Clock::time_point end) const {
    return std::min(end, Clock::time_point(Clock::duration(m_end.load())));
}

PostResult HttpPost::Post(const std::string& json, std::chrono::milliseconds timeout) {
    m_handles->reason[0] = '\0';
    curl_easy_setopt(m_handles->easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(json.size()));
    curl_easy_setopt(m_handles->easy, CURLOPT_POSTFIELDS, json.c_str());
    curl_multi_add_handle(m_handles->multi, m_handles->easy);
    PostResult result = Run(Clock::now() + timeout);
    curl_multi_remove_handle(m_handles->multi, m_handles->easy);
    return result;
}

PostResult HttpPost::Run(Clock::time_point end) {
    PostResult result;
    int running = 1;
    while (true) {
        if (const CURLMcode code = curl_multi_perform(m_handles->multi, &running); code != CURLM_OK) {
            result.failure = curl_multi_strerror(code);
            return result;
        }
        if (running == 0) {
            break;
        }
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(EndOf(end) - Clock::now()).count();
        if (left <= 0) {
            result.failure = "no answer in time";
            return result;
        }
        curl_multi_poll(m_handles->multi, nullptr, 0, static_cast<int>(std::min<long long>(left, 1000)),
                        nullptr);
    }
    int queued = 0;
    const CURLMsg* const message = curl_multi_info_read(m_handles->multi, &queued);
    const CURLcode code = message == nullptr ? CURLE_FAILED_INIT : message->data.result;
    if (code != CURLE_OK) {
        result.failure = m_handles->reason[0] != '\0' ? m_handles->reason : curl_easy_strerror(code);
        return result;
    }
    curl_easy_getinfo(m_handles->easy, CURLINFO_RESPONSE_CODE, &result.status);
    if (!result.Delivered()) {
        result.failure = "it answers " + std::to_string(result.status);
    }
    return result;
}

}  // namespace qv_standalone
