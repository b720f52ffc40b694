#include "server/records/CameraStore.h"

#include "protocol/RecordChecks.h"
#include "protocol/Words.h"

#include <algorithm>

namespace {

QString textOf(const QVariantMap& record, const QString& key)
{
    return record.value(key).toString();
}

/** The record as it is stored. */
QVariantMap stored(int id, const QVariantMap& record)
{
    return {{Vocabulary::camId, QString::number(id)},
            {Words::camName, textOf(record, Words::camName)},
            {Words::camKind, textOf(record, Words::camKind)},
            {Words::camAddress, textOf(record, Words::camAddress)}};
}

/** The id of a camera of the records, in the one form that they have; empty for anything else. */
std::optional<int> idOf(const QString& text)
{
    const int id = text.toInt();
    return QString::number(id) == text ? std::optional<int>(id) : std::nullopt;
}

ServerReply unknown(const QVariant& id, const QVariant& result)
{
    return refusal(ReturnCode::noSuchCamera,
                   QStringLiteral("no camera of the records has the id \"%1\"").arg(id.toString()), result);
}

} // namespace

ServerReply CameraStore::failed() const
{
    return refusal(ReturnCode::storageFailed, m_database.errorString());
}

std::optional<ServerReply> CameraStore::checkKind(const QString& kind) const
{
    const auto has = [&kind](const auto& each) { return each.name == kind; };
    if (std::any_of(m_kinds.cameras.begin(), m_kinds.cameras.end(), has)) {
        return std::nullopt;
    }
    const auto absent = std::find_if(m_kinds.absentCameras.begin(), m_kinds.absentCameras.end(), has);
    return refusal(ReturnCode::badCameraKind,
                   absent != m_kinds.absentCameras.end()
                       ? absent->reason
                       : QStringLiteral("this server has no cameras of the kind \"%1\"").arg(kind));
}

std::optional<ServerReply> CameraStore::check(const QVariantMap& record, int id)
{
    for (const RecordChecks::Refusal& bad : {RecordChecks::name(textOf(record, Words::camName)),
                                             RecordChecks::address(textOf(record, Words::camAddress))}) {
        if (bad) {
            return bad;
        }
    }
    if (const auto bad = checkKind(textOf(record, Words::camKind))) {
        return bad;
    }
    QSqlQuery same = m_database.query();
    if (!m_database.run(same, QStringLiteral("SELECT 1 FROM cameras WHERE name = ? AND id <> ?"),
                        {textOf(record, Words::camName), id})) {
        return failed();
    }
    if (same.next()) {
        return refusal(
            ReturnCode::nameTaken,
            QStringLiteral("there is a camera named \"%1\" already").arg(textOf(record, Words::camName)));
    }
    return std::nullopt;
}

ServerReply CameraStore::add(const QVariant& payload)
{
    const QVariantMap record = payload.toMap();
    if (const auto bad = check(record, -1)) {
        return *bad;
    }
    QSqlQuery insert = m_database.query();
    if (!m_database.run(insert, QStringLiteral("INSERT INTO cameras (name, kind, address) VALUES (?, ?, ?)"),
                        {textOf(record, Words::camName), textOf(record, Words::camKind),
                         textOf(record, Words::camAddress)})) {
        return failed();
    }
    return done(stored(insert.lastInsertId().toInt(), record));
}

ServerReply CameraStore::update(const QVariant& payload)
{
    const QVariantMap record = payload.toMap();
    const int id = idOf(textOf(record, Vocabulary::camId)).value_or(-1);
    const QVariantMap onlyId{{Vocabulary::camId, textOf(record, Vocabulary::camId)}};
    if (auto bad = check(record, id)) {
        bad->result = onlyId;
        return *bad;
    }
    QSqlQuery change = m_database.query();
    if (!m_database.run(change,
                        QStringLiteral("UPDATE cameras SET name = ?, kind = ?, address = ? WHERE id = ?"),
                        {textOf(record, Words::camName), textOf(record, Words::camKind),
                         textOf(record, Words::camAddress), id})) {
        return failed();
    }
    return change.numRowsAffected() == 0 ? unknown(textOf(record, Vocabulary::camId), onlyId)
                                         : done(stored(id, record));
}

ServerReply CameraStore::remove(const QVariant& payload)
{
    QSqlQuery erase = m_database.query();
    if (!m_database.run(erase, QStringLiteral("DELETE FROM cameras WHERE id = ?"),
                        {idOf(payload.toString()).value_or(-1)})) {
        return failed();
    }
    return erase.numRowsAffected() == 0 ? unknown(payload, payload.toString()) : done(payload.toString());
}

std::optional<QList<CameraRecord>> CameraStore::records()
{
    QList<CameraRecord> records;
    QSqlQuery rows = m_database.query();
    if (!m_database.run(rows, QStringLiteral("SELECT id, name, kind, address FROM cameras ORDER BY id"))) {
        return std::nullopt;
    }
    while (rows.next()) {
        records.append({QString::number(rows.value(0).toInt()), rows.value(1).toString(),
                        rows.value(2).toString(), rows.value(3).toString()});
    }
    return records;
}
