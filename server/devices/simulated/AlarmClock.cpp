#include "server/devices/simulated/AlarmClock.h"

#include <algorithm>

AlarmClock::Alarm::Alarm(std::shared_ptr<AlarmClock> clock, std::function<void()> ring)
    : m_clock(std::move(clock)), m_ring(std::move(ring))
{
}

AlarmClock::Alarm::~Alarm()
{
    clear();
}

void AlarmClock::Alarm::setTo(Time time)
{
    clear();
    m_set = true;
    m_time = time;
    m_clock->m_alarms.emplace(time, this);
    m_clock->waitForNext();
}

void AlarmClock::Alarm::clear()
{
    if (m_set) {
        m_set = false;
        m_clock->m_alarms.erase({m_time, this});
    }
}

AlarmClock::AlarmClock(std::function<Time()> now) : m_now(std::move(now))
{
    m_timer.setTimerType(Qt::PreciseTimer);
    m_timer.setSingleShot(true);
    QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { ring(); });
}

void AlarmClock::ring()
{
    const Time now = m_now();
    while (!m_alarms.empty() && m_alarms.begin()->first <= now) {
        Alarm& alarm = *m_alarms.begin()->second;
        alarm.clear();
        alarm.m_ring();
    }
    waitForNext();
}

void AlarmClock::waitForNext()
{
    if (m_alarms.empty()) {
        m_timer.stop();
        return;
    }
    const Time next = m_alarms.begin()->first;
    if (m_timer.isActive() && m_awaited <= next) {
        return; // it is woken up for one that was cleared at the most
    }
    m_awaited = next;
    using Milliseconds = std::chrono::duration<int, std::milli>;
    m_timer.start(std::max(std::chrono::ceil<Milliseconds>(next - m_now()), Milliseconds(0)));
}
