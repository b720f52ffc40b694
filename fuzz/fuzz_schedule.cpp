// Any fields as a schedule, its settings as the database has them: what runs, runs after the moment asked for
// and not after the end.
//
//   input    a line each: type, start, end, moment, zone; the rest is the settings as JSON

#include "protocol/ScheduleRule.h"
#include "protocol/Words.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    QByteArray rest(reinterpret_cast<const char*>(data), static_cast<int>(size));
    const auto line = [&rest] {
        const int end = rest.indexOf('\n');
        const QByteArray taken = rest.left(end);
        rest = end < 0 ? QByteArray() : rest.mid(end + 1);
        return QString::fromUtf8(taken);
    };
    const QString type = line();
    const QString start = line();
    const QString end = line();
    const QString moment = line();
    const QTimeZone zone(line().toLatin1());
    const QVariantMap record{
        {Vocabulary::scheduleType, type},
        {Vocabulary::scheduleStartTime, start},
        {Vocabulary::scheduleEndTime, end},
        {Vocabulary::enableScheduleEndTime, !end.isEmpty()},
        {Vocabulary::scheduleSettings, QJsonDocument::fromJson(rest).object().toVariantMap()},
    };
    QString error;
    const auto rule = ScheduleRule::fromRecord(record, &error);
    if (!rule) {
        if (error.isEmpty()) {
            std::abort();
        }
        return 0;
    }
    const QDateTime after = QDateTime::fromString(moment, Qt::ISODate);
    if (!after.isValid() || !zone.isValid()) {
        return 0;
    }
    const auto run = rule->nextRun(after, zone);
    if (run && (!run->isValid() || *run <= after)) {
        std::abort();
    }
    return 0;
}
