#include "server/schedules/ScheduleStore.h"

#include "protocol/Limits.h"
#include "protocol/RecordChecks.h"
#include "protocol/Words.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace {

QByteArray toJson(const QVariant& settings)
{
    return QJsonDocument(QJsonObject::fromVariantMap(settings.toMap())).toJson(QJsonDocument::Compact);
}

QString timeText(const QVariant& value)
{
    return value.type() == QVariant::DateTime ? value.toDateTime().toString(Qt::ISODate) : value.toString();
}

} // namespace

ServerReply ScheduleStore::failed() const
{
    return refusal(ReturnCode::storageFailed, m_database.errorString());
}

std::optional<ServerReply> ScheduleStore::check(const QVariantMap& record, Checked* checked)
{
    if (const auto bad = RecordChecks::name(record.value(Vocabulary::scheduleName).toString())) {
        return bad;
    }
    QString error;
    const auto rule = ScheduleRule::fromRecord(record, &error);
    if (!rule || toJson(record.value(Vocabulary::scheduleSettings)).size() > Limits::maxSettingsBytes) {
        return refusal(ReturnCode::badSchedule, rule ? QStringLiteral("the settings are too large") : error);
    }
    if (!m_files.exists(record.value(Vocabulary::audioID).toInt())) {
        return refusal(
            ReturnCode::noSuchFile,
            QStringLiteral("no audio file has the id %1").arg(record.value(Vocabulary::audioID).toInt()));
    }
    const auto groups = RecordChecks::ids(record.value(Vocabulary::groupIDList).toString());
    const auto devices = RecordChecks::ids(record.value(Vocabulary::networkAudioIDList).toString());
    if (!groups || !devices || !m_groups.exist(*groups) || !m_devices.exist(*devices)) {
        return refusal(
            ReturnCode::badList,
            QStringLiteral("the lists of groups and devices name one twice, or one that is unknown"));
    }
    if (groups->isEmpty() && devices->isEmpty()) {
        return refusal(ReturnCode::nothingToPlayOn,
                       QStringLiteral("a schedule plays on a group or a device at least"));
    }
    *checked = {*rule, *groups, *devices};
    return std::nullopt;
}

ServerReply ScheduleStore::store(const QVariantMap& record, const Checked& checked, int id)
{
    if (!m_scheduleGroups.store(id, checked.groups) || !m_scheduleDevices.store(id, checked.devices)) {
        return failed();
    }
    QVariantMap stored = record;
    stored[Vocabulary::scheduleID] = id;
    stored[Vocabulary::groupIDList] = RecordChecks::joined(checked.groups);
    stored[Vocabulary::networkAudioIDList] = RecordChecks::joined(checked.devices);
    return done(stored);
}

ServerReply ScheduleStore::add(const QVariant& payload)
{
    const QVariantMap record = payload.toMap();
    Checked checked;
    if (const auto bad = check(record, &checked)) {
        return *bad;
    }
    RecordDatabase::Transaction transaction(m_database);
    QSqlQuery insert = m_database.query();
    if (!m_database.run(
            insert,
            QStringLiteral("INSERT INTO schedules (name, enabled, type, settings, start, end, end_enabled, "
                           "file) VALUES (?, ?, ?, ?, ?, ?, ?, ?)"),
            {record.value(Vocabulary::scheduleName).toString(),
             record.value(Vocabulary::enableSchedule).toBool(), static_cast<int>(checked.rule.type),
             QString::fromUtf8(toJson(record.value(Vocabulary::scheduleSettings))),
             timeText(record.value(Vocabulary::scheduleStartTime)),
             timeText(record.value(Vocabulary::scheduleEndTime)),
             record.value(Vocabulary::enableScheduleEndTime).toBool(),
             record.value(Vocabulary::audioID).toInt()})) {
        return failed();
    }
    ServerReply reply = store(record, checked, insert.lastInsertId().toInt());
    return reply.returnCode == ReturnCode::success && !transaction.commit() ? failed() : reply;
}

