#include "server/schedules/ScheduleStore.h"

#include "protocol/Limits.h"
#include "protocol/RecordChecks.h"
#include "protocol/Words.h"
#include "server/records/ListLimit.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace {

// A number of the settings takes more bytes in a reply than as JSON.
const ListLimit::Kind scheduleList{
    QStringLiteral("maxSchedules"), Limits::maxSchedules,
    QStringLiteral("SELECT count(*), coalesce(sum(length(CAST(name AS BLOB)) + 8 * length(CAST(settings AS "
                   "BLOB)) + length(CAST(start AS BLOB)) + length(CAST(end AS BLOB))), 0) + "
                   "(SELECT coalesce(sum(length(member) + 1), 0) FROM schedule_groups) + "
                   "(SELECT coalesce(sum(length(member) + 1), 0) FROM schedule_devices) FROM schedules")};

QByteArray toJson(const QVariant& settings)
{
    return QJsonDocument(QJsonObject::fromVariantMap(settings.toMap())).toJson(QJsonDocument::Compact);
}

QString timeText(const QVariant& value)
{
    return value.type() == QVariant::DateTime ? value.toDateTime().toString(Qt::ISODate) : value.toString();
}

/** The file as it is stored: null for none. */
QVariant fileOf(const QVariantMap& record)
{
    const int file = record.value(Vocabulary::audioID).toInt();
    return file != 0 ? QVariant(file) : QVariant(QVariant::Int);
}

ServerReply noSuchSchedule(int id, const QVariant& result)
{
    return refusal(ReturnCode::noSuchSchedule, QStringLiteral("no schedule has the id %1").arg(id), result);
}

} // namespace

/**
 * Checks a record.
 *
 * @param mayLackTargets what was deleted is missing in a schedule that is being switched off, which must
 * always be possible
 */
std::optional<ServerReply> ScheduleStore::check(const QVariantMap& record, bool mayLackTargets,
                                                Checked* checked)
{
    if (const auto bad = RecordChecks::name(textOf(record, Vocabulary::scheduleName))) {
        return bad;
    }
    QString error;
    const auto rule = ScheduleRule::fromRecord(record, &error);
    if (!rule || toJson(record.value(Vocabulary::scheduleSettings)).size() > Limits::maxSettingsBytes) {
        return refusal(ReturnCode::badSchedule, rule ? QStringLiteral("the settings are too large") : error);
    }
    if (record.value(Vocabulary::enableSchedule).toBool() && !rule->canRun()) {
        return refusal(ReturnCode::badSchedule,
                       QStringLiteral("\"scheduleEndTime\" is before the first of the \"weekdays\""));
    }
    const int file = record.value(Vocabulary::audioID).toInt();
    if (ServerReply bad; !(mayLackTargets && file == 0) && !m_files.find(file, &bad)) {
        return bad;
    }
    const auto groups = RecordChecks::ids(textOf(record, Vocabulary::groupIDList));
    const auto devices = RecordChecks::ids(textOf(record, Vocabulary::networkAudioIDList));
    auto unknown = groups ? m_groups.checkExist(*groups) : std::nullopt;
    if (!unknown && devices) {
        unknown = m_devices.checkExist(*devices);
    }
    if (unknown && unknown->returnCode == ReturnCode::storageFailed) {
        return unknown;
    }
    if (!groups || !devices || unknown) {
        return refusal(
            ReturnCode::badList,
            QStringLiteral("the lists of groups and devices name one twice, or one that is unknown"));
    }
    if (groups->isEmpty() && devices->isEmpty() && !mayLackTargets) {
        return refusal(ReturnCode::nothingToPlayOn,
                       QStringLiteral("a schedule plays on a group or a device at least"));
    }
    *checked = {*rule, *groups, *devices};
    return std::nullopt;
}

/** Stores where a schedule plays, and returns the record as it is stored then. */
ServerReply ScheduleStore::store(const Checked& checked, int id)
{
    if (!m_scheduleGroups.store(id, checked.groups) || !m_scheduleDevices.store(id, checked.devices)) {
        return failed();
    }
    const auto stored = recordsOf(id);
    return stored && !stored->isEmpty() ? done(stored->first()) : failed();
}

