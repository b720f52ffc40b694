#pragma once

#include <QDate>
#include <QDateTime>
#include <QObject>
#include <QVariant>

class ScheduleModel;

/**
 * What a schedule means, for people: whether it is possible, when it runs next, and where its runs lie in a
 * week. Times are the server's local times, taken for this machine's.
 */
class ScheduleText : public QObject
{
    Q_OBJECT

public:
    /** What is wrong with a record; empty when nothing is. @param now ISO 8601; empty for this moment */
    Q_INVOKABLE QString check(const QVariantMap& record, const QString& now = QString()) const;

    /** The next run: "today at 08:30", "switched off", "not any more". */
    Q_INVOKABLE QString nextRun(const QVariantMap& record, const QString& now = QString()) const;

    /** How often: "once", "every day", "Mon, Wed". */
    Q_INVOKABLE QString repetition(const QVariantMap& record) const;

    /**
     * The runs of a week, in order: maps with "day" (0 Monday to 6), "minute" of the day, "row" of the model,
     * "name", "enabled".
     */
    Q_INVOKABLE QVariantList week(ScheduleModel* schedules, const QDate& monday) const;

    /** Monday of the week of a day. */
    Q_INVOKABLE QDate mondayOf(const QDate& day) const { return day.addDays(1 - day.dayOfWeek()); }
};
