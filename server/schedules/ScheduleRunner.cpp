#include "server/schedules/ScheduleRunner.h"

#include "protocol/RecordChecks.h"
#include "protocol/Words.h"

#include <algorithm>
#include <vector>

namespace {

constexpr qint64 longestSleep = 1000; // ms: somebody may set the clock

QList<int> idsOf(const QVariantMap& record, const QString& key)
{
    return RecordChecks::ids(record.value(key).toString()).value_or(QList<int>());
}

} // namespace

ScheduleRunner::ScheduleRunner(ServerClock clock) : m_clock(std::move(clock)), m_lastLook(m_clock.now())
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &ScheduleRunner::checkDue);
}

void ScheduleRunner::put(const QVariantMap& record)
{
    const int id = record.value(Vocabulary::scheduleID).toInt();
    remove(id);
    QString error;
    const auto rule = ScheduleRule::fromRecord(record, &error);
    if (!rule || !record.value(Vocabulary::enableSchedule).toBool()) {
        return;
    }
    if (m_started && m_plans.empty()) {
        m_lastLook = m_clock.now(); // it slept
    }
    Plan& plan = m_plans[id];
    plan.run = {id, record.value(Vocabulary::scheduleName).toString(),
                record.value(Vocabulary::audioID).toInt(), idsOf(record, Vocabulary::groupIDList),
                idsOf(record, Vocabulary::networkAudioIDList)};
    plan.rule = *rule;
    setNext(plan, m_lastLook);
    wakeUp();
}

void ScheduleRunner::remove(int id)
{
    const auto plan = m_plans.find(id);
    if (plan != m_plans.end()) {
        m_queue.erase({plan->second.next, id});
        m_plans.erase(plan);
    }
}

void ScheduleRunner::start()
{
    m_started = true;
    m_lastLook = m_clock.now();
    planAll();
}

/** Finds out when a schedule runs next. */
void ScheduleRunner::setNext(Plan& plan, const QDateTime& after)
{
    m_queue.erase({plan.next, plan.run.schedule});
    const auto next = plan.rule.nextRun(after, m_clock.zone);
    plan.next = next ? next->toMSecsSinceEpoch() : 0;
    if (next) {
        m_queue.insert({plan.next, plan.run.schedule});
    }
}

void ScheduleRunner::planAll()
{
    for (auto& plan : m_plans) {
        setNext(plan.second, m_lastLook);
    }
    wakeUp();
}

void ScheduleRunner::wakeUp()
{
    if (!m_started || m_plans.empty()) {
        return;
    }
    const qint64 wait =
        m_queue.empty() ? longestSleep : m_queue.begin()->first - m_clock.now().toMSecsSinceEpoch();
    m_timer.start(static_cast<int>(std::clamp<qint64>(wait, 0, longestSleep)));
}

void ScheduleRunner::checkDue()
{
    const QDateTime now = m_clock.now();
    const QDateTime before = std::exchange(m_lastLook, now);
    if (now < before) {
        planAll(); // the clock was set back
        return;
    }
    const QDateTime from = std::max(before, now.addSecs(-graceTime));
    std::vector<ScheduledRun> runs;
    while (!m_queue.empty() && m_queue.begin()->first <= now.toMSecsSinceEpoch()) {
        Plan& plan = m_plans.at(m_queue.begin()->second);
        const auto run = plan.rule.nextRun(from, m_clock.zone);
        if (run && *run <= now) {
            runs.push_back(plan.run);
        }
        setNext(plan, now);
    }
    wakeUp();
    for (const ScheduledRun& run : runs) {
        Q_EMIT due(run);
    }
}
