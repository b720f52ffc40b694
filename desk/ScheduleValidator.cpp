#include "desk/ScheduleValidator.h"

#include "protocol/ScheduleRule.h"
#include "protocol/Words.h"

#include <QTimeZone>

QDateTime ScheduleValidator::momentOf(const QString& now)
{
    return now.isEmpty() ? QDateTime::currentDateTime() : QDateTime::fromString(now, Qt::ISODate);
}

QString ScheduleValidator::check(const QVariantMap& record, const QString& now) const
{
    if (record.value(Vocabulary::scheduleName).toString().trimmed().isEmpty()) {
        return tr("Give the schedule a name.");
    }
    const auto isEmpty = [&record](const QString& list) { return record.value(list).toList().isEmpty(); };
    QString error;
    const auto rule = ScheduleRule::fromRecord(record, &error);
    if (!rule) {
        const bool weekly = record.value(Vocabulary::scheduleType).toInt() == ScheduleRule::Weekly;
        const QVariantMap settings = record.value(Vocabulary::scheduleSettings).toMap();
        if (weekly && settings.value(Words::weekdays).toList().isEmpty()) {
            return tr("Choose at least one day of the week.");
        }
        return tr("The times make no sense.");
    }
    if (!rule->nextRun(momentOf(now), QTimeZone::systemTimeZone())) {
        return tr("It would never run: its time is over.");
    }
    if (record.value(Vocabulary::audioID).toInt() <= 0) {
        return tr("Choose an audio file.");
    }
    if (isEmpty(Vocabulary::groupIDList) && isEmpty(Vocabulary::networkAudioIDList)) {
        return tr("Choose at least one speaker or group.");
    }
    return QString();
}
