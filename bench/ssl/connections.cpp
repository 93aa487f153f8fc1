// Makes connections to a server, one after the other on each of a number of threads, with a question and its
// answer on each, and prints how many a second.
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <thread>
#include <vector>

#include "bench/ssl/connection.h"

namespace {

using Clock = std::chrono::steady_clock;

struct Tally {
    std::atomic<unsigned long> made{0};
    std::atomic<unsigned long> failed{0};
};

void ConnectUntil(int port, SSL_CTX* context, const std::atomic<bool>& go_on, Tally& tally) {
    while (go_on) {
        bench::Connection connection("127.0.0.1", port, context);
        ++(connection.Shake() && connection.Ask() ? tally.made : tally.failed);
    }
}

double Rate(int port, unsigned threads, double seconds, SSL_CTX* context) {
    std::atomic<bool> go_on{true};
    Tally tally;
    std::vector<std::thread> connectors;
    const auto begin = Clock::now();
    for (unsigned i = 0; i < threads; ++i) {
        connectors.emplace_back([&] { ConnectUntil(port, context, go_on, tally); });
    }
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
    go_on = false;
    for (std::thread& connector : connectors) {
        connector.join();
    }
    const double elapsed = std::chrono::duration<double>(Clock::now() - begin).count();
    if (tally.failed > 0) {
        throw std::runtime_error(std::to_string(tally.failed) + " connections failed");
    }
    return static_cast<double>(tally.made) / elapsed;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4 && argc != 5) {
        std::cerr << "usage: bench_ssl_connections PORT THREADS SECONDS [SERVICE_CONFIGURATION_FILE]\n";
        return 2;
    }
    try {
        const qv_ssl::ContextPtr context = argc == 5 ? bench::ClientContext(argv[4]) : nullptr;
        std::cout << Rate(std::atoi(argv[1]), static_cast<unsigned>(std::atoi(argv[2])), std::atof(argv[3]),
                          context.get())
                  << '\n';
        return 0;
    } catch (const std::exception& problem) {
        std::cerr << "bench_ssl_connections: " << problem.what() << '\n';
        return 1;
    }
}
