#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>

#include "tests/e2e/events/event_run.h"

namespace qv_e2e {

/// The services that an agent starts, with the programs laid out where it looks for them. They are killed, by
/// their ids, when the object goes, unless the agent has ended them.
class Companions {
  public:
    explicit Companions(EventRun& run);
    ~Companions();
    Companions(const Companions&) = delete;
    Companions& operator=(const Companions&) = delete;

    /// Of "naming" or "notify"; -1 when it never got so far.
    pid_t Pid(const std::string& name) const;

    /// Whether that process is one of these services, and not another that has taken the id since.
    bool Runs(pid_t pid) const;

  private:
    const std::filesystem::path share_;
};

}  // namespace qv_e2e