ServerReply ScheduleStore::update(const QVariant& payload)
{
    const QVariantMap record = payload.toMap();
    const int id = record.value(Vocabulary::scheduleID).toInt();
    const QVariantMap onlyId{{Vocabulary::scheduleID, id}};
    Checked checked;
    if (auto bad = check(record, &checked)) {
        bad->result = onlyId;
        return *bad;
    }
    RecordDatabase::Transaction transaction(m_database);
    QSqlQuery change = m_database.query();
    if (!m_database.run(
            change,
            QStringLiteral("UPDATE schedules SET name = ?, enabled = ?, type = ?, settings = ?, start = ?, "
                           "end = ?, end_enabled = ?, file = ? WHERE id = ?"),
            {record.value(Vocabulary::scheduleName).toString(),
             record.value(Vocabulary::enableSchedule).toBool(), static_cast<int>(checked.rule.type),
             QString::fromUtf8(toJson(record.value(Vocabulary::scheduleSettings))),
             timeText(record.value(Vocabulary::scheduleStartTime)),
             timeText(record.value(Vocabulary::scheduleEndTime)),
             record.value(Vocabulary::enableScheduleEndTime).toBool(),
             record.value(Vocabulary::audioID).toInt(), id})) {
        return failed();
    }
    if (change.numRowsAffected() == 0) {
        return refusal(ReturnCode::noSuchSchedule, QStringLiteral("no schedule has the id %1").arg(id),
                       onlyId);
    }
    ServerReply reply = store(record, checked, id);
    return reply.returnCode == ReturnCode::success && !transaction.commit() ? failed() : reply;
}

ServerReply ScheduleStore::remove(const QVariant& payload)
{
    const int id = payload.toInt();
    QSqlQuery erase = m_database.query();
    if (!m_database.run(erase, QStringLiteral("DELETE FROM schedules WHERE id = ?"), {id})) {
        return failed();
    }
    if (erase.numRowsAffected() == 0) {
        return refusal(ReturnCode::noSuchSchedule, QStringLiteral("no schedule has the id %1").arg(id), id);
    }
    return done(id);
}

QVariantList ScheduleStore::records()
{
    QVariantList found;
    QSqlQuery rows = m_database.query();
    if (!m_database.run(
            rows, QStringLiteral("SELECT id, name, enabled, type, settings, start, end, end_enabled, file, "
                                 "%1, %2 FROM schedules ORDER BY id")
                      .arg(m_scheduleGroups.joinedColumn("schedules"),
                           m_scheduleDevices.joinedColumn("schedules")))) {
        return found;
    }
    while (rows.next()) {
        found.append(QVariantMap{
            {Vocabulary::scheduleID, rows.value(0).toInt()},
            {Vocabulary::scheduleName, rows.value(1).toString()},
            {Vocabulary::enableSchedule, rows.value(2).toBool()},
            {Vocabulary::scheduleType, rows.value(3).toInt()},
            {Vocabulary::scheduleSettings,
             QJsonDocument::fromJson(rows.value(4).toString().toUtf8()).object().toVariantMap()},
            {Vocabulary::scheduleStartTime, rows.value(5).toString()},
            {Vocabulary::scheduleEndTime, rows.value(6).toString()},
            {Vocabulary::enableScheduleEndTime, rows.value(7).toBool()},
            {Vocabulary::audioID, rows.value(8).toInt()},
            {Vocabulary::groupIDList, rows.value(9).toString()},
            {Vocabulary::networkAudioIDList, rows.value(10).toString()},
        });
    }
    return found;
}

ServerReply ScheduleStore::list()
{
    return done(records());
}

std::vector<ScheduleStore::Entry> ScheduleStore::enabled()
{
    std::vector<Entry> entries;
    const QVariantList all = records();
    for (const QVariant& value : all) {
        const QVariantMap record = value.toMap();
        QString error;
        const auto rule = ScheduleRule::fromRecord(record, &error);
        if (!rule || !record.value(Vocabulary::enableSchedule).toBool()) {
            continue;
        }
        QList<int> devices =
            RecordChecks::ids(record.value(Vocabulary::networkAudioIDList).toString()).value_or(QList<int>());
        const QList<int> groups =
            RecordChecks::ids(record.value(Vocabulary::groupIDList).toString()).value_or(QList<int>());
        for (const int group : groups) {
            for (const int member : m_groups.members(group)) {
                if (!devices.contains(member)) {
                    devices.append(member);
                }
            }
        }
        entries.push_back({record.value(Vocabulary::scheduleID).toInt(),
                           record.value(Vocabulary::scheduleName).toString(), *rule,
                           record.value(Vocabulary::audioID).toInt(), devices});
    }
    return entries;
}
