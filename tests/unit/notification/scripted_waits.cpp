#include "tests/unit/notification/scripted_waits.h"

#include "tests/support/wait_for.h"

namespace qv_test {

namespace {

using Guard = std::lock_guard<std::mutex>;

ScriptedWaits* g_waits = nullptr;

}  // namespace

ScriptedWaits::ScriptedWaits() : m_former(NS_CORBA::g_supplierWaits) {
    g_waits = this;
    NS_CORBA::g_supplierWaits = {Wait, NextTime};
}

ScriptedWaits::~ScriptedWaits() {
    NS_CORBA::g_supplierWaits = m_former;
    g_waits = nullptr;
}

void ScriptedWaits::Wait(ACE_Event& event, const ACE_Time_Value& timeout) {
    const long seconds = static_cast<long>(timeout.sec());
    if (&event == g_waits->m_wakeEvent) {
        g_waits->Rest(event, seconds);
    } else {
        g_waits->Pause(seconds);
    }
}

ACE_Time_Value ScriptedWaits::NextTime() {
    const Guard guard(g_waits->m_lock);
    const ACE_Time_Value now = g_waits->m_now;
    g_waits->m_now += g_waits->m_step;
    return now;
}

ACE_Time_Value ScriptedWaits::Now() {
    const Guard guard(m_lock);
    return m_now;
}

void ScriptedWaits::SetStep(const ACE_Time_Value& step) {
    const Guard guard(m_lock);
    m_step = step;
}

// An ACE event can't be waited for together with a tick: it is looked at again and again.
void ScriptedWaits::Rest(ACE_Event& event, long seconds) {
    {
        const Guard guard(m_lock);
        m_rests.push_back(seconds);
        ++m_resting;
    }
    const ACE_Time_Value moment(0, 1000);
    while (event.wait(&moment, 0) != 0 && !TakeTick()) {
    }
    const Guard guard(m_lock);
    --m_resting;
}

bool ScriptedWaits::TakeTick() {
    const Guard guard(m_lock);
    if (m_ticks != 0) {
        --m_ticks;
        return true;
    }
    return m_over;
}

void ScriptedWaits::Pause(long seconds) {
    int number = 0;
    {
        const Guard guard(m_lock);
        m_pauses.push_back(seconds);
        number = static_cast<int>(m_pauses.size());
    }
    if (m_onPause) {
        m_onPause(number);
    }
}

bool ScriptedWaits::Tick(int ends) {
    std::size_t rests = 0;
    int resting = 0;
    {
        const Guard guard(m_lock);
        rests = m_rests.size() + (ends == 0 ? 1 : 0);
        resting = m_resting - ends;
        ++m_ticks;
    }
    return qv_test::WaitFor([&] {
        const Guard guard(m_lock);
        return m_rests.size() == rests && m_resting == resting && m_ticks == 0;
    });
}

void ScriptedWaits::Release() {
    const Guard guard(m_lock);
    ++m_ticks;
}

void ScriptedWaits::ReleaseAll() {
    const Guard guard(m_lock);
    m_over = true;
}

bool ScriptedWaits::WaitForResting(int threads) const {
    return qv_test::WaitFor([&] {
        const Guard guard(m_lock);
        return m_resting == threads && m_ticks == 0;
    });
}

std::vector<long> ScriptedWaits::Rests() const {
    const Guard guard(m_lock);
    return m_rests;
}

std::vector<long> ScriptedWaits::Pauses() const {
    const Guard guard(m_lock);
    return m_pauses;
}

}  // namespace qv_test
