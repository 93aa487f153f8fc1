#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>

#include "demo/agent/ems.h"

namespace qv_demo {

/// Looks once a second for sessions and iterators whose time is up. Runs until Stop or destruction.
class Housekeeper {
  public:
    explicit Housekeeper(const Ems& ems);
    ~Housekeeper();
    Housekeeper(const Housekeeper&) = delete;
    Housekeeper& operator=(const Housekeeper&) = delete;

    void Stop();

  private:
    void Run();

    const Ems& ems_;
    std::mutex mutex_;
    std::condition_variable stopped_;
    bool stop_ = false;
    std::thread thread_;
};

}  // namespace qv_demo
