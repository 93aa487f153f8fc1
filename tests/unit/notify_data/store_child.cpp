// A process with a store, for what a test can't do to its own process: being killed, running into a limit,
// losing rights. Says on its standard output what it has done.

#include <grp.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "services/notify/store/store.h"

namespace {

using qv_notify::Store;
using qv_notify::StoreError;

constexpr int kThreads = 3;
constexpr uid_t kNobody = 65534;

/// In one piece, also when the process is killed at once.
void Say(const std::string& line) {
    const std::string whole = line + "\n";
    if (write(STDOUT_FILENO, whole.data(), whole.size()) != static_cast<ssize_t>(whole.size())) {
        std::exit(3);
    }
}

/// Each word is said after what it tells of, but "begin", which is said before.
void Work(Store& store, const std::string& consumer) {
    const auto now = std::chrono::system_clock::now();
    for (int i = 0;; ++i) {
        const std::int64_t number = store.NextNumber("c1/load");
        Say("number " + std::to_string(number));
        const std::string object = "c1/f" + std::to_string(number);
        store.Put(object, std::to_string(number));
        Say("object " + object);
        const std::string octets = std::string(1500, 'e') + std::to_string(number);
        const std::string event = std::to_string(store.AddEvent("c1", consumer, octets, now));
        Say("event " + event + " " + std::to_string(number));
        store.Dispatch({{std::stoll(event), {consumer}}});
        Say("dispatched " + event + " " + consumer);
        if (i % 3 != 0) {
            Say("begin " + event);
            store.Done(consumer, {std::stoll(event)});
            Say("done " + event);
        }
    }
}

void Load(const std::string& path) {
    Store store(path);
    store.Put("c1", "");
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        const std::string consumer = "c1/ca1/p" + std::to_string(i);
        store.Put(consumer, "");
        threads.emplace_back([&store, consumer] { Work(store, consumer); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

void LimitFiles(rlim_t bytes) {
    struct rlimit limit = {};
    getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = bytes;
    setrlimit(RLIMIT_FSIZE, &limit);
}

int AddUntilFull(Store& store, const std::string& octets) {
    for (int added = 0;; ++added) {
        try {
            store.AddEvent("c1", "", octets, std::chrono::system_clock::now());
        } catch (const StoreError& error) {
            Say(error.what());
            return added;
        }
    }
}

/// The disk is full for a while.
void Fill(const std::string& path) {
    signal(SIGXFSZ, SIG_IGN);
    Store store(path);
    store.Put("c1", "before");
    LimitFiles(500'000);
    const std::string octets(10'000, 'x');
    const int added = AddUntilFull(store, octets);
    Say("added " + std::to_string(added) + " kept " + std::to_string(store.Events().size()));
    try {
        store.Put("c1", "during");
        Say("put");
    } catch (const StoreError& error) {
        Say(error.what());
    }
    LimitFiles(RLIM_INFINITY);
    store.AddEvent("c1", "", octets, std::chrono::system_clock::now());
    store.Put("c1", "after");
    Say("after " + std::to_string(store.Events().size()) + " " + store.Objects().front().description);
}

void OpenAsNobody(const std::string& path) {
    if (geteuid() == 0 && (setgroups(0, nullptr) != 0 || setgid(kNobody) != 0 || setuid(kNobody) != 0)) {
        Say("can't drop the rights");
        std::exit(4);
    }
    const Store store(path);
}

void OpenWhenFull(const std::string& path) {
    signal(SIGXFSZ, SIG_IGN);
    LimitFiles(2'000);
    const Store store(path);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        return 2;
    }
    const std::string mode = argv[1];
    try {
        if (mode == "load") {
            Load(argv[2]);
        } else if (mode == "fill") {
            Fill(argv[2]);
        } else if (mode == "nobody") {
            OpenAsNobody(argv[2]);
        } else if (mode == "open_when_full") {
            OpenWhenFull(argv[2]);
        } else if (mode == "open") {
            const Store store(argv[2]);
        }
    } catch (const StoreError& error) {
        Say(error.what());
        return 1;
    }
    return 0;
}
