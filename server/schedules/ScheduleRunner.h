#pragma once

#include "server/schedules/ScheduleStore.h"

#include <QDateTime>
#include <QObject>
#include <QTimeZone>
#include <QTimer>

#include <functional>

/** The server's source of time; tests have their own. */
struct ServerClock
{
    std::function<QDateTime()> now = [] { return QDateTime::currentDateTimeUtc(); }; ///< Current time, UTC.
    QTimeZone zone = QTimeZone::systemTimeZone(); ///< The time zone of schedules.
};

/**
 * Reports each enabled schedule when it is due. A run that was due more than the grace time ago, because the
 * server was down or the machine asleep, is skipped. Lives on the thread of the store.
 */
class ScheduleRunner : public QObject
{
    Q_OBJECT

public:
    static constexpr int graceTime = 30; ///< Seconds.

    /** @param store outlives the runner */
    ScheduleRunner(ScheduleStore& store, ServerClock clock);

    /** Starts to check twice a second; runs that were due before are skipped. */
    void start();

    /** Checks for due schedules now. */
    void checkDue();

Q_SIGNALS:
    /**
     * Emitted once for each run that is due.
     *
     * @param scheduleId of the record
     * @param name       of the record
     * @param file       id of the audio file; 0 when it was deleted
     * @param devices    ids of the devices to play on, those of the groups included, each once
     */
    void due(int scheduleId, const QString& name, int file, const QList<int>& devices);

private:
    ScheduleStore& m_store;
    ServerClock m_clock;
    QDateTime m_lastLook;
    QTimer m_timer;
};
