#pragma once

#include "protocol/ScheduleRule.h"

#include <QDateTime>
#include <QList>
#include <QObject>
#include <QTimeZone>
#include <QTimer>
#include <QVariantMap>

#include <functional>
#include <map>
#include <set>
#include <utility>

/** The server's source of time; tests have their own. */
struct ServerClock
{
    std::function<QDateTime()> now = [] { return QDateTime::currentDateTimeUtc(); }; ///< Current time, UTC.
    QTimeZone zone = QTimeZone::systemTimeZone(); ///< The time zone of schedules.
};

/** A run of a schedule. */
struct ScheduledRun
{
    int schedule;       ///< Id of the record.
    QString name;       ///< Of the record.
    int file;           ///< Id of the audio file, which may be gone; 0 for none.
    QList<int> groups;  ///< Ids of those to play on, which may be gone.
    QList<int> devices; ///< The same.
};

/**
 * Reports each enabled schedule when it is due. It knows when the next run is, and reads no record until
 * then. A run that was due more than the grace time ago, because the server was down or the machine asleep,
 * is skipped. Lives on the server's thread.
 */
class ScheduleRunner : public QObject
{
    Q_OBJECT

public:
    static constexpr int graceTime = 30; ///< Seconds.

    /** Makes one without schedules. */
    explicit ScheduleRunner(ServerClock clock);

    /** Takes a schedule, or what it is after a change. @param record as ScheduleStore returns it */
    void put(const QVariantMap& record);

    /** Forgets a schedule. */
    void remove(int id);

    /** Starts to wake up for what is due; runs that were due before are skipped. */
    void start();

    /** Checks for due schedules now. */
    void checkDue();

Q_SIGNALS:
    /** Emitted once for each run that is due. */
    void due(const ScheduledRun& run);

private:
    struct Plan
    {
        ScheduledRun run;
        ScheduleRule rule;
        qint64 next = 0; ///< The next run, ms since 1970 UTC; 0 for none.
    };

    void setNext(Plan& plan, const QDateTime& after);
    void planAll();
    void wakeUp();

    ServerClock m_clock;
    QDateTime m_lastLook;
    bool m_started = false;
    std::map<int, Plan> m_plans;              ///< Of the enabled schedules, by id.
    std::set<std::pair<qint64, int>> m_queue; ///< Their next runs: when, and the schedule.
    QTimer m_timer;
};
