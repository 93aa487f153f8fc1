#include "orb/request_hold.h"

#include <condition_variable>
#include <mutex>

#include "request_gate.h"

namespace qv_orb {
namespace {

std::mutex g_mutex;
std::condition_variable g_opened;
int g_holds = 0;

}  // namespace

void PassRequestGate() {
    std::unique_lock<std::mutex> lock(g_mutex);
    g_opened.wait(lock, [] { return g_holds == 0; });
}

RequestHold::RequestHold() {
    const std::lock_guard<std::mutex> guard(g_mutex);
    ++g_holds;
}

RequestHold::~RequestHold() {
    const std::lock_guard<std::mutex> guard(g_mutex);
    --g_holds;
    g_opened.notify_all();
}

}  // namespace qv_orb
