// Makes trouble of one kind for a server at 127.0.0.1 until its standard input ends; then prints how often it
// did, and how often that didn't go as it should. "ready" tells that it has begun.
#include <chrono>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>
#include <thread>

#include "bench/ssl/trouble.h"

int main(int argc, char** argv) {
    if (argc != 6) {
        std::cerr << "usage: bench_ssl_trouble KIND PLAIN_PORT SSL_PORT SERVICE_CONFIGURATION_FILE "
                     "PER_SECOND\nkinds:";
        for (const std::string& kind : bench::TroubleKinds()) {
            std::cerr << ' ' << kind;
        }
        std::cerr << '\n';
        return 2;
    }
    try {
        const bench::TroubleTarget target{"127.0.0.1", std::atoi(argv[2]), std::atoi(argv[3]), argv[4]};
        const bench::Trouble trouble(bench::TroubleKindOf(argv[1]), target,
                                     static_cast<unsigned>(std::atoi(argv[5])));
        while (trouble.Made() + trouble.Failed() == 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        std::cout << "ready" << std::endl;
        for (std::string line; std::getline(std::cin, line);) {
        }
        std::cout << trouble.Made() << ' ' << trouble.Failed() << std::endl;
        return 0;
    } catch (const std::exception& problem) {
        std::cerr << "bench_ssl_trouble: " << problem.what() << '\n';
        return 1;
    }
}
