// A network switch in user space: forwards IPv4 packets between the TUN devices of hosts and does to them
// what it is told on standard input. It ends with its input, and the devices with it. Usage: qv_fault_switch
// SEED NAME:PID:ADDRESS...
#include <poll.h>
#include <unistd.h>

#include <charconv>
#include <cstdio>
#include <exception>
#include <memory>
#include <queue>
#include <stdexcept>

#include "tests/faults/switch/fabric.h"
#include "tests/faults/switch/tunnel.h"

namespace {

using Clock = std::chrono::steady_clock;
using qv_faults::Delay;

constexpr const char* kDevice = "qv0";

struct Host {
    std::string name;
    std::string address;
    std::unique_ptr<qv_faults::Tunnel> tunnel;
};

template <class Number>
Number NumberOf(const std::string& text) {
    Number number{};
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || rest != end) {
        throw std::runtime_error("\"" + text + "\" is no number");
    }
    return number;
}

Host HostOf(const std::string& text) {
    const std::size_t first = text.find(':');
    const std::size_t second = text.find(':', first + 1);
    if (first == std::string::npos || second == std::string::npos) {
        throw std::runtime_error("\"" + text + "\" is not of the form NAME:PID:ADDRESS");
    }
    const auto process = NumberOf<pid_t>(text.substr(first + 1, second - first - 1));
    return {text.substr(0, first), text.substr(second + 1),
            std::make_unique<qv_faults::Tunnel>(process, kDevice)};
}

/// Packets that wait until they are due. Those due at one time leave in the order in which they came.
class Waiting {
  public:
    void Add(Clock::time_point due, const Host* to, const std::string& packet) {
        queue_.push({due, next_++, to, packet});
    }
    void SendDue() {
        while (!queue_.empty() && queue_.top().due <= Clock::now()) {
            queue_.top().to->tunnel->Write(queue_.top().packet);
            queue_.pop();
        }
    }
    /// For poll: -1 when nothing waits.
    int Milliseconds() const {
        if (queue_.empty()) {
            return -1;
        }
        const auto rest = std::chrono::ceil<Delay>(queue_.top().due - Clock::now());
        return static_cast<int>(std::max(rest, Delay(0)).count());
    }

  private:
    struct Item {
        Clock::time_point due;
        std::uint64_t number;
        const Host* to;
        std::string packet;
        bool operator<(const Item& other) const {
            return std::make_pair(other.due, other.number) < std::make_pair(due, number);
        }
    };
    std::priority_queue<Item> queue_;
    std::uint64_t next_ = 0;
};

class Switch {
  public:
    Switch(std::uint64_t seed, std::vector<Host> hosts)
        : hosts_(std::move(hosts)), fabric_(seed, Names(hosts_)) {}

    void Run() {
        std::vector<pollfd> polled{{STDIN_FILENO, POLLIN, 0}};
        for (const Host& host : hosts_) {
            polled.push_back({host.tunnel->fd(), POLLIN, 0});
        }
        for (;;) {
            ::poll(polled.data(), polled.size(), waiting_.Milliseconds());
            for (std::size_t i = 0; i < hosts_.size(); ++i) {
                if (polled[i + 1].revents != 0) {
                    Forward(hosts_[i]);
                }
            }
            if (polled[0].revents != 0 && !TakeOrders()) {
                return;
            }
            waiting_.SendDue();
        }
    }

  private:
    static std::vector<std::string> Names(const std::vector<Host>& hosts) {
        std::vector<std::string> names;
        for (const Host& host : hosts) {
            names.push_back(host.name);
        }
        return names;
    }

    void Forward(const Host& from) {
        constexpr int kAtOnce = 64;
        for (int i = 0; i < kAtOnce; ++i) {
            const std::string packet = from.tunnel->Read();
            if (packet.empty()) {
                return;
            }
            const std::string address = qv_faults::DestinationOf(packet);
            for (const Host& to : hosts_) {
                qv_faults::Link* const link =
                    to.address == address ? fabric_.Find(from.name, to.name) : nullptr;
                if (link == nullptr) {
                    continue;
                }
                for (const Delay wait : link->Decide()) {
                    waiting_.Add(Clock::now() + wait, &to, packet);
                }
            }
        }
    }

    /// False at the end of the input.
    bool TakeOrders() {
        char buffer[4096];
        const ssize_t size = ::read(STDIN_FILENO, buffer, sizeof buffer);
        if (size <= 0) {
            return false;
        }
        input_.append(buffer, static_cast<std::size_t>(size));
        for (std::size_t end = input_.find('\n'); end != std::string::npos; end = input_.find('\n')) {
            std::puts(fabric_.Order(input_.substr(0, end)).c_str());
            std::fflush(stdout);
            input_.erase(0, end + 1);
        }
        return true;
    }

    const std::vector<Host> hosts_;
    qv_faults::Fabric fabric_;
    Waiting waiting_;
    std::string input_;
};

}  // namespace

int main(int argc, char** argv) try {
    if (argc < 4) {
        std::fputs("usage: qv_fault_switch SEED NAME:PID:ADDRESS...\n", stderr);
        return 2;
    }
    std::vector<Host> hosts;
    for (int i = 2; i < argc; ++i) {
        hosts.push_back(HostOf(argv[i]));
    }
    Switch the_switch(NumberOf<std::uint64_t>(argv[1]), std::move(hosts));
    std::puts("ready");
    std::fflush(stdout);
    the_switch.Run();
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "qv_fault_switch: %s\n", error.what());
    return 1;
}
