#include "bench/ssl/trouble.h"

#include <chrono>
#include <memory>
#include <random>
#include <stdexcept>
#include <utility>

#include "bench/ssl/connection.h"

namespace bench {
namespace {

constexpr std::size_t kHalfOpen = 200;
constexpr unsigned kThreads = 4;
constexpr int kRenegotiations = 100;  // on one connection, if the server lets that happen

const std::string kRequest{"GIOP\1\2\1\0\x0c\0\0\0\1\0\0\0\0\0\0\0\0\0\0\0", 24};
const std::string kHandshakeHead{"\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03", 11};

const std::vector<std::pair<std::string, TroubleKind>>& Names() {
    static const std::vector<std::pair<std::string, TroubleKind>> names{
        {"half-open", TroubleKind::kHalfOpen},       {"clear-to-ssl", TroubleKind::kClearToSsl},
        {"ssl-to-clear", TroubleKind::kSslToClear},  {"renegotiation", TroubleKind::kRenegotiation},
        {"random-bytes", TroubleKind::kRandomBytes}, {"no-certificate", TroubleKind::kNoCertificate}};
    return names;
}

std::string RandomBytes(unsigned round) {
    std::minstd_rand random(round + 1);
    std::string bytes = round % 2 == 0 ? kHandshakeHead : "";
    for (unsigned left = 1 + random() % 600; left > 0; --left) {
        bytes.push_back(static_cast<char>(random()));
    }
    return bytes;
}

qv_ssl::ContextPtr ContextOf(TroubleKind kind, const TroubleTarget& target) {
    qv_ssl::ContextPtr context;
    if (kind == TroubleKind::kNoCertificate) {
        context.reset(SSL_CTX_new(TLS_client_method()));
    } else {
        context = ClientContext(target.profile);
    }
    if (kind == TroubleKind::kRenegotiation) {
        SSL_CTX_set_max_proto_version(context.get(), TLS1_2_VERSION);
    }
    return context;
}

}  // namespace

TroubleKind TroubleKindOf(const std::string& name) {
    for (const auto& [own, kind] : Names()) {
        if (own == name) {
            return kind;
        }
    }
    throw std::invalid_argument("there is no trouble of the kind " + name);
}

std::vector<std::string> TroubleKinds() {
    std::vector<std::string> names;
    for (const auto& entry : Names()) {
        names.push_back(entry.first);
    }
    return names;
}

Troublemaker::Troublemaker(TroubleKind kind, TroubleTarget target)
    : kind_(kind), target_(std::move(target)), context_(ContextOf(kind, target_)) {}

bool Troublemaker::Once(unsigned round) const {
    switch (kind_) {
        case TroubleKind::kClearToSsl:
            return Send(kRequest);
        case TroubleKind::kRandomBytes:
            return Send(RandomBytes(round));
        case TroubleKind::kRenegotiation:
            return Renegotiate();
        case TroubleKind::kSslToClear: {
            Connection connection(target_.address, target_.plain_port, context_.get());
            return connection.Open() && !connection.Shake();
        }
        case TroubleKind::kNoCertificate: {
            Connection connection(target_.address, target_.ssl_port, context_.get());
            return connection.Open() && !(connection.Shake() && connection.Ask());
        }
        case TroubleKind::kHalfOpen:
            break;
    }
    throw std::logic_error("half-open connections are held, not made");
}

bool Troublemaker::Send(const std::string& bytes) const {
    const Connection connection(target_.address, target_.ssl_port, nullptr);
    if (!connection.Open()) {
        return false;
    }
    connection.SendRaw(bytes);
    connection.WaitUntilClosed();
    return true;
}

bool Troublemaker::Renegotiate() const {
    Connection connection(target_.address, target_.ssl_port, context_.get());
    if (!connection.Shake()) {
        return false;
    }
    int granted = 0;
    for (int i = 0; i < kRenegotiations && !connection.Closed(); ++i) {
        granted += connection.Renegotiate() ? 1 : 0;
    }
    return granted == 0;
}

Trouble::Trouble(TroubleKind kind, const TroubleTarget& target, unsigned per_second) {
    if (kind == TroubleKind::kHalfOpen) {
        threads_.emplace_back([this, target] { HoldHalfOpen(target); });
        return;
    }
    const auto maker = std::make_shared<const Troublemaker>(kind, target);
    for (unsigned i = 0; i < kThreads; ++i) {
        threads_.emplace_back([this, maker, i, per_second] { Repeat(*maker, i, per_second); });
    }
}

Trouble::~Trouble() {
    ended_ = true;
    for (std::thread& thread : threads_) {
        thread.join();
    }
}

void Trouble::HoldHalfOpen(const TroubleTarget& target) {
    std::vector<std::unique_ptr<Connection>> held(kHalfOpen);
    while (!ended_) {
        for (auto& connection : held) {
            if (connection == nullptr || connection->Closed()) {
                connection = std::make_unique<Connection>(target.address, target.ssl_port, nullptr);
                // Every other one begins a handshake.
                if (++made_ % 2 == 0) {
                    connection->SendRaw(kHandshakeHead);
                }
                failed_ += connection->Open() ? 0 : 1;
            }
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
}

void Trouble::Repeat(const Troublemaker& maker, unsigned thread, unsigned per_second) {
    using Clock = std::chrono::steady_clock;
    const auto pause = std::chrono::duration_cast<Clock::duration>(
        std::chrono::duration<double>(static_cast<double>(kThreads) / static_cast<double>(per_second)));
    Clock::time_point next = Clock::now() + pause * thread / kThreads;
    for (unsigned round = thread; !ended_; round += kThreads) {
        std::this_thread::sleep_until(next);
        // Who is late doesn't hurry to catch up.
        next = std::max(next + pause, Clock::now());
        ++(maker.Once(round) ? made_ : failed_);
    }
}

}  // namespace bench
