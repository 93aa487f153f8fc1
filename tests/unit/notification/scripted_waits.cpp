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

// Without a limit to the wait: a signal that comes just when a wait's time is over would be lost on this kind
// of event. A tick signals it too.
void ScriptedWaits::Rest(ACE_Event& event, long seconds) {
    bool over = false;
    {
        const Guard guard(m_lock);
        m_rests.push_back(seconds);
        over = m_over;
        m_resting += over ? 0 : 1;
    }
    if (over) {
        const ACE_Time_Value moment(0, 1000);
        event.wait(&moment, 0);
        return;
    }
    event.wait();
    const Guard guard(m_lock);
    --m_resting;
    m_ticks -= m_ticks != 0 ? 1 : 0;
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
    m_wakeEvent->signal();
    return qv_test::WaitFor([&] {
        const Guard guard(m_lock);
        return m_rests.size() == rests && m_resting == resting && m_ticks == 0;
    });
}

void ScriptedWaits::Release() {
    {
        const Guard guard(m_lock);
        ++m_ticks;
    }
    m_wakeEvent->signal();
}

void ScriptedWaits::ReleaseAll() {
    {
        const Guard guard(m_lock);
        m_over = true;
    }
    qv_test::WaitFor([this] {
        {
            const Guard guard(m_lock);
            if (m_resting == 0) {
                return true;
            }
        }
        m_wakeEvent->signal();  // of several signals at once one thread may take all
        return false;
    });
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
