#pragma once

#include <QDate>
#include <QDateTime>
#include <QObject>
#include <QVariant>

class ScheduleModel;

/**
 * What a schedule means, for people: when it runs next, how often, and where its runs lie in a week. Times
 * are the server's local times, taken for this machine's. Used on the window's thread.
 */
class ScheduleText : public QObject
{
    Q_OBJECT

public:
    /**
     * Returns the next run: "today at 08:30", "switched off", "not any more".
     *
     * @param record as the protocol has it; a broken one never runs
     * @param now ISO 8601; empty for this moment
     */
    Q_INVOKABLE QString nextRun(const QVariantMap& record, const QString& now = QString()) const;

    /** Returns how often a record runs: "once", "every day", "Mon, Wed". */
    Q_INVOKABLE QString repetition(const QVariantMap& record) const;

    /**
     * Returns the runs of a week, in order: maps with "day" (0 Monday to 6), "minute" of the day, "row" of
     * the model, "name", "enabled".
     *
     * @param schedules null for none
     */
    Q_INVOKABLE QVariantList week(ScheduleModel* schedules, const QDate& monday) const;

    /** Returns Monday of the week of a day. */
    Q_INVOKABLE QDate mondayOf(const QDate& day) const { return day.addDays(1 - day.dayOfWeek()); }
};