ServerReply ScheduleStore::add(const QVariant& payload)
{
    const QVariantMap record = payload.toMap();
    Checked checked;
    if (const auto bad = check(record, false, &checked)) {
        return *bad;
    }
    RecordDatabase::Transaction transaction(m_database);
    ListLimit limit(m_database, scheduleList);
    QSqlQuery insert = m_database.query();
    if (!m_database.run(
            insert,
            QStringLiteral("INSERT INTO schedules (name, enabled, type, settings, start, end, end_enabled, "
                           "file) VALUES (?, ?, ?, ?, ?, ?, ?, ?)"),
            {textOf(record, Vocabulary::scheduleName), record.value(Vocabulary::enableSchedule).toBool(),
             static_cast<int>(checked.rule.type),
             QString::fromUtf8(toJson(record.value(Vocabulary::scheduleSettings))),
             timeText(record.value(Vocabulary::scheduleStartTime)),
             timeText(record.value(Vocabulary::scheduleEndTime)),
             record.value(Vocabulary::enableScheduleEndTime).toBool(), fileOf(record)})) {
        return failed();
    }
    ServerReply reply = store(checked, insert.lastInsertId().toInt());
    if (const auto bad = limit.check(); bad && reply.returnCode == ReturnCode::success) {
        return *bad;
    }
    return reply.returnCode == ReturnCode::success && !transaction.commit() ? failed() : reply;
}

ServerReply ScheduleStore::update(const QVariant& payload)
{
    const QVariantMap change = payload.toMap();
    const int id = change.value(Vocabulary::scheduleID).toInt();
    const QVariantMap onlyId{{Vocabulary::scheduleID, id}};
    const auto before = recordsOf(id);
    if (!before) {
        return failed();
    }
    if (before->isEmpty()) {
        return noSuchSchedule(id, onlyId);
    }
    const QVariantMap record = changed(before->first().toMap(), change);
    Checked checked;
    if (auto bad = check(record, !record.value(Vocabulary::enableSchedule).toBool(), &checked)) {
        bad->result = onlyId;
        return *bad;
    }
    RecordDatabase::Transaction transaction(m_database);
    ListLimit limit(m_database, scheduleList);
    if (!m_database.run(
            QStringLiteral("UPDATE schedules SET name = ?, enabled = ?, type = ?, settings = ?, start = ?, "
                           "end = ?, end_enabled = ?, file = ? WHERE id = ?"),
            {textOf(record, Vocabulary::scheduleName), record.value(Vocabulary::enableSchedule).toBool(),
             static_cast<int>(checked.rule.type),
             QString::fromUtf8(toJson(record.value(Vocabulary::scheduleSettings))),
             timeText(record.value(Vocabulary::scheduleStartTime)),
             timeText(record.value(Vocabulary::scheduleEndTime)),
             record.value(Vocabulary::enableScheduleEndTime).toBool(), fileOf(record), id})) {
        return failed();
    }
    ServerReply reply = store(checked, id);
    if (auto bad = limit.check(); bad && reply.returnCode == ReturnCode::success) {
        bad->result = onlyId;
        return *bad;
    }
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
        return noSuchSchedule(id, id);
    }
    return done(id);
}

std::optional<QVariantList> ScheduleStore::recordsOf(std::optional<int> id)
{
    QVariantList found;
    const auto append = [&](const QSqlQuery& row) {
        found.append(QVariantMap{
            {Vocabulary::scheduleID, row.value(0).toInt()},
            {Vocabulary::scheduleName, row.value(1).toString()},
            {Vocabulary::enableSchedule, row.value(2).toBool()},
            {Vocabulary::scheduleType, row.value(3).toInt()},
            {Vocabulary::scheduleSettings,
             QJsonDocument::fromJson(row.value(4).toString().toUtf8()).object().toVariantMap()},
            {Vocabulary::scheduleStartTime, row.value(5).toString()},
            {Vocabulary::scheduleEndTime, row.value(6).toString()},
            {Vocabulary::enableScheduleEndTime, row.value(7).toBool()},
            {Vocabulary::audioID, row.value(8).toInt()},
            {Vocabulary::groupIDList, row.value(9).toString()},
            {Vocabulary::networkAudioIDList, row.value(10).toString()},
        });
    };
    const bool read = m_database.read(
        QStringLiteral("SELECT id, name, enabled, type, settings, start, end, end_enabled, file, "
                       "%1, %2 FROM schedules %3 ORDER BY id")
            .arg(m_scheduleGroups.joinedColumn("schedules"), m_scheduleDevices.joinedColumn("schedules"),
                 id ? QStringLiteral("WHERE id = ?") : QString()),
        id ? QVariantList{*id} : QVariantList(), append);
    return read ? std::optional(found) : std::nullopt;
}

ServerReply ScheduleStore::list()
{
    const auto all = recordsOf(std::nullopt);
    return all ? done(*all) : failed();
}
