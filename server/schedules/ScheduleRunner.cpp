#include "server/schedules/ScheduleRunner.h"

namespace {

constexpr int lookInterval = 500; // ms

} // namespace

ScheduleRunner::ScheduleRunner(ScheduleStore& store, ServerClock clock)
    : m_store(store), m_clock(std::move(clock)), m_lastLook(m_clock.now())
{
    connect(&m_timer, &QTimer::timeout, this, &ScheduleRunner::checkDue);
}

void ScheduleRunner::start()
{
    m_lastLook = m_clock.now();
    m_timer.start(lookInterval);
}

void ScheduleRunner::checkDue()
{
    const QDateTime now = m_clock.now();
    if (now <= m_lastLook) {
        m_lastLook = now; // the clock was set back
        return;
    }
    const auto schedules = m_store.enabled();
    if (!schedules) {
        return; // the next check makes up for this one, within the grace time
    }
    const QDateTime from = std::max(m_lastLook, now.addSecs(-graceTime));
    m_lastLook = now;
    for (const ScheduleStore::Entry& entry : *schedules) {
        const auto run = entry.rule.nextRun(from, m_clock.zone);
        if (run && *run <= now) {
            Q_EMIT due(entry.id, entry.name, entry.file, entry.devices);
        }
    }
}
