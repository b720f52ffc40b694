#pragma once

#include <QDateTime>
#include <QSet>
#include <QTimeZone>
#include <QVariantMap>

#include <optional>

/**
 * When a schedule plays. Times are local times of the server, ISO 8601 without an offset; a time that a
 * change to daylight saving skips is taken at the first moment after the gap, one that comes twice at its
 * first.
 */
struct ScheduleRule
{
    enum Type
    {
        Once = 0,
        Daily = 1,
        Weekly = 2,
    };

    Type type = Once;
    QDate firstDay;
    QTime timeOfDay;
    QSet<int> weekdays;           ///< Weekly: 1 Monday to 7 Sunday.
    std::optional<QDateTime> end; ///< Local time; nothing starts after it.

    /**
     * Reads the fields of a schedule record; empty, and @p error says why, when they make no sense.
     *
     * @param record "scheduleType", "scheduleSettings", "scheduleStartTime", "scheduleEndTime",
     *               "enableScheduleEndTime"
     */
    static std::optional<ScheduleRule> fromRecord(const QVariantMap& record, QString* error);

    /** The first run after a moment; empty when there is none any more. */
    std::optional<QDateTime> nextRun(const QDateTime& after, const QTimeZone& zone) const;

private:
    QDateTime runOn(const QDate& day, const QTimeZone& zone) const;
};
