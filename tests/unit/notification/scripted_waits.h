#pragma once

#include <functional>
#include <mutex>
#include <vector>

#include "notification/supplier_waits.h"

namespace qv_test {

/// While it lives the supplier manager's waits take no time: a supplier thread rests until Tick lets one of
/// them go, or its event is signalled; a pusher's wait ends at once. The clock stands still unless each look
/// at it is to move it on. One object at a time, made before the threads and destroyed after them.
class ScriptedWaits {
  public:
    ScriptedWaits();
    ~ScriptedWaits();
    ScriptedWaits(const ScriptedWaits&) = delete;
    ScriptedWaits& operator=(const ScriptedWaits&) = delete;

    /// The event on which supplier threads rest; set before they start.
    void SetWakeEvent(ACE_Event* event) { m_wakeEvent = event; }
    /// Runs in each wait of a pusher, from its number 1 on.
    void OnPause(std::function<void(int pause)> hook) { m_onPause = std::move(hook); }
    /// How far each look at the clock moves it on.
    void SetStep(const ACE_Time_Value& step);
    ACE_Time_Value Now();

    /// Lets one resting thread go and waits until as many rest again, or one fewer when `ends` says that it
    /// won't come back. False when that doesn't come about.
    bool Tick(int ends = 0);
    /// Lets one resting thread go, the one before it having gone.
    void Release();
    /// From now on nobody rests.
    void ReleaseAll();
    bool WaitForResting(int threads) const;

    /// The seconds for which supplier threads meant to rest, in order.
    std::vector<long> Rests() const;
    /// The seconds of the pushers' waits.
    std::vector<long> Pauses() const;

  private:
    static void Wait(ACE_Event& event, const ACE_Time_Value& timeout);
    static ACE_Time_Value NextTime();

    void Rest(ACE_Event& event, long seconds);
    void Pause(long seconds);

    const NS_CORBA::SupplierWaits m_former;
    ACE_Event* m_wakeEvent = nullptr;
    std::function<void(int)> m_onPause;

    mutable std::mutex m_lock;  // guards what follows
    ACE_Time_Value m_now{1000000, 0};
    ACE_Time_Value m_step;
    std::vector<long> m_rests;
    std::vector<long> m_pauses;
    int m_resting = 0;
    int m_ticks = 0;
    bool m_over = false;
};

}  // namespace qv_test
