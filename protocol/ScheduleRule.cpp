#include "protocol/ScheduleRule.h"

#include "protocol/Words.h"
#include "src/vocabulary/Vocabulary.h"

namespace {

constexpr int daysPerWeek = 7;

/** A time of the wall clock, as a time of UTC: there is none that a zone skips. */
std::optional<QDateTime> localTime(const QVariant& value)
{
    const QDateTime time = value.type() == QVariant::DateTime
                               ? value.toDateTime()
                               : QDateTime::fromString(value.toString(), Qt::ISODate);
    if (time.isValid()) {
        return time.timeSpec() == Qt::LocalTime ? std::optional(QDateTime(time.date(), time.time(), Qt::UTC))
                                                : std::nullopt;
    }
    // It may be none in the zone of this process, when clocks are put forward.
    const QDateTime skipped = QDateTime::fromString(value.toString() + QLatin1Char('Z'), Qt::ISODate);
    return skipped.isValid() ? std::optional(skipped) : std::nullopt;
}

std::optional<QSet<int>> weekdaysOf(const QVariant& settings)
{
    QSet<int> days;
    const QVariantList list = settings.toMap().value(Words::weekdays).toList();
    for (const QVariant& entry : list) {
        bool valid = false;
        const int day = entry.toInt(&valid);
        if (!valid || day < 1 || day > daysPerWeek) {
            return std::nullopt;
        }
        days.insert(day);
    }
    return days;
}

} // namespace

std::optional<ScheduleRule> ScheduleRule::fromRecord(const QVariantMap& record, QString* error)
{
    ScheduleRule rule;
    bool valid = false;
    const int type = record.value(Vocabulary::scheduleType).toInt(&valid);
    if (!valid || type < Once || type > Weekly) {
        *error = QStringLiteral("\"scheduleType\" is 0 for once, 1 for daily or 2 for weekly");
        return std::nullopt;
    }
    rule.type = static_cast<Type>(type);
    const auto start = localTime(record.value(Vocabulary::scheduleStartTime));
    if (!start) {
        *error = QStringLiteral("\"scheduleStartTime\" is a local time like 2026-03-01T08:30:00");
        return std::nullopt;
    }
    rule.firstDay = start->date();
    rule.timeOfDay = start->time();
    const auto weekdays = weekdaysOf(record.value(Vocabulary::scheduleSettings));
    if (!weekdays || (rule.type == Weekly && weekdays->isEmpty())) {
        *error = QStringLiteral(
            "\"scheduleSettings\" of a weekly schedule has \"weekdays\", a list of 1 (Monday) to 7");
        return std::nullopt;
    }
    rule.weekdays = *weekdays;
    if (record.value(Vocabulary::enableScheduleEndTime).toBool()) {
        rule.end = localTime(record.value(Vocabulary::scheduleEndTime));
        if (!rule.end || *rule.end < *start) {
            *error = QStringLiteral("\"scheduleEndTime\" is a local time that is not before the start");
            return std::nullopt;
        }
    }
    return rule;
}

/** When a clock of the zone shows a time; the first moment of two, the change of one that is skipped. */
QDateTime ScheduleRule::momentOf(const QDate& day, const QTime& time, const QTimeZone& zone)
{
    QDateTime run(day, time, zone);
    if (run.isValid() && run.date() == day && run.time() == time) {
        // A time that comes twice: one hour earlier may read the same on the clock.
        const QTimeZone::OffsetData change = zone.previousTransition(run);
        if (!change.atUtc.isValid()) {
            return run; // before the zone's first change, whose offsets are not valid
        }
        const QDateTime before =
            run.addSecs(change.offsetFromUtc - zone.offsetFromUtc(change.atUtc.addSecs(-1))).toTimeZone(zone);
        return before < run && before.time() == time && before.date() == day ? before : run;
    }
    // Skipped by the clock: the moment of the change. Noon before and after are never skipped.
    const QDateTime noonBefore(day.addDays(-1), QTime(12, 0), zone);
    const QTimeZone::OffsetData change = zone.nextTransition(noonBefore);
    return change.atUtc.isValid() ? change.atUtc.toTimeZone(zone) : run;
}

std::optional<QDateTime> ScheduleRule::nextRun(const QDateTime& after, const QTimeZone& zone) const
{
    const QDateTime localAfter = after.toTimeZone(zone);
    const auto acceptable = [&](const QDateTime& run) -> std::optional<QDateTime> {
        const QDateTime last = end ? momentOf(end->date(), end->time(), zone) : QDateTime();
        return run > after && (!end || run <= last) ? std::optional(run) : std::nullopt;
    };
    if (type == Once) {
        return acceptable(momentOf(firstDay, timeOfDay, zone));
    }
    QDate day = std::max(firstDay, localAfter.date().addDays(-1));
    // A week and a day each side hold every weekday.
    for (int i = 0; i < daysPerWeek + 3; ++i, day = day.addDays(1)) {
        if (type == Weekly && !weekdays.contains(day.dayOfWeek())) {
            continue;
        }
        if (const QDateTime run = momentOf(day, timeOfDay, zone); run > after) {
            return acceptable(run);
        }
    }
    return std::nullopt;
}

bool ScheduleRule::canRun() const
{
    const QDateTime start(firstDay, timeOfDay, Qt::UTC); // any zone would do
    return nextRun(start.addSecs(-1), QTimeZone::utc()).has_value();
}
