#pragma once

#include "server/schedules/ScheduleStore.h"

#include <QDateTime>
#include <QObject>
#include <QTimeZone>
#include <QTimer>

#include <functional>

/** Where the server's time comes from; tests have their own. */
struct ServerClock
{
    std::function<QDateTime()> now = [] { return QDateTime::currentDateTimeUtc(); };
    QTimeZone zone = QTimeZone::systemTimeZone();
};

/**
 * Raises each enabled schedule when its time has come. What falls due while nobody looks for longer than the
 * grace time (the server was down, the machine asleep) is not made up for.
 */
class ScheduleRunner : public QObject
{
    Q_OBJECT

public:
    static constexpr int graceTime = 30; // s

    ScheduleRunner(ScheduleStore& store, ServerClock clock);

    /** Begins to look twice a second; what was due before does not count. */
    void start();

    /** Looks once; start does this regularly. */
    void look();

Q_SIGNALS:
    void due(int scheduleId, const QString& name, int file, const QList<int>& devices);

private:
    ScheduleStore& m_store;
    ServerClock m_clock;
    QDateTime m_lastLook;
    QTimer m_timer;
};
