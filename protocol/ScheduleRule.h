#pragma once

#include <QDateTime>
#include <QSet>
#include <QTimeZone>
#include <QVariantMap>

#include <optional>

/**
 * The times of a schedule's runs, in the server's local time, ISO 8601 without an offset. A run at a time
 * that a change to daylight saving skips is at the first moment after the gap; one at a time that comes twice
 * is at the first.
 */
struct ScheduleRule
{
    /** Values of "scheduleType". */
    enum Type
    {
        Once = 0,   ///< On the first day.
        Daily = 1,  ///< Each day from the first on.
        Weekly = 2, ///< On the weekdays from the first day on.
    };

    Type type = Once;             ///< How often it runs.
    QDate firstDay;               ///< No run is before it.
    QTime timeOfDay;              ///< Of each run.
    QSet<int> weekdays;           ///< Weekly: 1 Monday to 7 Sunday.
    std::optional<QDateTime> end; ///< Local time; nothing starts after it.

    /**
     * Reads the fields of a schedule record.
     *
     * @param record "scheduleType", "scheduleSettings", "scheduleStartTime", "scheduleEndTime",
     *               "enableScheduleEndTime"
     * @param error  receives the reason of a failure
     * @return empty for wrong fields
     */
    static std::optional<ScheduleRule> fromRecord(const QVariantMap& record, QString* error);

    /** Returns the first run after a moment; empty after the last one. */
    std::optional<QDateTime> nextRun(const QDateTime& after, const QTimeZone& zone) const;

    /** Returns whether there is a run at all: false when the end is before the first of the weekdays. */
    bool canRun() const;

private:
    static QDateTime momentOf(const QDate& day, const QTime& time, const QTimeZone& zone);
};
