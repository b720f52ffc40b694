#include "desk/ScheduleText.h"

#include "client/RecordModels.h"
#include "desk/ScheduleValidator.h"
#include "protocol/ScheduleRule.h"
#include "protocol/Words.h"

#include <QLocale>
#include <QTimeZone>

#include <algorithm>

namespace {

constexpr int daysOfWeek = 7;
constexpr int soon = 6; // days; within these a weekday says enough

} // namespace

QString ScheduleText::nextRun(const QVariantMap& record, const QString& now) const
{
    if (!record.value(Vocabulary::enableSchedule).toBool()) {
        return tr("switched off");
    }
    if (record.value(Vocabulary::audioID).toInt() <= 0) {
        return tr("its file was deleted");
    }
    QString error;
    const auto rule = ScheduleRule::fromRecord(record, &error);
    const QDateTime moment = ScheduleValidator::momentOf(now);
    const auto run = rule ? rule->nextRun(moment, QTimeZone::systemTimeZone()) : std::nullopt;
    if (!run) {
        return tr("not any more");
    }
    const QDateTime local = run->toLocalTime();
    const QString time = QLocale().toString(local.time(), QLocale::ShortFormat);
    const qint64 days = moment.date().daysTo(local.date());
    if (days == 0) {
        return tr("today at %1").arg(time);
    }
    if (days == 1) {
        return tr("tomorrow at %1").arg(time);
    }
    if (days <= soon) {
        return tr("on %1 at %2").arg(QLocale().dayName(local.date().dayOfWeek()), time);
    }
    return tr("on %1 at %2").arg(QLocale().toString(local.date(), QLocale::ShortFormat), time);
}

QString ScheduleText::repetition(const QVariantMap& record) const
{
    switch (record.value(Vocabulary::scheduleType).toInt()) {
    case ScheduleRule::Once:
        return tr("once");
    case ScheduleRule::Daily:
        return tr("every day");
    default:
        break;
    }
    const QVariantMap settings = record.value(Vocabulary::scheduleSettings).toMap();
    QList<int> days;
    const QVariantList weekdays = settings.value(Words::weekdays).toList();
    for (const QVariant& day : weekdays) {
        days.append(day.toInt());
    }
    std::sort(days.begin(), days.end());
    QStringList names;
    for (const int day : qAsConst(days)) {
        names.append(QLocale().dayName(day, QLocale::ShortFormat));
    }
    return names.join(QStringLiteral(", "));
}

QVariantList ScheduleText::week(ScheduleModel* schedules, const QDate& monday) const
{
    struct Run
    {
        int day;
        int minute;
        int row;
        QString name;
        bool enabled;
    };
    std::vector<Run> runs;
    const QTimeZone zone = QTimeZone::systemTimeZone();
    for (int row = 0; schedules != nullptr && row < schedules->rowCount(); ++row) {
        const QVariantMap fieldsOfRow = schedules->record(row);
        QString error;
        const auto rule = ScheduleRule::fromRecord(fieldsOfRow, &error);
        QDateTime after = QDateTime(monday, QTime(0, 0)).addMSecs(-1);
        while (rule) {
            const auto run = rule->nextRun(after, zone);
            const qint64 day = run ? monday.daysTo(run->toLocalTime().date()) : daysOfWeek;
            if (day >= daysOfWeek) {
                break;
            }
            after = *run;
            runs.push_back({static_cast<int>(day), run->toLocalTime().time().msecsSinceStartOfDay() / 60000,
                            row, fieldsOfRow.value(Vocabulary::scheduleName).toString(),
                            fieldsOfRow.value(Vocabulary::enableSchedule).toBool()});
        }
    }
    std::stable_sort(runs.begin(), runs.end(), [](const Run& a, const Run& b) {
        return std::pair(a.day, a.minute) < std::pair(b.day, b.minute);
    });
    QVariantList list;
    for (const Run& run : runs) {
        list.append(QVariantMap{{QStringLiteral("day"), run.day},
                                {QStringLiteral("minute"), run.minute},
                                {QStringLiteral("row"), run.row},
                                {QStringLiteral("name"), run.name},
                                {QStringLiteral("enabled"), run.enabled}});
    }
    return list;
}
